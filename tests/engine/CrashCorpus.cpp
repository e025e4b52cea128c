// Documents for the tests of what survives a crash.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "CrashCorpus.h"

#include "Zip.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <stdexcept>

namespace engine_test {
namespace {

constexpr int kTexts = 36;

QByteArray Read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Some pages of the licences that come with every system, another part for each number; where
// there are none, words that are put together.
QByteArray Text(int number, const QByteArray& version) {
    static const QByteArray licences = [] {
        QByteArray all;
        for (const char* name : {"GPL-3", "LGPL-2.1", "Artistic", "GFDL-1.3", "MPL-2.0"})
            all += Read(QStringLiteral("/usr/share/common-licenses/") + QLatin1String(name));
        for (int i = 0; all.size() < 200'000; ++i)
            all += "stand" + QByteArray::number(i % 977) + " in " + QByteArray::number(i) + "\n";
        return all;
    }();
    const qsizetype length = 2'000 + number % 7 * 900;
    const qsizetype start = (number * 7919) % (licences.size() - length);
    return "document number" + QByteArray::number(number) + " " + version + "\n" +
           licences.mid(start, length);
}

class Writer {
  public:
    Writer(const QString& folder, Age age) : m_folder(folder), m_age(age) {}

    [[nodiscard]] bool Changed(int number) const { return m_age == Age::Newer && number % 3 == 0; }
    // Files that are there only before, or only after.
    [[nodiscard]] bool IsThere(int number) const {
        return m_age == Age::Older ? number % 11 != 5 : number % 11 != 7;
    }
    [[nodiscard]] QByteArray Version(int number) const {
        return Changed(number) ? "younger" : "elder";
    }
    void Put(const QString& name, int number, const QByteArray& content) const {
        if (!IsThere(number))
            return;
        const QString path = m_folder + QLatin1Char('/') + name;
        QDir().mkpath(path.section(QLatin1Char('/'), 0, -2));
        QFile file(path);
        // A full disk must not pass for a smaller corpus.
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() ||
            !file.flush())
            throw std::runtime_error(file.errorString().toStdString());
        const qint64 second = 1'600'000'000 + number + (Changed(number) ? 10'000 : 0);
        file.setFileTime(QDateTime::fromSecsSinceEpoch(second), QFileDevice::FileModificationTime);
    }

  private:
    QString m_folder;
    Age m_age;
};

void PutMixed(const Writer& write, int number) {
    const auto name = [&](const char* ending) {
        return QStringLiteral("mixed/d%1.%2").arg(number).arg(QLatin1String(ending));
    };
    const QByteArray version = write.Version(number);
    const QByteArray text = Text(number, version);
    switch (number % 6) {
    case 0: {
        const QByteArray inner =
            Zip({{"deep/one.txt", "deep " + text}, {"deep/two.txt", "shallow " + version}});
        write.Put(name("zip"), number,
                  Zip({{"first.txt", text},
                       {"page.html", "<h1>Second</h1><p>" + text},
                       {"inner.zip", inner}}));
        break;
    }
    case 1:
        write.Put(
            name("eml"), number,
            "From: a@b.example\r\nSubject: message " + QByteArray::number(number) + " " + version +
                "\r\nMIME-Version: 1.0\r\nContent-Type: multipart/mixed; "
                "boundary=x\r\n\r\n--x\r\n\r\n" +
                text + "\r\n--x\r\nContent-Disposition: attachment; filename=\"note.txt\"\r\n\r\n" +
                "appendage " + text + "\r\n--x--\r\n");
        break;
    case 2:
        write.Put(name("html"), number, "<title>Page " + version + "</title><p>" + text);
        break;
    case 3:
        write.Put(
            name("docx"), number,
            Read(QStringLiteral(VELMORA_TEST_DATA "/office/") +
                 QLatin1String(write.Changed(number) ? "comments-rich-para.docx" : "test.docx")));
        break;
    case 4:
        write.Put(name("broken.docx"), number, "PK\x03\x04 no archive " + version);
        break;
    default:
        write.Put(name("ocr"), number, "recognised, text; " + text);
    }
}

} // namespace

void WriteCorpus(const QString& folder, Age age) {
    QDir(folder).removeRecursively();
    for (const char* name : {"texts", "mixed", "single"})
        QDir().mkpath(folder + QLatin1Char('/') + QLatin1String(name));
    const Writer write(folder, age);
    for (int number = 0; number < kTexts; ++number) {
        write.Put(QStringLiteral("texts/f%1/t%2.txt").arg(number % 4).arg(number), number,
                  Text(number, write.Version(number)));
        PutMixed(write, 100 + number);
    }
    write.Put(QStringLiteral("single/only.txt"), 3, Text(500, write.Version(3)));
}

QStringList CorpusRequests() {
    return {QStringLiteral("document"),
            QStringLiteral("younger or elder"),
            QStringLiteral("number7 and elder"),
            QStringLiteral("license w/5 software"),
            QStringLiteral("deep and not first"),
            QStringLiteral("appendage"),
            QStringLiteral("number10? or broken"),
            QStringLiteral("recognised"),
            QStringLiteral("permi* and not younger")};
}

} // namespace engine_test
