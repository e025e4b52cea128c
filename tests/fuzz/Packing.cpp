// Zip archives and compound files from parts.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/fuzz/Packing.h"

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <map>

namespace fuzz {
namespace {

constexpr std::string_view kMark = "\n%%part ";

// Little-endian numbers behind each other.
class Bytes {
  public:
    Bytes& U16(std::size_t value) { return Put(value, 2); }
    Bytes& U32(std::size_t value) { return Put(value, 4); }
    Bytes& Text(std::string_view text) {
        m_bytes.append(text);
        return *this;
    }
    Bytes& Fill(std::size_t count, char c = '\0') {
        m_bytes.append(count, c);
        return *this;
    }
    // To a multiple of step.
    Bytes& Align(std::size_t step, char c = '\0') {
        return Fill((step - m_bytes.size() % step) % step, c);
    }
    [[nodiscard]] std::size_t Size() const { return m_bytes.size(); }
    [[nodiscard]] const std::string& Str() const { return m_bytes; }

  private:
    Bytes& Put(std::size_t value, int count) {
        for (int i = 0; i < count; ++i, value >>= 8)
            m_bytes += static_cast<char>(value & 0xFF);
        return *this;
    }
    std::string m_bytes;
};

} // namespace

std::vector<Part> CutParts(std::string_view input, std::string_view mainName) {
    std::vector<Part> parts;
    std::string name(mainName);
    for (bool more = true; more;) {
        const std::size_t mark = input.find(kMark);
        more = mark != std::string_view::npos;
        const std::string_view bytes = input.substr(0, mark);
        const auto same = std::find_if(parts.begin(), parts.end(),
                                       [&](const Part& part) { return part.name == name; });
        if (same != parts.end())
            same->bytes = bytes;
        else
            parts.push_back({name, bytes});
        if (!more)
            break;
        input.remove_prefix(mark + kMark.size());
        const std::size_t line = std::min(input.find('\n'), input.size());
        name = input.substr(0, line);
        input.remove_prefix(std::min(line + 1, input.size()));
    }
    return parts;
}

void AddMissing(std::vector<Part>& parts, const std::vector<Part>& defaults) {
    const std::size_t own = parts.size();
    for (const Part& part : defaults)
        if (std::none_of(parts.begin(), parts.begin() + static_cast<std::ptrdiff_t>(own),
                         [&](const Part& each) { return each.name == part.name; }))
            parts.push_back(part);
}

std::string PackZip(const std::vector<Part>& parts) {
    Bytes zip, directory;
    for (const Part& part : parts) {
        const std::size_t sum = crc32(0, reinterpret_cast<const unsigned char*>(part.bytes.data()),
                                      static_cast<unsigned>(part.bytes.size()));
        const std::size_t offset = zip.Size();
        const auto common = [&](Bytes& to) {
            to.U16(20).U16(0).U16(0).U32(0).U32(sum).U32(part.bytes.size()).U32(part.bytes.size());
            to.U16(part.name.size()).U16(0);
        };
        zip.Text("PK\3\4");
        common(zip);
        zip.Text(part.name).Text(part.bytes);
        directory.Text("PK\1\2").U16(20);
        common(directory);
        directory.U16(0).U16(0).U16(0).U32(0).U32(offset).Text(part.name);
    }
    const std::size_t begin = zip.Size();
    zip.Text(directory.Str()).Text("PK\5\6").U32(0).U16(parts.size()).U16(parts.size());
    return zip.U32(directory.Size()).U32(begin).U16(0).Str();
}

namespace {

constexpr std::size_t kSector = 512;
constexpr std::size_t kMiniSector = 64;
constexpr std::size_t kMiniLimit = 4096; // streams below it are small ones
constexpr std::size_t kFree = 0xFFFFFFFF;
constexpr std::size_t kEndOfChain = 0xFFFFFFFE;
constexpr std::size_t kFatSector = 0xFFFFFFFD;
constexpr std::size_t kNone = 0xFFFFFFFF;

struct Storage {
    std::map<std::string, Storage> storages;
    std::map<std::string, std::string_view> streams;
};

// Lays the sectors; the directory's entries point into them.
class CompoundWriter {
  public:
    std::string Write(const Storage& root) {
        m_entries.push_back({"Root Entry", 5, kNone, kNone, kEndOfChain, 0});
        m_entries[0].child = AddChildren(root);
        m_entries[0].size = m_mini.Size();
        m_entries[0].start = AddChain(m_mini.Str());
        m_miniFat.Align(kSector, '\xFF');
        const std::size_t miniFat = AddChain(m_miniFat.Str());
        const std::size_t directory = AddChain(Directory());
        return Header(directory, miniFat) + m_sectors;
    }

