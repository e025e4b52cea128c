// Members of a zip archive in memory, read by name. For documents that are zip packages.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace engine {

struct ZipMember {
    std::string name;         // as it stands in the archive, with "/"
    std::uint64_t offset = 0; // of its local header
    std::uint64_t packed = 0; // bytes it takes in the archive, as declared
    bool encrypted = false;
};

class ZipFile {
  public:
    // Reads the table of contents. bytes stay valid as long as the object lives. Throws ReadError
    // when no member can be found: Encrypted for an encrypted office document (which is no zip
    // archive at all), otherwise Damaged.
    explicit ZipFile(std::string_view bytes);

    [[nodiscard]] const std::vector<ZipMember>& Members() const { return m_members; }
    // Whether the table of contents is missing, as in a file that was cut off. The members were
    // then found one by one, and some may be missing.
    [[nodiscard]] bool Truncated() const { return m_truncated; }

    // Names are compared without regard to ASCII case; back-slashes count as slashes.
    [[nodiscard]] const ZipMember* Find(std::string_view name) const;

    using Take = std::function<void(std::string_view piece)>;
    // Unpacks a member piece by piece. Returns an empty string or why it is not whole, as in
    // "is damaged", "is larger than what is unpacked", "is encrypted"; what came before was taken.
    // The caps hold for one member and for all that this object unpacks.
    [[nodiscard]] std::string Unpack(const ZipMember& member, const Take& take);

  private:
    bool ReadDirectory();
    void ScanLocalHeaders();
    void Add(ZipMember member);

    std::string_view m_bytes;
    std::vector<ZipMember> m_members;
    std::unordered_map<std::string, std::size_t> m_byName; // folded name to place in m_members
    std::uint64_t m_unpacked = 0;                          // bytes so far
    bool m_truncated = false;
};

// Whether bytes are an OLE2 file that holds an encrypted office document.
[[nodiscard]] bool IsEncryptedOffice(std::string_view bytes);

} // namespace engine
