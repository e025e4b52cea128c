// Compound files: sectors, the chains they form, and the tree of names above them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/CompoundFile.h"

#include "engine/readers/CodePage.h"
#include "engine/readers/Limits.h"
#include "engine/readers/LittleEndian.h"
#include "engine/readers/Reader.h"

#include <algorithm>

namespace engine {
namespace {

using namespace std::string_view_literals;

constexpr auto kMark = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv;
constexpr std::size_t kHeaderSize = 512;
constexpr std::size_t kEntrySize = 128;
constexpr std::uint32_t kLastSector = 0xFFFFFFFA; // above: marks, not sectors
constexpr std::uint32_t kNoEntry = 0xFFFFFFFF;
constexpr std::size_t kMiniSector = 64;
constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// Names are compared without case. Those that readers ask for are ASCII.
std::string FoldName(std::string_view name) {
    std::string folded(name);
    for (char& c : folded)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return folded;
}

std::string NameOf(std::string_view entry) {
    constexpr std::size_t kNameBytes = 64;
    std::string name;
    AppendUtf16(name, entry.substr(0, std::min<std::size_t>(U16(entry, kNameBytes), kNameBytes)));
    return name.substr(0, name.find('\0'));
}

} // namespace

struct CompoundFile::Parts {
    struct Node {
        std::string name, folded;
        bool storage = false;
        std::uint32_t start = 0;
        std::uint64_t size = 0;
        std::vector<std::size_t> children; // by folded name
    };

    std::string_view bytes;
    std::size_t sectorSize = 512;
    std::uint64_t miniLimit = 4096; // smaller streams lie in the mini stream
    std::vector<std::uint32_t> next, miniNext;
    std::vector<std::uint32_t> miniSectors; // of the mini stream
    std::vector<Node> nodes;                // 0 is the root
    mutable std::uint64_t left = 0; // bytes of streams that are still handed out: a hostile file
                                    // lets thousands of names share the same sectors

