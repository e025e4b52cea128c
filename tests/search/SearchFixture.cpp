// Builds archives, documents and indexes for the tests.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/search/SearchFixture.h"

#include "search/TextQuery.h"
#include "store/Template.h"

#include <archive.h>
#include <archive_entry.h>

using namespace Qt::StringLiterals;

namespace velmora {

SearchTest::SearchTest() {
    ThePlace().Clear();
    QDir().mkpath(ThePlace().Path("home", u"archive"_s));
    QDir().mkpath(Docs());
    program->gArchivePath = ThePlace().Logical("home", u"archive"_s);
    program->gUserKey = u"DOMAIN.ANNA"_s;
    CreateDatabase(program->gArchivePath);
}

QString SearchTest::Docs(const QString& name) {
    return ThePlace().Path("home", name.isEmpty() ? u"docs"_s : u"docs/"_s + name);
}

QString SearchTest::LogicalDocs(const QString& name) {
    return platform::ToLogical(Docs(name));
}

QString SearchTest::Write(const QString& name, const QByteArray& content) {
    WriteFile(Docs(name), content);
    return Docs(name);
}

QByteArray SearchTest::Zip(const Members& members) {
    QByteArray bytes(1 << 20, '\0');
    std::size_t used = 0;
    archive* writer = archive_write_new();
    archive_write_set_format_zip(writer);
    archive_write_open_memory(writer, bytes.data(), static_cast<std::size_t>(bytes.size()), &used);
    for (const auto& [name, content] : members) {
        archive_entry* entry = archive_entry_new();
        archive_entry_set_pathname_utf8(entry, name.constData());
        archive_entry_set_size(entry, content.size());
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_entry_set_perm(entry, 0644);
        archive_write_header(writer, entry);
        archive_write_data(writer, content.constData(), static_cast<std::size_t>(content.size()));
        archive_entry_free(entry);
    }
    EXPECT_EQ(archive_write_close(writer), ARCHIVE_OK) << archive_error_string(writer);
    archive_write_free(writer);
    return bytes.left(static_cast<qsizetype>(used));
}

QByteArray SearchTest::Mail(const QByteArray& subject, const QByteArray& text,
                            const Members& attachments) {
    QByteArray mail = "From: anna@example.org\r\nTo: bob@example.org\r\nSubject: " + subject +
                      "\r\nDate: Mon, 6 May 2024 10:00:00 +0200\r\nMIME-Version: 1.0\r\n"
                      "Content-Type: multipart/mixed; boundary=\"edge\"\r\n\r\n"
                      "--edge\r\nContent-Type: text/plain; charset=utf-8\r\n\r\n" +
                      text + "\r\n";
    for (const auto& [name, content] : attachments) {
        mail += "--edge\r\nContent-Type: application/octet-stream\r\n"
                "Content-Disposition: attachment; filename=\"" +
                name + "\"\r\nContent-Transfer-Encoding: base64\r\n\r\n" + content.toBase64() +
                "\r\n";
    }
    return mail + "--edge--\r\n";
}

void SearchTest::Index(const QString& folder) {
    const QString list = ThePlace().Path("home", u"add.txt"_s);
    WriteFile(list, (platform::ToLogical(folder) + u"<+>\r\n"_s).toUtf8());
    engine::IndexJob job;
    job.IndexPath = IndexFolder();
    job.AlphabetFile = AlphabetFile();
    job.ToAddFileListName = platform::ToLogical(list);
    job.WorkerProgram = QStringLiteral(SEARCH_TEST_WORKER);
    const engine::IndexReport report = job.Execute();
    ASSERT_FALSE(report.fault.has_value()) << report.faultText.toStdString();
}

QString SearchTest::OcrTexts() {
    return platform::ToMachine(OcrFolder());
}

void SearchTest::LayOcrText(qint64 id, const QByteArray& text) {
    WriteFile(OcrTexts() + u'/' + QString::number(id) + u"/iftext.ocr"_s, text);
}

qint64 SearchTest::AddOcrRow(const QString& logicalFolder, const QString& name) {
    RecordSetPtr rows = GetRsOcrFile({}, {});
    rows->AddNew();
    rows->Fields(u"spath").SetValue(platform::Capitals(logicalFolder));
    rows->Fields(u"sfilename").SetValue(platform::Capitals(name));
    rows->Fields(u"suser").SetValue(Program().gUserKey);
    rows->UpdateBatch();
    return rows->Fields(u"i_id").Number();
}

void SearchTest::SetMailConfig(int client, const QString& path) {
    DeleteMailConfig();
    RecordSetPtr rows = GetRsMailConfig();
    rows->AddNew();
    rows->Fields(u"iclient").SetValue(client);
    rows->Fields(u"smailpath").SetValue(path);
    rows->Fields(u"suser").SetValue(Program().gUserKey);
    rows->UpdateBatch();
}

engine::SearchResults SearchTest::Search(QString request, const QString& folder, bool includeMail,
                                         bool synonyms) {
    engine::SearchResults results;
    ExecuteSearch(request, folder, includeMail, synonyms, results);
    return results;
}

std::string SearchTest::Found(const QString& request, const QString& folder, bool includeMail,
                              bool synonyms) {
    const engine::SearchResults results = Search(request, folder, includeMail, synonyms);
    if (results.fault) {
        return "fault: " + results.faultText.toStdString();
    }
    QStringList names;
    for (const engine::SearchItem& item : results.items) {
        names << item.DisplayName;
    }
    names.sort();
    return names.join(u' ').toStdString();
}

engine::SearchItem Item(const QString& fileName, const QString& display, int hits,
                        const QString& spelling) {
    engine::SearchItem item;
    item.FileName = fileName;
    item.DisplayName = display;
    item.Spelling = spelling;
    if (spelling.isEmpty()) {
        item.Spelling = QString(fileName).replace(u'\\', u'/').toLower();
    }
    for (int hit = 1; hit <= hits; ++hit) {
        item.Hits.push_back(static_cast<std::uint32_t>(hit));
    }
    return item;
}

} // namespace velmora