  private:
    struct Entry {
        std::string name;
        std::size_t type, next, child, start, size;
    };

    // Children hang to the right of each other. Answers the first one's number.
    std::size_t AddChildren(const Storage& storage) {
        std::size_t first = kNone, last = kNone;
        const auto link = [&](std::size_t entry) {
            (last == kNone ? first : m_entries[last].next) = entry;
            last = entry;
        };
        for (const auto& [name, bytes] : storage.streams) {
            m_entries.push_back({name, 2, kNone, kNone, AddStream(bytes), bytes.size()});
            link(m_entries.size() - 1);
        }
        for (const auto& [name, inner] : storage.storages) {
            m_entries.push_back({name, 1, kNone, kNone, 0, 0});
            const std::size_t entry = m_entries.size() - 1;
            link(entry);
            const std::size_t child = AddChildren(inner);
            m_entries[entry].child = child;
        }
        return first;
    }

    std::size_t AddStream(std::string_view bytes) {
        if (bytes.size() >= kMiniLimit)
            return AddChain(bytes);
        if (bytes.empty())
            return kEndOfChain;
        const std::size_t start = m_mini.Size() / kMiniSector;
        m_mini.Text(bytes).Align(kMiniSector);
        while (m_miniFat.Size() / 4 + 1 < m_mini.Size() / kMiniSector)
            m_miniFat.U32(m_miniFat.Size() / 4 + 1);
        m_miniFat.U32(kEndOfChain);
        return start;
    }

    std::size_t AddChain(std::string_view bytes) {
        if (bytes.empty())
            return kEndOfChain;
        const std::size_t start = m_fat.size();
        m_sectors.append(bytes);
        m_sectors.append((kSector - m_sectors.size() % kSector) % kSector, '\0');
        while (m_fat.size() < m_sectors.size() / kSector)
            m_fat.push_back(m_fat.size() + 1);
        m_fat.back() = kEndOfChain;
        return start;
    }

    std::string Directory() const {
        Bytes bytes;
        for (const Entry& entry : m_entries) {
            const std::string_view name = std::string_view(entry.name).substr(0, 31);
            Bytes wide;
            for (const char c : name)
                wide.U16(static_cast<unsigned char>(c));
            bytes.Text(wide.Fill(64 - wide.Size()).Str()).U16(name.size() * 2 + 2);
            bytes.U16(entry.type | 0x100); // black
            bytes.U32(kNone).U32(entry.next).U32(entry.child).Fill(36);
            bytes.U32(entry.start).U32(entry.size).U32(0);
        }
        return bytes.Align(kSector).Str();
    }

    std::string Header(std::size_t directory, std::size_t miniFat) {
        // The FAT tells of its own sectors too.
        std::size_t count = 0;
        while (count * (kSector / 4) < m_fat.size() + count)
            ++count;
        const std::size_t firstFat = m_fat.size();
        m_fat.resize(firstFat + count, kFatSector);
        Bytes fat;
        for (const std::size_t next : m_fat)
            fat.U32(next);
        m_sectors += fat.Align(kSector, '\xFF').Str();

        Bytes head;
        head.Text("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1").Fill(16).U16(0x3E).U16(3).U16(0xFFFE);
        head.U16(9).U16(6).Fill(6).U32(0).U32(count).U32(directory).U32(0).U32(kMiniLimit);
        head.U32(miniFat).U32(m_miniFat.Size() / kSector).U32(kEndOfChain).U32(0);
        for (std::size_t i = 0; i < 109; ++i)
            head.U32(i < count ? firstFat + i : kFree);
        return head.Str();
    }

    std::string m_sectors;
    std::vector<std::size_t> m_fat;
    Bytes m_mini, m_miniFat;
    std::vector<Entry> m_entries;
};

} // namespace

std::string PackCompound(const std::vector<Part>& parts) {
    Storage root;
    for (const Part& part : parts) {
        Storage* storage = &root;
        std::string_view name = part.name;
        for (auto slash = name.find('/'); slash != std::string_view::npos; slash = name.find('/')) {
            storage = &storage->storages[std::string(name.substr(0, slash))];
            name.remove_prefix(slash + 1);
        }
        storage->streams[std::string(name)] = part.bytes;
    }
    return CompoundWriter().Write(root);
}

} // namespace fuzz
