// The three methods: scrambling with a fixed pattern, RC4 with MD5, RC4 with SHA-1.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/XlsCipher.h"

#include "engine/readers/BiffRecords.h"
#include "engine/readers/LittleEndian.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <numeric>
#include <optional>
#include <utility>

namespace engine {
namespace {

constexpr std::size_t kBlock = 1024; // bytes of the stream with one key

std::string Digest(const EVP_MD* method, const std::string& bytes) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned size = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &size, method, nullptr) != 1)
        return {}; // no password fits then
    return {reinterpret_cast<const char*>(digest.data()), size};
}

class Rc4 {
  public:
    explicit Rc4(std::string_view key) {
        std::iota(m_state.begin(), m_state.end(), std::uint8_t{0});
        for (std::size_t i = 0, j = 0; i < m_state.size() && !key.empty(); ++i) {
            j = (j + m_state[i] + U8(key, i % key.size())) % m_state.size();
            std::swap(m_state[i], m_state[j]);
        }
    }
    std::uint8_t Next() {
        m_j = static_cast<std::uint8_t>(m_j + m_state[++m_i]);
        std::swap(m_state[m_i], m_state[m_j]);
        return m_state[static_cast<std::uint8_t>(m_state[m_i] + m_state[m_j])];
    }
    std::string Apply(std::string_view bytes) {
        std::string changed(bytes);
        for (char& c : changed)
            c = static_cast<char>(static_cast<std::uint8_t>(c) ^ Next());
        return changed;
    }

  private:
    std::array<std::uint8_t, 256> m_state{};
    std::uint8_t m_i = 0, m_j = 0;
};

std::string Wide(std::string_view ascii) {
    std::string utf16;
    for (const char c : ascii)
        utf16.append({c, '\0'});
    return utf16;
}

std::string Number(std::uint32_t value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(value >> shift & 0xFF);
    return bytes;
}

using KeyOfBlock = std::function<std::string(std::uint32_t)>;

bool IsRightKey(const KeyOfBlock& keyOf, const EVP_MD* method, std::string_view verifier,
                std::string_view verifierHash) {
    Rc4 cipher(keyOf(0));
    const std::string plain = cipher.Apply(verifier);
    const std::string hash = cipher.Apply(verifierHash);
    const std::string expected = Digest(method, plain);
    return !expected.empty() && hash.starts_with(expected);
}

// RC4 with 40 bits and MD5.
std::optional<KeyOfBlock> OldKey(std::string_view data, std::string_view password) {
    const std::string salt(Slice(data, 6, 16));
    const std::string half = Digest(EVP_md5(), Wide(password)).substr(0, 5) + salt;
    std::string all;
    for (int i = 0; i < 16; ++i)
        all += half;
    const std::string seed = Digest(EVP_md5(), all).substr(0, 5);
    KeyOfBlock key = [seed](std::uint32_t block) {
        return Digest(EVP_md5(), seed + Number(block));
    };
    return IsRightKey(key, EVP_md5(), Slice(data, 22, 16), Slice(data, 38, 16))
               ? std::optional(std::move(key))
               : std::nullopt;
}

// RC4 with SHA-1 and 40 to 128 bits.
std::optional<KeyOfBlock> NewKey(std::string_view data, std::string_view password) {
    constexpr std::size_t kHeaderAt = 14;
    const std::uint32_t bits = U32(data, kHeaderAt + 16);
    const std::size_t keyBytes = bits == 0 ? 5 : bits / 8;
    const std::size_t verifierAt = kHeaderAt + U32(data, 10);
    if (keyBytes > 16 || verifierAt > data.size())
        return std::nullopt;
    const std::string salt(Slice(data, verifierAt + 4, 16));
    const std::string seed = Digest(EVP_sha1(), salt + Wide(password));
    KeyOfBlock key = [seed, keyBytes](std::uint32_t block) {
        std::string bytes = Digest(EVP_sha1(), seed + Number(block)).substr(0, keyBytes);
        if (keyBytes == 5)
            bytes.resize(16);
        return bytes;
    };
    return IsRightKey(key, EVP_sha1(), Slice(data, verifierAt + 20, 16),
                      Slice(data, verifierAt + 40, 20))
               ? std::optional(std::move(key))
               : std::nullopt;
}