    [[nodiscard]] std::string_view Sector(std::uint32_t number) const {
        return Slice(bytes, (std::uint64_t{number} + 1) * sectorSize, sectorSize);
    }
    void ReadHeader();
    void ReadSectorTable();
    // At most limit sectors, ending before one that the file does not hold or that closes a ring.
    [[nodiscard]] std::vector<std::uint32_t> Chain(std::uint32_t start, std::size_t limit) const;
    void ReadDirectory();
    void ReadTree(std::string_view directory);
    void SortChildren();
    [[nodiscard]] std::size_t Find(std::string_view path) const;
    [[nodiscard]] std::string Read(const Node& node, std::uint64_t size) const;
};

void CompoundFile::Parts::ReadHeader() {
    if (!Recognises(bytes) || bytes.size() < kHeaderSize)
        throw ReadError(ReadState::Damaged, "the header is missing");
    const bool large = U16(bytes, 0x1E) == 12 || (U16(bytes, 0x1E) != 9 && U16(bytes, 0x1A) == 4);
    sectorSize = large ? 4096 : 512;
    // Some programs leave it at 0; no other value is in use.
    miniLimit = U32(bytes, 0x38) == 0 ? 4096 : U32(bytes, 0x38);
    constexpr std::uint64_t kReadAgain = 16, kFree = std::uint64_t{64} << 20;
    left = bytes.size() * kReadAgain + kFree;
}

// The numbers of the sectors that hold the table stand in the header, further ones in a chain of
// sectors of their own.
void CompoundFile::Parts::ReadSectorTable() {
    const std::size_t sectors = (bytes.size() + sectorSize - 1) / sectorSize;
    const std::size_t perSector = sectorSize / 4;
    const auto add = [&](std::uint32_t number) {
        const std::string_view sector = number < kLastSector ? Sector(number) : std::string_view();
        // A sector that is missing leaves a gap, so that the numbers behind it stay right.
        for (std::size_t i = 0; i < perSector && next.size() < sectors; ++i)
            next.push_back(i * 4 + 4 <= sector.size() ? U32(sector, i * 4) : kNoEntry);
    };
    constexpr std::size_t kInHeader = 109;
    std::uint64_t wanted = U32(bytes, 0x2C); // sectors of the table
    for (std::size_t i = 0; i < kInHeader && wanted > 0; ++i, --wanted)
        add(U32(bytes, 0x4C + i * 4));
    std::uint32_t list = U32(bytes, 0x44);
    // The bound ends rings: every round adds to the table, which is not longer than the file.
    while (wanted > 0 && next.size() < sectors && list < kLastSector) {
        const std::string_view sector = Sector(list);
        if (sector.size() < sectorSize)
            break;
        for (std::size_t i = 0; i + 1 < perSector && wanted > 0; ++i, --wanted)
            add(U32(sector, i * 4));
        list = U32(sector, sectorSize - 4);
    }
    next.resize(sectors, kNoEntry);
}

std::vector<std::uint32_t> CompoundFile::Parts::Chain(std::uint32_t start,
                                                      std::size_t limit) const {
    std::vector<std::uint32_t> chain;
    limit = std::min(limit, next.size()); // a longer one is a ring
    for (std::uint32_t at = start; at < next.size() && chain.size() < limit; at = next[at])
        chain.push_back(at);
    return chain;
}

void CompoundFile::Parts::ReadDirectory() {
    std::string directory;
    const std::vector<std::uint32_t> chain = Chain(U32(bytes, 0x30), kNone);
    std::vector<bool> seen(next.size());
    for (const std::uint32_t number : chain) {
        if (seen[number])
            break;
        seen[number] = true;
        directory += Sector(number);
        directory.resize((directory.size() + kEntrySize - 1) / kEntrySize * kEntrySize);
    }
    if (directory.empty())
        throw ReadError(ReadState::Damaged, "the directory is missing");
    if (directory.size() / kEntrySize > kMaxCompoundEntries)
        throw ReadError(ReadState::Damaged, "the directory is too long");
    ReadTree(directory);

    const Node& root = nodes[0];
    const std::uint64_t miniSize = std::min<std::uint64_t>(root.size, bytes.size());
    miniSectors = Chain(root.start, static_cast<std::size_t>(miniSize / sectorSize + 1));
    for (const std::uint32_t number : Chain(U32(bytes, 0x3C), kNone)) {
        const std::string_view sector = Sector(number);
        if (miniNext.size() >= bytes.size() / kMiniSector)
            break;
        for (std::size_t i = 0; i + 4 <= sector.size(); i += 4)
            miniNext.push_back(U32(sector, i));
    }
}

// Entries refer to two neighbours and to their first child by number.
void CompoundFile::Parts::ReadTree(std::string_view directory) {
    enum : std::uint8_t { kUnused = 0, kStorage = 1, kStream = 2, kRoot = 5 };
    const std::size_t count = directory.size() / kEntrySize;
    nodes.resize(count);
    std::vector<std::uint8_t> types(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::string_view entry = directory.substr(i * kEntrySize, kEntrySize);
        types[i] = U8(entry, 66);
        if (types[i] != kStorage && types[i] != kStream && types[i] != kRoot)
            continue;
        Node& node = nodes[i];
        node.name = NameOf(entry);
        node.folded = FoldName(node.name);
        node.storage = types[i] != kStream;
        node.start = U32(entry, 116);
        // Files of small sectors leave the upper half undefined.
        node.size = sectorSize == 512 ? U32(entry, 120) : U64(entry, 120);
    }
    nodes[0].storage = true;

    std::vector<bool> placed(count);
    placed[0] = true;
    bool broken = false;
    struct Step {
        std::uint32_t entry;
        std::size_t parent;
    };
    std::vector<Step> steps{{U32(directory, 76), 0}};
    while (!steps.empty()) {
        const Step step = steps.back();
        steps.pop_back();
        if (step.entry == kNoEntry)
            continue;
        if (step.entry >= count || placed[step.entry] || types[step.entry] == kUnused) {
            broken = true;
            continue;
        }
        placed[step.entry] = true;
        nodes[step.parent].children.push_back(step.entry);
        const std::string_view entry = directory.substr(step.entry * kEntrySize, kEntrySize);
        steps.push_back({U32(entry, 68), step.parent});
        steps.push_back({U32(entry, 72), step.parent});
        if (nodes[step.entry].storage)
            steps.push_back({U32(entry, 76), step.entry});
    }
    // What a broken link has cut off is looked for in the root.
    for (std::size_t i = 1; i < count && broken; ++i)
        if (!placed[i] && !nodes[i].name.empty())
            nodes[0].children.push_back(i);
    SortChildren();
}

void CompoundFile::Parts::SortChildren() {
    for (Node& node : nodes)
        std::stable_sort(
            node.children.begin(), node.children.end(),
            [this](std::size_t a, std::size_t b) { return nodes[a].folded < nodes[b].folded; });
}

std::size_t CompoundFile::Parts::Find(std::string_view path) const {
    std::size_t at = 0;
    while (!path.empty()) {
        const std::size_t slash = std::min(path.find('/'), path.size());
        const std::string part = FoldName(path.substr(0, slash));
        path.remove_prefix(std::min(slash + 1, path.size()));
        const std::vector<std::size_t>& children = nodes[at].children;
        const auto found = std::lower_bound(children.begin(), children.end(), part,
                                            [this](std::size_t child, const std::string& name) {
                                                return nodes[child].folded < name;
                                            });
        if (found == children.end() || nodes[*found].folded != part)
            return kNone;
        at = *found;
    }
    return at;
}

std::string CompoundFile::Parts::Read(const Node& node, std::uint64_t size) const {
    // No stream is longer than its file.
    size = std::min<std::uint64_t>({size, node.size, bytes.size(), left});
    std::string content;
    content.reserve(static_cast<std::size_t>(size));
    // false: what follows is missing, or it would stand in the wrong place.
    const auto take = [&](std::string_view piece, std::size_t whole) {
        content += piece.substr(0, static_cast<std::size_t>(size - content.size()));
        return piece.size() == whole && content.size() < size;
    };
    if (node.size >= miniLimit) {
        for (const std::uint32_t number :
             Chain(node.start, static_cast<std::size_t>(size / sectorSize + 1)))
            if (!take(Sector(number), sectorSize))
                break;
    } else {
        for (std::size_t at = node.start; at < miniNext.size(); at = miniNext[at]) {
            const std::size_t place = at * kMiniSector, big = place / sectorSize;
            if (big >= miniSectors.size() ||
                !take(Slice(Sector(miniSectors[big]), place % sectorSize, kMiniSector),
                      kMiniSector))
                break;
        }
    }
    left -= content.size();
    return content;
}

bool CompoundFile::Recognises(std::string_view bytes) {
    return bytes.starts_with(kMark);
}

CompoundFile::CompoundFile(std::string_view bytes) : m_parts(std::make_unique<Parts>()) {
    m_parts->bytes = bytes;
    m_parts->ReadHeader();
    m_parts->ReadSectorTable();
    m_parts->ReadDirectory();
}

CompoundFile::~CompoundFile() = default;

std::vector<CompoundFile::Entry> CompoundFile::List(std::string_view storage) const {
    std::vector<Entry> entries;
    const std::size_t at = m_parts->Find(storage);
    if (at == kNone)
        return entries;
    for (const std::size_t child : m_parts->nodes[at].children) {
        const Parts::Node& node = m_parts->nodes[child];
        entries.push_back({node.name, node.storage, node.size});
    }
    return entries;
}

bool CompoundFile::IsProtected() const {
    return Has("EncryptedPackage") || Has("\x09"
                                          "DRMContent");
}

bool CompoundFile::Has(std::string_view path) const {
    return m_parts->Find(path) != kNone;
}

std::optional<std::string> CompoundFile::Stream(std::string_view path, std::size_t cap) const {
    const std::size_t at = m_parts->Find(path);
    if (at == kNone || m_parts->nodes[at].storage)
        return std::nullopt;
    return m_parts->Read(m_parts->nodes[at], cap);
}

} // namespace engine
