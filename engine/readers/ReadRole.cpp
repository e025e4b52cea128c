// Serves the role "read".
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/ReadRole.h"

#include "engine/readers/Frames.h"
#include "engine/readers/MappedFile.h"
#include "engine/readers/Prepare.h"
#include "engine/readers/TextRecorder.h"
#include "engine/readers/Walk.h"

#include <memory>

namespace engine {
namespace {

// Sends every document that the walk finds.
class Recording final : public DocumentVisitor {
  public:
    Recording(Tokenizer& tokenizer, WordRule rule, workers::Answer& answer)
        : m_tokenizer(tokenizer), m_rule(rule), m_answer(answer) {}

    bool Wants(const std::string& /*path*/) override { return true; }

    void Visit(const FoundDocument& document, MemberSink& attachments) override {
        DocumentHead head;
        head.path = document.path;
        head.display = document.display;
        head.modified = document.modified;
        head.size = document.source.bytes.size();
        head.kind = static_cast<std::uint8_t>(document.kind);
        Send(Frame::Begin, Pack(head));
        // Blanks part words only in recognised text, never in what lies inside a container.
        TextRecorder recorder(m_tokenizer, document.path.empty() ? m_rule : WordRule::Letters,
                              [this](const TextChunk& chunk) { Send(Frame::Chunk, Pack(chunk)); });
        ReadState state = document.state;
        std::string reason = document.reason;
        if (!document.container && (state == ReadState::Read || state == ReadState::Partly) &&
            !document.source.bytes.empty())
            ReadInto(document, recorder, attachments, state, reason);
        if (state != ReadState::Read && state != ReadState::Partly && recorder.WordCount() == 0)
            NameInto(document, recorder);
        Send(Frame::End, Pack(recorder.End(state, reason)));
    }

  private:
    static void ReadInto(const FoundDocument& document, TextRecorder& recorder,
                         MemberSink& attachments, ReadState& state, std::string& reason) {
        try {
            ReadDocument(document.kind, document.source, recorder, attachments);
        } catch (const ReadError& error) {
            state = error.state;
            reason = error.what();
        } catch (const StopReading&) {
            // The recorder has noted which cap was reached.
        }
    }

    // What cannot be read is found by its name.
    static void NameInto(const FoundDocument& document, TextRecorder& recorder) {
        recorder.Open(Block::Paragraph, 0);
        recorder.Text(document.display);
        recorder.Close(Block::Paragraph);
    }

    void Send(Frame frame, const std::string& bytes) {
        m_answer.Send(static_cast<std::uint8_t>(frame), bytes);
    }

    Tokenizer& m_tokenizer;
    WordRule m_rule;
    workers::Answer& m_answer;
};

} // namespace

workers::Role MakeReadRole() {
    auto tokenizer = std::make_shared<std::unique_ptr<Tokenizer>>();
    workers::Role role;
    role.prepare = [tokenizer](const std::map<std::string, std::string>& settings) {
        PrepareReaders();
        const auto alphabet = settings.find(kAlphabetSetting);
        *tokenizer = std::make_unique<Tokenizer>(
            alphabet == settings.end() ? Alphabet() : Alphabet::Parse(alphabet->second));
    };
    role.serve = [tokenizer](int file, std::string_view bytes, workers::Answer& answer) {
        Unpacker request(bytes);
        Source source;
        source.name = request.Text();
        const auto rule = request.Number() == 0 ? WordRule::Letters : WordRule::Blanks;
        const MappedFile mapped(file);
        source.bytes = mapped.Bytes();
        Recording recording(**tokenizer, rule, answer);
        WalkDocuments(source, recording);
    };
    return role;
}

} // namespace engine
