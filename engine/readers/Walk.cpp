// The recursion through containers.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Walk.h"

#include "engine/readers/Frames.h"
#include "engine/readers/Limits.h"
#include "engine/readers/MediaKind.h"
#include "engine/readers/MemberNames.h"

#include <functional>
#include <utility>
#include <vector>

namespace engine {
namespace {

class Walker {
  public:
    explicit Walker(DocumentVisitor& visitor) : m_visitor(visitor) {}
    void Walk(FoundDocument document, int depth);

  private:
    void WalkContainer(FoundDocument& document, int depth);
    void WalkMember(const FoundDocument& container, const Member& member, const std::string& path,
                    int depth);
    void Count(const Member& member);
    DocumentVisitor& m_visitor;
    std::uint64_t m_unpacked = 0; // bytes of all members so far
    std::uint64_t m_members = 0;
};

// Gives each member its place in the container's name: ">n|MEMBER".
class ContainerSink final : public MemberSink {
  public:
    using Take = std::function<void(const Member&, const std::string& path)>;
    ContainerSink(DocumentVisitor& visitor, std::string prefix, Take take)
        : m_visitor(visitor), m_prefix(std::move(prefix)), m_take(std::move(take)) {}
    bool Wants(std::string_view path) override {
        m_path = m_prefix + ">" + std::to_string(m_next++) + "|" + EscapeMarks(path);
        return m_visitor.Wants(m_path);
    }
    void Receive(const Member& member) override { m_take(member, m_path); }

  private:
    DocumentVisitor& m_visitor;
    std::string m_prefix;
    Take m_take;
    int m_next = 0;
    std::string m_path;
};

// Keeps what is attached until the document itself has been read. A mail's attachments are told
// from the messages of a mail store by their mark: ">{n:0}|NAME", all others are ">n|NAME".
class AttachmentSink final : public MemberSink {
  public:
    AttachmentSink(DocumentVisitor& visitor, std::string prefix, bool ofMail)
        : m_visitor(visitor), m_prefix(std::move(prefix)), m_ofMail(ofMail) {}
    bool Wants(std::string_view path) override {
        const std::string number = std::to_string(m_next++);
        m_path = m_prefix + ">" + (m_ofMail ? "{" + number + ":0}" : number) + "|" +
                 EscapeMarks(path);
        return m_visitor.Wants(m_path);
    }
    void Receive(const Member& member) override {
        kept.push_back({member, std::string(member.bytes), m_path});
    }
    struct Kept {
        Member member;
        std::string bytes;
        std::string path;
    };
    std::vector<Kept> kept;

  private:
    DocumentVisitor& m_visitor;
    std::string m_prefix;
    bool m_ofMail;
    int m_next = 0;
    std::string m_path;
};

// An archive's own caps do not hold for archives full of archives. What is thrown ends the archive
// that the member stands in, then with its next member the one around it.
void Walker::Count(const Member& member) {
    m_unpacked += member.bytes.size();
    if (m_unpacked > kMaxArchiveBytes)
        throw ReadError(ReadState::Partly,
                        "unpacks to more than " + std::to_string(kMaxArchiveBytes / kGiB) + " GB");
    if (++m_members > kMaxArchiveEntries)
        throw ReadError(ReadState::Partly,
                        "has more than " + std::to_string(kMaxArchiveEntries) + " entries");
}

void Walker::WalkMember(const FoundDocument& /*container*/, const Member& member,
                        const std::string& path, int depth) {
    FoundDocument found;
    found.path = path;
    found.display = member.displayName;
    if (found.display.empty())
        found.display = LastPart(member.path);
    found.modified = member.modified;
    found.source = {member.bytes, std::string(LastPart(member.path))};
    if (!member.problem.empty()) {
        found.state = member.problemState;
        found.reason = member.problem;
    } else if (member.cut) {
        found.state = ReadState::Partly;
        found.reason = "larger than what is unpacked";
    }
    Walk(std::move(found), depth);
}

void Walker::WalkContainer(FoundDocument& document, int depth) {
    document.container = true;
    if (depth >= kDeepestNesting) {
        document.state = ReadState::Partly;
        document.reason = "containers nested too deeply";
        return;
    }
    ContainerSink members(m_visitor, document.path,
                          [&](const Member& member, const std::string& path) {
                              Count(member);
                              WalkMember(document, member, path, depth + 1);
                          });
    try {
        if (document.kind == Kind::Mbox)
            ReadMbox(document.source, members);
        else
            ReadArchive(document.source, members);
    } catch (const ReadError& error) {
        document.state = error.state;
        document.reason = error.what();
    }
}

void Walker::Walk(FoundDocument document, int depth) {
    const bool readable = document.state == ReadState::Read || document.state == ReadState::Partly;
    if (readable && !document.source.bytes.empty()) {
        document.kind = DetectKind(document.source);
        if (IsContainer(document.kind))
            WalkContainer(document, depth);
        else if (document.kind == Kind::Unknown && document.state == ReadState::Read) {
            const char* media = MediaKind(document.source.bytes);
            document.state = media != nullptr ? ReadState::NameOnly : ReadState::Unknown;
            document.reason = media != nullptr ? media : "unknown kind of file";
        }
    }
    const bool ofMail = document.kind == Kind::Mail || document.kind == Kind::Msg;
    AttachmentSink attachments(m_visitor, document.path, ofMail);
    m_visitor.Visit(document, attachments);
    for (const AttachmentSink::Kept& kept : attachments.kept) {
        Member member = kept.member;
        member.bytes = kept.bytes;
        if (depth < kDeepestNesting)
            WalkMember(document, member, kept.path, depth + 1);
    }
}

} // namespace

void WalkDocuments(const Source& file, DocumentVisitor& visitor) {
    FoundDocument document;
    document.display = file.name;
    document.source = file;
    Walker(visitor).Walk(std::move(document), 0);
}

} // namespace engine
