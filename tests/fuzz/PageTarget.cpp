// Pages: whatever a document does, its page holds the text that the index holds and nothing else.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/html/HtmlWriter.h"
#include "engine/readers/TextRecorder.h"
#include "tests/fuzz/CheckedSinks.h"
#include "tests/fuzz/HtmlCheck.h"
#include "tests/fuzz/Packages.h"
#include "tests/fuzz/Script.h"
#include "tests/fuzz/Target.h"

#include <zstd.h>

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

namespace fuzz {
namespace {

using engine::Block;
using engine::Kind;

// Calls in any order, but not nested more deeply than the parser of the page follows.
void PlayCalls(std::string_view bytes, engine::DocumentSink& sink) {
    static constexpr std::array<std::string_view, 6> kMimes{
        "image/png", "image/jpeg", "image/svg+xml", "text/html", "image/png\"><script>", ""};
    static constexpr std::array<std::string_view, 5> kNames{"title", "author", "subject",
                                                            "x<script>y", "a\"b"};
    constexpr int kDeepest = 60;
    int depth = 0;
    for (Script script(bytes); !script.AtEnd();) {
        const std::uint8_t byte = script.Byte();
        const auto block = static_cast<Block>(byte / 16 % 11);
        switch (byte % 16) {
        case 0:
        case 1:
        case 2:
            if (++depth < kDeepest)
                sink.Open(block, static_cast<int>(script.Byte()) - 2);
            break;
        case 3:
        case 4:
            sink.Close(block);
            break;
        case 5:
            sink.Break();
            break;
        case 6: {
            const std::string_view picture = script.Text();
            sink.Picture(kMimes[byte / 16 % kMimes.size()], picture, script.Text());
            break;
        }
        case 7:
            sink.Field(kNames[byte / 16 % kNames.size()], script.Text());
            break;
        case 8:
            sink.Incomplete("a part is missing");
            break;
        default:
            sink.Text(script.Text());
        }
    }
}

// What the index would keep.
struct Recorded {
    std::string text;
    std::uint64_t words = 0;
};

using Read = std::function<void(engine::DocumentSink&)>;

Recorded Record(engine::Tokenizer& tokenizer, const Read& read) {
    Recorded recorded;
    std::uint64_t terms = 0;
    engine::TextRecorder recorder(
        tokenizer, engine::WordRule::Letters, [&](const engine::TextChunk& chunk) {
            std::string text(chunk.plainLength, '\0');
            const std::size_t size =
                ZSTD_decompress(text.data(), text.size(), chunk.text.data(), chunk.text.size());
            Require(size == text.size(), "a text that cannot be unpacked");
            recorded.text += text;
            std::uint64_t count = 0;
            std::string_view rest = chunk.terms;
            while (!rest.empty()) {
                count += rest.front() != '\x01' ? 1 : 0;
                const std::size_t end = rest.find('\n');
                Require(end != std::string_view::npos, "a word without its end");
                rest.remove_prefix(end + 1);
            }
            Require(count == chunk.wordCount, "words are miscounted");
            terms += count;
        });
    MayFail([&] { read(recorder); });
    const engine::DocumentEnd end = recorder.End(engine::ReadState::Read, {});
    Require(end.words == terms, "words are miscounted in the end");
    Require(std::none_of(end.reason.begin(), end.reason.end(),
                         [](char c) { return static_cast<unsigned char>(c) < ' '; }),
            "a reason of several lines", end.reason);
    for (const engine::FieldRange& field : end.fields)
        Require(field.first >= 1 && field.last <= end.words && field.first <= field.last + 1,
                "a field beyond the words");
    recorded.words = end.words;
    return recorded;
}

void CheckPage(const Read& read, std::size_t hitStep) {
    static engine::Tokenizer tokenizer;
    const Recorded recorded = Record(tokenizer, read);
    std::vector<std::uint32_t> hits;
    for (std::uint64_t hit = hitStep; hit <= recorded.words; hit += hitStep)
        hits.push_back(static_cast<std::uint32_t>(hit));
    std::string html;
    engine::HtmlWriter writer(tokenizer, engine::WordRule::Letters, hits,
                              {"<a name=\"h%%ThisHit%%\">", "</a>", "", ""},
                              [&](std::string_view piece) { html += piece; });
    writer.Begin("<title> & \"quotes\"");
    MayFail([&] { read(writer); });
    writer.End();
    Require(writer.WordCount() == recorded.words, "page and index count other words");
    Require(CheckHtml(html) == hits.size(), "hits without their anchors");
    const std::string shown = WithoutBlanks(BodyText(html));
    const std::string kept = WithoutBlanks(recorded.text);
    const auto [here, there] = std::mismatch(shown.begin(), shown.end(), kept.begin(), kept.end());
    Require(here == shown.end() && there == kept.end(), "page and index hold other texts",
            shown.substr(std::max<std::ptrdiff_t>(here - shown.begin() - 40, 0), 80) + " | " +
                kept.substr(std::max<std::ptrdiff_t>(there - kept.begin() - 40, 0), 80));
}

} // namespace

// The first byte: a reader, or calls without one. The second: how many words are hits.
void FuzzPage(const Target&, std::string_view input) {
    Script head(input.substr(0, 2));
    const char way = static_cast<char>(head.Byte());
    const std::size_t hitStep = 1 + head.Byte() % 32U;
    input.remove_prefix(std::min<std::size_t>(2, input.size()));
    static constexpr std::array<std::pair<char, Kind>, 8> kReaders{{{'h', Kind::Html},
                                                                    {'x', Kind::Xml},
                                                                    {'t', Kind::PlainText},
                                                                    {'m', Kind::Mail},
                                                                    {'w', Kind::Docx},
                                                                    {'s', Kind::Xlsx},
                                                                    {'o', Kind::OpenDocument},
                                                                    {'r', Kind::Rtf}}};
    const auto reader = std::find_if(kReaders.begin(), kReaders.end(),
                                     [&](const auto& each) { return each.first == way; });
    if (reader == kReaders.end())
        return CheckPage([&](engine::DocumentSink& sink) { PlayCalls(input, sink); }, hitStep);
    const Kind kind = reader->second;
    const std::string document = DocumentOf(kind, input);
    CheckPage(
        [&](engine::DocumentSink& sink) {
            CheckedMembers members;
            engine::ReadDocument(kind, {document, NameOf(kind)}, sink, members);
        },
        hitStep);
}

} // namespace fuzz
