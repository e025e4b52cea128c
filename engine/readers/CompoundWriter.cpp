// Compound files with sectors of 4096 bytes: their table needs no lists beyond the header.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/CompoundWriter.h"

#include "engine/readers/Limits.h"
#include "engine/text/Utf8.h"

#include <algorithm>
#include <functional>

namespace engine {
namespace {

constexpr std::size_t kSector = 4096, kMiniSector = 64, kMiniLimit = 4096;
constexpr std::size_t kEntrySize = 128;
constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE, kTableSector = 0xFFFFFFFD, kNone = 0xFFFFFFFF;
constexpr int kDeepest = 32; // storages within storages

template <typename Number> void Put(std::string& to, Number value) {
    for (std::size_t i = 0; i < sizeof(Number); ++i)
        to += static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * i) & 0xFF);
}

std::string Wide(std::string_view name) {
    std::string utf16;
    for (std::size_t at = 0; at < name.size();) {
        const char32_t c = NextCodePoint(name, at);
        if (c >= 0x10000) {
            Put(utf16, static_cast<std::uint16_t>(0xD800 + ((c - 0x10000) >> 10)));
            Put(utf16, static_cast<std::uint16_t>(0xDC00 + (c & 0x3FF)));
        } else {
            Put(utf16, static_cast<std::uint16_t>(c));
        }
    }
    return utf16;
}

std::string UpperCase(std::string_view name) {
    std::string upper(name);
    for (char& c : upper)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return upper;
}

std::string AsBytes(const std::vector<std::uint32_t>& numbers) {
    std::string bytes;
    for (const std::uint32_t number : numbers)
        Put(bytes, number);
    return bytes;
}

} // namespace

CompoundWriter::CompoundWriter() : m_nodes(1) {
    m_nodes[0].name = "Root Entry";
    m_nodes[0].storage = true;
}

std::size_t CompoundWriter::ChildOf(std::size_t parent, std::string_view name, bool storage) {
    const auto [place, isNew] =
        m_nodes[parent].children.try_emplace(UpperCase(name), m_nodes.size());
    const std::size_t child = place->second;
    if (isNew) {
        m_nodes.emplace_back();
        m_nodes.back().name = name;
        m_nodes.back().storage = storage;
    }
    return child;
}

void CompoundWriter::Add(std::string_view path, std::string content) {
    m_bytes += content.size();
    if (m_bytes > kMaxMemberBytes || m_nodes.size() >= kMaxCompoundEntries) {
        m_cut = true;
        return;
    }
    std::size_t parent = 0;
    for (std::size_t slash = path.find('/'); slash != std::string_view::npos;
         slash = path.find('/')) {
        parent = ChildOf(parent, path.substr(0, slash), true);
        path.remove_prefix(slash + 1);
    }
    const std::size_t count = m_nodes.size();
    const std::size_t child = ChildOf(parent, path, false);
    if (child == count)
        m_nodes[child].content = std::move(content);
}

void CompoundWriter::Copy(const CompoundFile& file, std::string_view storage, std::string_view to) {
    CopyLevel(file, std::string(storage), std::string(to), 0);
}

void CompoundWriter::CopyLevel(const CompoundFile& file, const std::string& storage,
                               const std::string& to, int depth) {
    for (const CompoundFile::Entry& entry : file.List(storage)) {
        const std::string from = storage.empty() ? entry.name : storage + "/" + entry.name;
        const std::string target = to.empty() ? entry.name : to + "/" + entry.name;
        if (m_cut || depth >= kDeepest) {
            m_cut = true;
            return;
        }
        if (entry.storage)
            CopyLevel(file, from, target, depth + 1);
        else if (std::optional<std::string> content = file.Stream(from))
            Add(target, std::move(*content));
    }
}

std::uint32_t CompoundWriter::Place(std::string_view bytes) {
    const auto first = static_cast<std::uint32_t>(m_next.size());
    m_sectors += bytes;
    m_sectors.resize((m_sectors.size() + kSector - 1) / kSector * kSector);
    while (m_next.size() < m_sectors.size() / kSector)
        m_next.push_back(static_cast<std::uint32_t>(m_next.size() + 1));
    if (m_next.size() == first)
        return kEndOfChain;
    m_next.back() = kEndOfChain;
    return first;
}

