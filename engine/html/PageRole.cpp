// Serves the role "page".
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/html/PageRole.h"

#include "engine/readers/Frames.h"
#include "engine/readers/MappedFile.h"
#include "engine/readers/Prepare.h"
#include "engine/readers/ReadRequest.h"
#include "engine/readers/Walk.h"

#include <memory>
#include <stdexcept>

namespace engine {
namespace {

// Renders the one document that is wanted and passes the others by.
class Rendering final : public DocumentVisitor {
  public:
    Rendering(Tokenizer& tokenizer, const PageRequest& request, workers::Answer& answer)
        : m_tokenizer(tokenizer), m_request(request), m_answer(answer) {}
    bool found = false;

    bool Wants(const std::string& path) override {
        const std::string& wanted = m_request.member;
        return wanted.compare(0, path.size(), path) == 0 &&
               (wanted.size() == path.size() || wanted[path.size()] == '>');
    }

    void Visit(const FoundDocument& document, MemberSink& attachments) override {
        if (found || document.path != m_request.member)
            return PassBy(document, attachments);
        found = true;
        if (document.state != ReadState::Read && document.state != ReadState::Partly)
            throw std::runtime_error(document.reason);
        HtmlWriter writer(m_tokenizer, m_request.rule, m_request.hits, m_request.marks,
                          [this](std::string_view html) {
                              m_answer.Send(static_cast<std::uint8_t>(Frame::Html), html);
                          });
        writer.Begin(m_request.title);
        try {
            if (!document.container && !document.source.bytes.empty())
                ReadDocument(document.kind, document.source, writer, attachments);
        } catch (const ReadError& error) {
            if (error.state == ReadState::Encrypted || writer.WordCount() == 0)
                throw;
        } catch (const StopReading&) {
            // What was written so far is a page.
        }
        writer.End();
    }

  private:
    // A document on the way to what is attached to it has to be read for that.
    void PassBy(const FoundDocument& document, MemberSink& attachments) {
        if (found || document.container || !MayHoldOthers(document.kind))
            return;
        HtmlWriter nowhere(m_tokenizer, WordRule::Letters, {}, {}, [](std::string_view) {});
        try {
            ReadDocument(document.kind, document.source, nowhere, attachments);
        } catch (const ReadError&) {
            // Its attachments, as far as they came, are what matters.
        }
    }

    Tokenizer& m_tokenizer;
    const PageRequest& m_request;
    workers::Answer& m_answer;
};

} // namespace

workers::Role MakePageRole() {
    auto tokenizer = std::make_shared<std::unique_ptr<Tokenizer>>();
    workers::Role role;
    role.prepare = [tokenizer](const std::map<std::string, std::string>& settings) {
        PrepareReaders();
        const auto alphabet = settings.find(kAlphabetSetting);
        *tokenizer = std::make_unique<Tokenizer>(
            alphabet == settings.end() ? Alphabet() : Alphabet::Parse(alphabet->second));
    };
    role.serve = [tokenizer](int file, std::string_view bytes, workers::Answer& answer) {
        const PageRequest request = UnpackPageRequest(bytes);
        const MappedFile mapped(file);
        Rendering rendering(**tokenizer, request, answer);
        WalkDocuments({mapped.Bytes(), request.name}, rendering);
        if (!rendering.found)
            throw std::runtime_error("the document is not in its container any more");
    };
    return role;
}

} // namespace engine
