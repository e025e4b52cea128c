// What a file is, by its content; its name only decides where the content leaves a choice.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/engine/readers/Packages.h"

#include <gtest/gtest.h>

namespace engine {
namespace {

using namespace std::string_literals;

struct KindCase {
    const char* what;
    std::string bytes;
    std::string name;
    Kind kind;
};

void PrintTo(const KindCase& kindCase, std::ostream* out) {
    *out << kindCase.what;
}

std::string OldTar() {
    std::string header(512, '\0');
    header.replace(0, 5, "a.txt");
    header.replace(100, 8, "0000644\0"s);
    header.replace(124, 12, "00000000000\0"s);
    header.replace(148, 8, "        ");
    unsigned sum = 0;
    for (const char c : header)
        sum += static_cast<unsigned char>(c);
    char digits[9];
    std::snprintf(digits, sizeof digits, "%06o", sum);
    header.replace(148, 7, digits, 7);
    return header + std::string(1024, '\0');
}

class DetectKindOf : public testing::TestWithParam<KindCase> {};

TEST_P(DetectKindOf, Content) {
    const KindCase& c = GetParam();
    EXPECT_STREQ(KindName(DetectKind({c.bytes, c.name})), KindName(c.kind));
}

const char* kMail = "Received: from a by b\nFrom: ann@example.com\nTo: bob@example.com\nSubject: "
                    "Hi\nDate: Mon, 1 Jan 2024 10:00:00 +0100\nMessage-ID: <1@x>\n\nText\n";

INSTANTIATE_TEST_SUITE_P(
    Cases, DetectKindOf,
    testing::Values(
        KindCase{"empty", "", "x.docx", Kind::PlainText},
        KindCase{"text", "Just words.\n", "x", Kind::PlainText},
        KindCase{"lyingText", "Just words.\n", "x.docx", Kind::PlainText},
        KindCase{"html", "\n<!-- c -->\n<!DOCTYPE HTML><html>", "x.txt", Kind::Html},
        KindCase{"htmlPiece", "<p>hello", "page", Kind::Html},
        KindCase{"htmlByName", "hello", "page.HTM", Kind::Html},
        KindCase{"markdown", "<div align=center>\n# x", "README.md", Kind::PlainText},
        KindCase{"script", "<?php echo 1; ?><p>", "x.php", Kind::PlainText},
        KindCase{"utf16Html", "\xFF\xFE<\0h\0t\0m\0l\0>\0"s, "x", Kind::Html},
        KindCase{
            "xhtml",
            "<?xml version='1.0'?>\n<!DOCTYPE html>\n<html xmlns='http://www.w3.org/1999/xhtml'>",
            "x.xml", Kind::Html},
        KindCase{"xml", "<?xml version='1.0'?><a/>", "x.txt", Kind::Xml},
        KindCase{"svg", "<svg xmlns='http://www.w3.org/2000/svg'>", "x", Kind::Xml},
        KindCase{"template", "<vector<int>> x;", "x.cpp", Kind::PlainText},
        KindCase{"flatOdf",
                 "<?xml version='1.0'?><office:document "
                 "xmlns:office='urn:oasis:names:tc:opendocument:xmlns:office:1.0'>",
                 "x", Kind::OpenDocument},
        KindCase{"rtf", "{\\rtf1\\ansi x}", "x.txt", Kind::Rtf},
        KindCase{"pdf", "%PDF-1.4\n", "x.txt", Kind::Pdf},
        KindCase{"pdfBehindJunk", "\x01\x02junk\n%PDF-1.4\n...\nstartxref\n0\n%%EOF\n", "x",
                 Kind::Pdf},
        KindCase{"aboutPdf", "A PDF begins with %PDF-1.4.\n", "x.txt", Kind::PlainText},
        KindCase{"mail", kMail, "x.txt", Kind::Mail},
        KindCase{"patchWithMailHeaders", kMail, "x.patch", Kind::PlainText},
        KindCase{"emlByName", "Subject: Hi\n\nText", "x.eml", Kind::Mail},
        KindCase{"mailbox",
                 "From a@x Mon Jan  1 10:00:00 2024\n"s + kMail +
                     "\nFrom b@x Mon Jan  1 10:00:00 2024\n" + kMail,
                 "x", Kind::Mbox},
        KindCase{"oldTar", OldTar(), "x", Kind::Tar},
        KindCase{"noTar", "a.txt" + std::string(507, '\0'), "x.tar", Kind::Unknown},
        KindCase{"picture", "\x89PNG\r\n\x1A\n", "x.txt", Kind::Media},
        KindCase{"gzipOfNothing", "\x1F\x8B\x08\0\0\0\0\0"s, "x.tgz", Kind::Compressed},
        KindCase{"zip", MakeZip({{"a.txt", "a"}}), "x.docx", Kind::Zip},
        KindCase{"jar", MakeZip({{"META-INF/MANIFEST.MF", "a"}, {"a.class", "x"}}), "x.jar",
                 Kind::Zip},
        KindCase{"emptyZip", "PK\5\6"s + std::string(18, '\0'), "x", Kind::Zip},
        KindCase{
            "docxMacro",
            MakeZip(
                {{"[Content_Types].xml",
                  "<Types><Override "
                  "ContentType='application/vnd.ms-word.document.macroEnabled.main+xml'/></Types>"},
                 {"d.xml", "x"}}),
            "x.zip", Kind::Docx},
        KindCase{"pptxWithoutTypes", MakeZip({{"ppt/presentation.xml", "x"}}), "x", Kind::Pptx},
        KindCase{"odfTemplate",
                 MakeZip({{"mimetype", "application/vnd.oasis.opendocument.spreadsheet-template"},
                          {"content.xml", "x"}}),
                 "x", Kind::OpenDocument},
        KindCase{"epub", MakeZip({{"mimetype", "application/epub+zip"}}), "x.zip", Kind::Epub}));

TEST(DetectKind, RealFiles) {
    const std::pair<const char*, Kind> files[] = {
        {"test.docx", Kind::Docx},           {"test.odt", Kind::OpenDocument},
        {"test.html", Kind::Html},           {"test.xlsx", Kind::Xlsx},
        {"test.epub", Kind::Epub},           {"tbl-cell.pptx", Kind::Pptx},
        {"test-protected.docx", Kind::Docx}, {"encryptSHA512.xlsx", Kind::Xlsx}};
    for (const auto& [name, kind] : files) {
        const std::string bytes = LoadOffice(name);
        EXPECT_STREQ(KindName(DetectKind({bytes, name})), KindName(kind)) << name;
    }
    EXPECT_EQ(DetectKind({LoadOffice("test.docx"), "x.txt"}), Kind::Docx) << "the ending lies";
}

} // namespace
} // namespace engine
