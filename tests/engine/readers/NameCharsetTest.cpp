// Names in archives that do not tell their charset.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/NameCharset.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

namespace engine {
namespace {

std::string Encoded(const char* charset, const std::string& utf8) {
    UErrorCode error = U_ZERO_ERROR;
    std::string bytes(utf8.size() * 3 + 10, '\0');
    bytes.resize(static_cast<std::size_t>(
        ucnv_convert(charset, "UTF-8", bytes.data(), static_cast<std::int32_t>(bytes.size()),
                     utf8.data(), static_cast<std::int32_t>(utf8.size()), &error)));
    EXPECT_TRUE(U_SUCCESS(error)) << charset;
    return bytes;
}

TEST(NameCharset, OneNameTellsItsCharset) {
    const std::pair<const char*, const char*> cases[] = {
        {"ibm-437", "hören.txt"},
        {"ibm-437", "naïve café.txt"},
        {"ibm-850", "São João/Coração.doc"},
        {"ibm-850", "Øresund.txt"},
        {"windows-1252", "Größe.txt"},
        {"windows-1252", "façade.txt"},
        {"windows-1252", "Málaga.txt"},
        {"ibm-852", "Zażółć gęślą jaźń.txt"},
        {"windows-1250", "Příliš žluťoučký kůň.doc"},
        {"ibm-866", "Отчёт за 2010 год.doc"},
        {"windows-1251", "Документ1.doc"},
        {"KOI8-R", "Привет мир.txt"},
        {"ibm-866", "ПРИВЕТ"},
        {"windows-1251", "ПРИВЕТ"},
        {"ibm-737", "Καλημέρα κόσμε.txt"},
        {"windows-1253", "Καλημέρα κόσμε.txt"},
        {"ibm-862", "שלום עולם.txt"},
        {"Shift_JIS", "表だよ/新しいフォルダ/新規テキスト.txt"},
        {"Shift_JIS", "報告書2010.doc"},
        {"GBK", "新建文本文档.txt"},
        {"Big5", "新文件 檔案.txt"},
        {"windows-949", "새 텍스트 문서.txt"},
    };
    for (const auto& [charset, name] : cases)
        EXPECT_EQ(NameCharset().Decode(Encoded(charset, name)), name) << charset;
}

TEST(NameCharset, NamesOfOneArchiveHelpEachOther) {
    NameCharset charset;
    for (const char* name : {"中文", "新建文本文档.txt", "合同/二零一零年.doc"})
        charset.Learn(Encoded("GBK", name));
    EXPECT_EQ(charset.Decode(Encoded("GBK", "中文")), "中文");
    EXPECT_EQ(charset.Decode("Straße.txt"), "Straße.txt") << "what is UTF-8 stays";
}

} // namespace
} // namespace engine
