// What pictures, sound and films say of themselves; those that say nothing are known by name only.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Limits.h"
#include "engine/readers/MediaTags.h"
#include "engine/readers/Reader.h"
#include "tests/engine/readers/MemberRecorder.h"
#include "tests/engine/readers/RecordingSink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

namespace engine {
namespace {

using namespace std::string_literals;
using testing::HasSubstr;

RecordingSink Read(const std::string& bytes, const std::string& name = "file") {
    EXPECT_STREQ(KindName(DetectKind({bytes, name})), "media") << name;
    RecordingSink sink;
    ReadMedia({bytes, name}, sink);
    EXPECT_TRUE(sink.Whole()) << sink.text;
    return sink;
}
RecordingSink ReadFile(const std::string& name) {
    return Read(ReadTestFile("media/" + name), name);
}
// What is told of a file that tells nothing.
std::string ReasonOf(const std::string& bytes) {
    RecordingSink sink;
    try {
        ReadMedia({bytes, "file"}, sink);
    } catch (const ReadError& error) {
        EXPECT_EQ(error.state, ReadState::NameOnly);
        EXPECT_EQ(sink.text, "");
        EXPECT_TRUE(sink.fields.empty());
        return error.what();
    }
    return "read";
}

std::string Big(std::size_t number, int width = 4) {
    std::string bytes;
    for (int i = width - 1; i >= 0; --i)
        bytes += static_cast<char>(number >> (8 * i));
    return bytes;
}
std::string Little(std::size_t number) {
    const std::string bytes = Big(number);
    return {bytes.rbegin(), bytes.rend()};
}
std::string Box(const std::string& name, const std::string& content) {
    return Big(content.size() + 8) + name + content;
}
std::string Chunk(const std::string& name, const std::string& content) {
    return name + Little(content.size()) + content + std::string(content.size() % 2, '\0');
}

TEST(MediaReader, PicturesTellWhatCamerasAndPeopleWrote) {
    const RecordingSink sink = ReadFile("tagged.jpg");
    EXPECT_EQ(sink.fields.at("title"), "XP Tïtle, XMP title");
    EXPECT_EQ(sink.fields.at("author"), "Jürgen Groß, Ann Lee");
    EXPECT_EQ(sink.fields.at("subject"), "A harbour at dusk, Ein Héros");
    EXPECT_EQ(sink.fields.at("keywords"), "eins;zwei, sea, ship, xsub") << "each once";
    EXPECT_EQ(sink.fields.at("comments"), "Kommentar 日本, a remark");
    EXPECT_EQ(sink.text, "[p]Date: 2020:01:02 03:04:05[/p][p]Place: Genova[/p]"
                         "[p]Position: -45.500000, 11.250000[/p][p]Camera: Canon EOS 80D[/p]"
                         "[p]Lens: EF50mm f/1.8[/p][p]Rating: 4[/p][p]tagged.jpg[/p]");
    for (const char* ending : {"tif", "webp", "gif"}) {
        const RecordingSink other = ReadFile("tagged."s + ending);
        EXPECT_EQ(other.fields.at("title"), "Title of "s + ending);
        EXPECT_EQ(other.fields.at("author"), "Ann Lee");
    }
    EXPECT_EQ(ReadFile("tagged.gif").fields.at("comments"), "gif remark");
}

TEST(MediaReader, WhatSaysNothingIsKnownByName) {
    EXPECT_EQ(ReasonOf(ReadTestFile("media/plain.jpg")), "picture");
    EXPECT_EQ(ReasonOf(ReadTestFile("media/plain.tif")), "picture");
    EXPECT_EQ(ReasonOf("\x89PNG\r\n\x1A\n...."), "picture");
    EXPECT_EQ(ReasonOf("ID3\4"), "sound");
    EXPECT_EQ(ReasonOf(Box("ftyp", "isom")), "film");
    // A program's mark and a date are nothing that anybody looks for.
    EXPECT_EQ(
        ReasonOf("GIF89a" + std::string(7, '\0') + "!\xFE\x11" + "Created with GIMP" + "\0;"s),
        "picture");
}

std::string PngChunk(const std::string& type, const std::string& data) {
    return Big(data.size()) + type + data + "....";
}

TEST(MediaReader, TextsOfPng) {
    std::string packed(200, '\0');
    uLongf size = packed.size();
    compress(reinterpret_cast<Bytef*>(packed.data()), &size,
             reinterpret_cast<const Bytef*>("packed words"), 12);
    packed.resize(size);
    const std::string png = "\x89PNG\r\n\x1A\n"s + PngChunk("tEXt", "Title\0K\xF6ln"s) +
                            PngChunk("zTXt", "Description\0\0"s + packed) +
                            PngChunk("iTXt", "Author\0\1\0de\0Autor\0"s + packed) +
                            PngChunk("iTXt", "Comment\0\0\0\0\0日本"s) +
                            PngChunk("tEXt", "Software\0Painter"s);
    const RecordingSink sink = Read(png, "a.png");
    EXPECT_EQ(sink.fields.at("title"), "Köln");
    EXPECT_EQ(sink.fields.at("subject"), "packed words");
    EXPECT_EQ(sink.fields.at("author"), "packed words");
    EXPECT_EQ(sink.fields.at("comments"), "日本");
    EXPECT_EQ(sink.text, "[p]a.png[/p]");
}

TEST(MediaReader, Sound) {
    const std::pair<const char*, const char*> titles[] = {
        {"tagged.mp3", "Sóng"},        {"tagged-v1.mp3", "Short title"},
        {"tagged.flac", "Flac tïtle"}, {"tagged.ogg", "Ogg title"},
        {"tagged.opus", "Opus title"}, {"tagged.wv", "WavPack title"}};
    for (const auto& [name, title] : titles) {
        SCOPED_TRACE(name);
        const RecordingSink sink = ReadFile(name);
        EXPECT_EQ(sink.fields.at("title"), title);
        EXPECT_EQ(sink.fields.at("author"), "Ann Lee");
    }
    const RecordingSink mp3 = ReadFile("tagged.mp3");
    EXPECT_EQ(mp3.fields.at("album"), "Album");
    EXPECT_EQ(mp3.fields.at("genre"), "Rock");
    EXPECT_EQ(mp3.fields.at("comments"), "remark");
    EXPECT_EQ(mp3.text, "[p]Date: 2001[/p][p]Track: 3[/p][p]tagged.mp3[/p]");
    EXPECT_THAT(ReadFile("tagged.flac").text, HasSubstr("[p]Lyrics: la la[br]second line[/p]"));
    EXPECT_EQ(ReadFile("tagged.ogg").fields.at("composer"), "Bach");
    // Old tags in the charset of their writer's country.
    std::string v1 = ReadTestFile("media/tagged-v1.mp3");
    v1.replace(v1.size() - 125, 12, "\xCF\xF0\xE8\xE2\xE5\xF2 \xEC\xE8\xF0\0\0"s);
    EXPECT_EQ(Read(v1).fields.at("title"), "Привет мир");
}

TEST(MediaReader, ChunksOfWaveAiffAviAndAu) {
    const std::string info =
        Chunk("LIST", "INFO" + Chunk("INAM", "T\xEFtle"s) + Chunk("IART", "Ann Lee"));
    const std::string format = Chunk("fmt ", "\1\0\1\0\x40\x1F\0\0\x80\x3E\0\0\2\0\x10\0"s);
    const RecordingSink wave = Read(Chunk("RIFF", "WAVE" + format + Chunk("data", "12") + info));
    EXPECT_EQ(wave.fields.at("title"), "Tïtle");
    EXPECT_EQ(wave.fields.at("author"), "Ann Lee");
    const std::string film = Chunk("LIST", "movi" + Chunk("INAM", "not this"));
    const RecordingSink avi = Read(Chunk("RIFF", "AVI " + film + info));
    EXPECT_EQ(avi.fields.at("title"), "Tïtle");
    const std::string aiff =
        "FORM" + Big(4 + 12 + 14) + "AIFF" + "NAME" + Big(4) + "Song" + "ANNO" + Big(6) + "remark";
    EXPECT_EQ(Read(aiff).fields.at("title"), "Song");
    EXPECT_EQ(Read(aiff).fields.at("comments"), "remark");
    EXPECT_EQ(
        Read(".snd" + Big(32) + std::string(16, '\0') + "a remark" + "sound").fields.at("comments"),
        "a remark");
}

std::string Item(const std::string& name, const std::string& text) {
    return Box(name, Box("data", Big(1) + Big(0) + text));
}

TEST(MediaReader, BoxesOfMp4AndQuickTime) {
    const std::string head = Box("ftyp", "M4V ") + Box("mdat", std::string(5000, 'x'));
    const std::string items = Item("\xA9nam", "Tïtle") +
                              Item("\xA9"
                                   "ART",
                                   "Ann Lee") +
                              Item("desc", "What it is about") + Item("\xA9lyr", "la la\nla") +
                              Box("trkn", Box("data", Big(0) + Big(0) + Big(7) + Big(0))) +
                              Box("gnre", Box("data", Big(0) + Big(0) + Big(18, 2)));
    const RecordingSink mp4 = Read(
        head +
        Box("moov", Box("udta", Box("meta", Big(0) + Box("hdlr", "....") + Box("ilst", items)))));
    EXPECT_EQ(mp4.fields.at("title"), "Tïtle");
    EXPECT_EQ(mp4.fields.at("author"), "Ann Lee");
    EXPECT_EQ(mp4.fields.at("subject"), "What it is about");
    EXPECT_EQ(mp4.fields.at("genre"), "Rock");
    EXPECT_EQ(mp4.text, "[p]Track: 7[/p][p]Lyrics: la la[br]la[/p][p]file[/p]");
    // QuickTime: texts with their length, and keys of full names.
    const std::string keys =
        Box("keys", Big(0) + Big(2) + Box("mdta", "com.apple.quicktime.model") +
                        Box("mdta", "com.apple.quicktime.location.ISO6709"));
    const std::string values = Item(Big(1), "Phone 9") + Item(Big(2), "+45.5+009.2/");
    const RecordingSink mov =
        Read(Box("wide", "") + Box("mdat", "...") +
             Box("moov", Box("udta", Box("\xA9nam", Big(5, 2) + Big(0, 2) + "Title")) +
                             Box("meta", Box("hdlr", "....") + keys + Box("ilst", values))));
    EXPECT_EQ(mov.fields.at("title"), "Title");
    EXPECT_EQ(mov.text, "[p]Position: +45.5+009.2/[/p][p]Camera: Phone 9[/p][p]file[/p]");
}

TEST(MediaReader, Matroska) {
    const RecordingSink sink = ReadFile("tagged.mkv");
    EXPECT_EQ(sink.fields.at("title"), "Film tïtle");
    EXPECT_EQ(sink.fields.at("author"), "Ann Lee");
    EXPECT_EQ(sink.fields.at("comments"), "remark");
    // A film that was sent while it was made does not know its sizes.
    const std::string live = "\x1A\x45\xDF\xA3\x80\x18\x53\x80\x67\x01\xFF\xFF\xFF\xFF\xFF\xFF\xFF"
                             "\x1F\x43\xB6\x75\xFF\xA3\x84....\x15\x49\xA9\x66\x88\x7B\xA9\x85"
                             "Title";
    EXPECT_EQ(Read(live).fields.at("title"), "Title");
}

TEST(MediaReader, EndlessTextIsCutAndTold) {
    std::string png = "\x89PNG\r\n\x1A\n";
    for (int i = 0; i < 6; ++i)
        png += PngChunk("tEXt", "Comment\0"s + std::string(kMiB, static_cast<char>('a' + i)));
    const RecordingSink sink = Read(png);
    EXPECT_LE(sink.fields.at("comments").size(), kMaxMediaTagBytes + 10);
    EXPECT_THAT(sink.problems, testing::ElementsAre("texts beyond 4 MB"));
}

TEST(MediaReader, DamageEndsNothingButTheFile) {
    const std::string deep = [] {
        std::string boxes;
        for (int i = 0; i < 100'000; ++i)
            boxes += "\0\0\0\0moov"s; // each reaches to the end
        return Box("ftyp", "isom") + boxes;
    }();
    EXPECT_EQ(ReasonOf(deep), "film");
    for (const char* name :
         {"tagged.jpg", "tagged.tif", "tagged.webp", "tagged.gif", "tagged.mp3", "tagged.flac",
          "tagged.ogg", "tagged.opus", "tagged.wv", "tagged.mkv"}) {
        const std::string whole = ReadTestFile(std::string("media/") + name);
        const std::size_t step = whole.size() / 150 + 1;
        for (std::size_t at = 0; at < whole.size(); at += step) {
            static_cast<void>(ReasonOf(whole.substr(0, at)));
            std::string broken = whole;
            broken[at] = static_cast<char>(broken[at] ^ (1 << at % 8));
            broken[whole.size() - 1 - at] = '\xFF';
            static_cast<void>(ReasonOf(broken));
        }
    }
}

} // namespace
} // namespace engine
