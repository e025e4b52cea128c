// The files within a compound file: the container of DOC, XLS, PPT and MSG.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

class CompoundFile {
  public:
    struct Entry {
        std::string name; // UTF-8, as it stands; may begin with a control character
        bool storage = false;
        std::uint64_t size = 0; // bytes of a stream
    };

    // Whether bytes begin with the mark of such files.
    [[nodiscard]] static bool Recognises(std::string_view bytes);

    // bytes stay valid as long as the object. Throws ReadError Damaged.
    explicit CompoundFile(std::string_view bytes);
    ~CompoundFile();
    CompoundFile(const CompoundFile&) = delete;
    CompoundFile& operator=(const CompoundFile&) = delete;

    // What a storage holds; "" is the root, parts of a path are joined by "/". Empty where the
    // storage is missing or damaged.
    [[nodiscard]] std::vector<Entry> List(std::string_view storage = {}) const;
    [[nodiscard]] bool Has(std::string_view path) const;
    // Whether it is the cover around a document that needs a password or a licence.
    [[nodiscard]] bool IsProtected() const;
    // The content of a stream, cut after cap bytes; nothing where it is missing. A damaged stream
    // gives what can be read of it.
    [[nodiscard]] std::optional<std::string> Stream(std::string_view path,
                                                    std::size_t cap = kStreamCap) const;

    static constexpr std::size_t kStreamCap = std::size_t{512} << 20;

  private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace engine
