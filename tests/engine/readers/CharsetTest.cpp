// Charsets of short texts that declare none: names, notes of one line.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Charset.h"

#include <gtest/gtest.h>

#include <unicode/unistr.h>

#include <vector>

namespace engine {
namespace {

std::string Encode(const std::string& utf8, const char* charset) {
    const icu::UnicodeString text = icu::UnicodeString::fromUTF8(utf8);
    std::string bytes(utf8.size() * 4 + 16, '\0');
    const int32_t length =
        text.extract(0, text.length(), bytes.data(), static_cast<uint32_t>(bytes.size()), charset);
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

std::string Decode(const std::string& bytes) {
    return DecodeText(bytes, DetectCharset(bytes), bytes.size());
}

struct ShortTexts {
    const char* charset;
    std::vector<const char*> texts;
};

// Each of them was met or could have been; none was counted for the statistics.
TEST(ShortTextCharset, IsGuessed) {
    const ShortTexts all[] = {
        {"windows-1252",
         {"Perché no? È così.", "Niccolò Fabrizi", "Don’t forget the café", "Price: £25",
          "Jürgen Müller", "Straße 5, München", "¿Qué tal, señor?", "El niño pequeño", "À bientôt",
          "François Lefèvre", "L’été à la plage", "Rechnung über 30 €", "Malmö"}},
        {"windows-1250",
         {"Zażółć gęślą jaźń", "Paweł Wiśniewski", "Święta Bożego Narodzenia", "ręka",
          "Příliš žluťoučký kůň", "Jiří Novák", "Dvořák", "Köszönöm szépen, Győr"}},
        {"ISO-8859-2", {"Dziękuję bardzo", "Wrocław, ul. Długa 5", "Tomáš Černý", "Děkuji"}},
        {"windows-1251", {"Привет, мир", "Иван Петров", "Список: хлеб, молоко", "ДОГОВОР № 5"}},
        {"KOI8-R", {"Привет, мир", "Сергей Королёв", "Встреча завтра в 10:00", "Москва"}},
        {"ibm-866", {"Отчёт за год", "Пожалуйста, проверьте"}},
        {"windows-1253", {"Καλημέρα", "Γιώργος Παπαδόπουλος", "ΕΛΛΑΔΑ"}},
        {"windows-1254", {"Teşekkür ederim", "Güneş doğdu", "İstanbul", "ışık"}},
        {"windows-31j", {"こんにちは", "会議は明日です", "カタカナ", "請求書"}},
        {"EUC-JP", {"日本語のテキスト", "ありがとうございます"}},
        {"gb18030", {"谢谢你的来信", "北京市", "请查收附件"}},
        {"Big5", {"謝謝你的來信", "會議記錄"}},
        {"windows-949", {"안녕하세요", "첨부 파일을 확인하세요"}},
        {"UTF-16LE",
         {"Perché no?", "Привет", "Καλημέρα", "日本語のテキスト", "谢谢你的来信",
          "첨부 파일을 확인하세요"}},
        {"UTF-16BE",
         {"Grüße", "Список: хлеб", "会議は明日です", "谢谢你的来信", "ありがとうございます"}},
    };
    for (const ShortTexts& group : all)
        for (const char* text : group.texts)
            EXPECT_EQ(Decode(Encode(text, group.charset)), text) << group.charset;
}

// What is UTF-8 or no text must not be taken for something rarer.
TEST(ShortTextCharset, FindsNoCharsetThatIsNotThere) {
    std::string greek;
    while (greek.size() < 5000)
        greek += "Καλημέρα κόσμε, τι κάνετε; ";
    // A sample may end within a character, a file as well.
    for (std::size_t length = 395; length < 402; ++length)
        EXPECT_EQ(DetectCharset(std::string_view(greek).substr(0, length)).name, "UTF-8");
    EXPECT_EQ(DetectCharset(greek).name, "UTF-8");
    EXPECT_EQ(DetectCharset("plain words!").name, "UTF-8");
    std::uint32_t state = 5;
    for (int round = 0; round < 200; ++round) {
        std::string noise;
        for (int i = 0; i < 400; ++i) {
            state = state * 1664525 + 1013904223;
            noise += static_cast<char>(state >> 24);
        }
        EXPECT_FALSE(DetectCharset(noise).name.starts_with("UTF-16")) << round;
    }
    EXPECT_TRUE(LooksLikeText(Encode("谢谢你的来信", "UTF-16LE"))) << "without any zero byte";
}

} // namespace
} // namespace engine
