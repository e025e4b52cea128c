// Plain binary packing for what travels between the program and its workers, same machine only.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

namespace engine {

class Packer {
  public:
    Packer& Number(std::uint64_t value) {
        m_bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
        return *this;
    }
    Packer& Text(std::string_view value) {
        Number(value.size());
        m_bytes.append(value);
        return *this;
    }
    [[nodiscard]] const std::string& Bytes() const { return m_bytes; }

  private:
    std::string m_bytes;
};

// Throws std::runtime_error when the bytes end too early: workers are not trusted.
class Unpacker {
  public:
    explicit Unpacker(std::string_view bytes) : m_bytes(bytes) {}
    std::uint64_t Number() {
        std::uint64_t value = 0;
        std::memcpy(&value, Take(sizeof value).data(), sizeof value);
        return value;
    }
    std::string_view Text() { return Take(Number()); }

  private:
    std::string_view Take(std::uint64_t size) {
        if (size > m_bytes.size())
            throw std::runtime_error("a worker's answer is cut short");
        const std::string_view part = m_bytes.substr(0, size);
        m_bytes.remove_prefix(size);
        return part;
    }
    std::string_view m_bytes;
};

} // namespace engine
