// Recognising and walking: a first line with a file's name, behind it the file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Walk.h"
#include "tests/fuzz/CheckedSinks.h"
#include "tests/fuzz/Target.h"

#include <algorithm>

namespace fuzz {
namespace {

class Visitor final : public engine::DocumentVisitor {
  public:
    bool Wants(const std::string& path) override {
        RequireMemberName(path);
        return path.find("skip") == std::string::npos;
    }

    void Visit(const engine::FoundDocument& document, engine::MemberSink& attachments) override {
        if (!document.path.empty())
            RequireMemberName(document.path);
        if (document.state != engine::ReadState::Read)
            RequireReason(document.reason);
        if (document.container || document.source.bytes.empty() ||
            (document.state != engine::ReadState::Read &&
             document.state != engine::ReadState::Partly))
            return;
        CheckedSink sink;
        if (MayFail(
                [&] { engine::ReadDocument(document.kind, document.source, sink, attachments); }))
            sink.RequireAllClosed();
    }

  private:
    // Each step is ">", its number (in braces where it is attached to a mail), "|" and a name.
    static void RequireMemberName(std::string_view path) {
        Require(path.starts_with('>'), "a member's name without its mark", path);
        while (!path.empty()) {
            path.remove_prefix(1);
            const std::size_t end = std::min(path.find('>'), path.size());
            const std::string_view step = path.substr(0, end);
            const std::size_t bar = step.find('|');
            Require(bar != std::string_view::npos && bar > 0, "a step without its number", path);
            Require(step.find_first_not_of("0123456789{}:") == bar, "no number", path);
            std::string name(step.substr(bar + 1));
            Require(name.find_first_of("|/") == std::string::npos, "marks in a name", path);
            std::replace(name.begin(), name.end(), '\\', '/');
            RequireSafePath(name);
            path.remove_prefix(end);
        }
    }
};

} // namespace

void FuzzWalk(const Target&, std::string_view input) {
    const std::size_t line = std::min<std::size_t>(input.find('\n'), 40);
    engine::Source source;
    source.name = input.substr(0, line);
    source.bytes = input.substr(std::min(line + 1, input.size()));
    Visitor visitor;
    MayFail([&] { engine::WalkDocuments(source, visitor); });
}

} // namespace fuzz