// The pattern of 16 bytes that a key and a password make.
std::array<std::uint8_t, 16> Pattern(std::uint16_t key, std::string_view password) {
    constexpr std::array<std::uint8_t, 15> kFill{0xBB, 0xFF, 0xFF, 0xBA, 0xFF, 0xFF, 0xB9, 0x80,
                                                 0x00, 0xBE, 0x0F, 0x00, 0xBF, 0x0F, 0x00};
    std::array<std::uint8_t, 16> pattern{};
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const unsigned c = i < password.size() ? U8(password, i) : kFill[i - password.size()];
        const unsigned mixed = c ^ (i % 2 == 0 ? key & 0xFFU : key >> 8U);
        pattern[i] = static_cast<std::uint8_t>(mixed >> 1 | mixed << 7);
    }
    return pattern;
}

std::uint16_t PasswordSum(std::string_view password) {
    unsigned sum = 0;
    for (std::size_t i = password.size(); i-- > 0;)
        sum = ((sum >> 14 & 1) | (sum << 1 & 0x7FFF)) ^ U8(password, i);
    sum = (sum >> 14 & 1) | (sum << 1 & 0x7FFF);
    return static_cast<std::uint16_t>(sum ^ password.size() ^ 0xCE4B);
}

// How many bytes at the beginning of a record are never encrypted.
std::size_t ClearBytes(Biff type, std::size_t length) {
    constexpr std::array<std::uint16_t, 8> kClear{0x0009, 0x0209, 0x0409, 0x0809,
                                                  0x002F, 0x00E1, 0x0194, 0x0195};
    if (std::find(kClear.begin(), kClear.end(), static_cast<std::uint16_t>(type)) != kClear.end())
        return length;
    return type == Biff::BoundSheet ? 4 : 0;
}

template <typename Undo> void ForEachRecord(std::string& stream, Undo undo) {
    for (std::size_t at = 0; at + 4 <= stream.size();) {
        const auto type = static_cast<Biff>(U16(stream, at));
        const std::size_t length =
            std::min<std::size_t>(U16(stream, at + 2), stream.size() - at - 4);
        undo(at + 4, length, std::min(ClearBytes(type, length), length));
        at += 4 + length;
    }
}

void Unscramble(std::string& stream, const std::array<std::uint8_t, 16>& pattern) {
    ForEachRecord(stream, [&](std::size_t at, std::size_t length, std::size_t clear) {
        for (std::size_t i = clear; i < length; ++i) {
            const unsigned c = U8(stream, at + i) ^ pattern[(at + length + i) % pattern.size()];
            stream[at + i] = static_cast<char>((c << 3 | c >> 5) & 0xFF);
        }
    });
}

void Decrypt(std::string& stream, const KeyOfBlock& keyOf) {
    Rc4 cipher(keyOf(0));
    std::size_t block = 0, place = 0; // that the cipher stands at
    ForEachRecord(stream, [&](std::size_t at, std::size_t length, std::size_t clear) {
        for (std::size_t i = at + clear; i < at + length; ++i) {
            if (block != i / kBlock) {
                block = i / kBlock;
                cipher = Rc4(keyOf(static_cast<std::uint32_t>(block)));
                place = block * kBlock;
            }
            for (; place < i; ++place) // headers and what is clear use the cipher up too
                static_cast<void>(cipher.Next());
            stream[i] = static_cast<char>(U8(stream, i) ^ cipher.Next());
            ++place;
        }
    });
}

} // namespace

bool DecryptWorkbook(std::string& stream, std::string_view filePass, int version,
                     std::string_view password) {
    const std::size_t scrambling = version == 8 ? 2 : 0; // where key and sum stand
    if (version != 8 || U16(filePass, 0) == 0) {
        const std::string_view shortened = password.substr(0, 15);
        if (U16(filePass, scrambling + 2) != PasswordSum(shortened))
            return false;
        Unscramble(stream, Pattern(U16(filePass, scrambling), shortened));
        return true;
    }
    if (U16(filePass, 0) != 1)
        return false;
    const std::optional<KeyOfBlock> key = U16(filePass, 2) == 1   ? OldKey(filePass, password)
                                          : U16(filePass, 4) == 2 ? NewKey(filePass, password)
                                                                  : std::nullopt;
    if (key.has_value())
        Decrypt(stream, *key);
    return key.has_value();
}

} // namespace engine