// Small streams share the root's stream, in sectors of its own.
void CompoundWriter::PlaceStreams() {
    std::string mini;
    for (Node& node : m_nodes) {
        node.size = node.content.size();
        node.start = kEndOfChain;
        if (node.storage || node.content.empty())
            continue;
        if (node.size >= kMiniLimit) {
            node.start = Place(node.content);
        } else {
            node.start = static_cast<std::uint32_t>(m_miniNext.size());
            mini += node.content;
            mini.resize((mini.size() + kMiniSector - 1) / kMiniSector * kMiniSector);
            while (m_miniNext.size() < mini.size() / kMiniSector)
                m_miniNext.push_back(static_cast<std::uint32_t>(m_miniNext.size() + 1));
            m_miniNext.back() = kEndOfChain;
        }
        node.content = {};
    }
    m_nodes[0].size = mini.size();
    m_nodes[0].start = Place(mini);
    std::string table = AsBytes(m_miniNext);
    table.resize((table.size() + kSector - 1) / kSector * kSector, '\xFF');
    m_miniTableSectors = static_cast<std::uint32_t>(table.size() / kSector);
    m_miniTable = Place(table);
}

// The children of a storage form a tree that is searched by length of the name, then by its
// upper case.
void CompoundWriter::LinkChildren() {
    using Range = std::vector<std::size_t>::const_iterator;
    const std::function<std::uint32_t(Range, Range)> link = [&](Range begin, Range end) {
        if (begin == end)
            return kNone;
        const Range middle = begin + (end - begin) / 2;
        m_nodes[*middle].left = link(begin, middle);
        m_nodes[*middle].right = link(middle + 1, end);
        return static_cast<std::uint32_t>(*middle);
    };
    for (Node& node : m_nodes) {
        std::vector<std::pair<std::string, std::size_t>> named;
        for (const auto& [name, child] : node.children)
            named.emplace_back(Wide(name), child);
        std::sort(named.begin(), named.end(), [](const auto& a, const auto& b) {
            return a.first.size() != b.first.size() ? a.first.size() < b.first.size()
                                                    : a.first < b.first;
        });
        std::vector<std::size_t> children;
        for (const auto& [name, child] : named)
            children.push_back(child);
        node.child = link(children.cbegin(), children.cend());
    }
}

std::string CompoundWriter::Directory() const {
    enum : std::uint8_t { kStorage = 1, kStream = 2, kRoot = 5, kBlack = 1 };
    std::string entries;
    for (const Node& node : m_nodes) {
        constexpr std::size_t kNameBytes = 64;
        const std::string name = Wide(node.name).substr(0, kNameBytes - 2);
        std::string entry = name;
        entry.resize(kNameBytes);
        Put(entry, static_cast<std::uint16_t>(name.size() + 2));
        Put(entry, &node == m_nodes.data() ? kRoot : node.storage ? kStorage : kStream);
        Put(entry, kBlack);
        Put(entry, node.left);
        Put(entry, node.right);
        Put(entry, node.child);
        entry.resize(entry.size() + 36); // class, state, times
        Put(entry, node.start);
        Put(entry, node.size);
        entries += entry;
    }
    std::string unused(kEntrySize, '\0');
    std::fill_n(unused.begin() + 68, 12, '\xFF');
    while (entries.size() % kSector != 0)
        entries += unused;
    return entries;
}

std::string CompoundWriter::Header(std::uint32_t directory, std::uint32_t directorySectors,
                                   std::uint32_t tableSectors) const {
    std::string header("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
    header.resize(24);
    for (const int number : {0x3E, 4, 0xFFFE, 12, 6, 0, 0, 0}) // versions, byte order, widths
        Put(header, static_cast<std::uint16_t>(number));
    Put(header, directorySectors);
    Put(header, tableSectors);
    Put(header, directory);
    Put(header, std::uint32_t{0});
    Put(header, static_cast<std::uint32_t>(kMiniLimit));
    Put(header, m_miniTable);
    Put(header, m_miniTableSectors);
    Put(header, kEndOfChain);
    Put(header, std::uint32_t{0});
    constexpr std::uint32_t kListed = 109; // a file of the largest member's size needs 65
    for (std::uint32_t i = 0; i < kListed; ++i)
        Put(header, i < tableSectors ? static_cast<std::uint32_t>(m_next.size()) - tableSectors + i
                                     : kNone);
    header.resize(kSector);
    return header;
}

std::string CompoundWriter::Finish() {
    PlaceStreams();
    LinkChildren();
    const std::string directory = Directory();
    const std::uint32_t directoryAt = Place(directory);
    constexpr std::size_t kPerSector = kSector / 4;
    std::uint32_t tableSectors = 1;
    while (tableSectors * kPerSector < m_next.size() + tableSectors)
        ++tableSectors;
    m_next.insert(m_next.end(), tableSectors, kTableSector);
    std::string table = AsBytes(m_next);
    table.resize(tableSectors * kSector, '\xFF');
    return Header(directoryAt, static_cast<std::uint32_t>(directory.size() / kSector),
                  tableSectors) +
           m_sectors + table;
}

} // namespace engine
