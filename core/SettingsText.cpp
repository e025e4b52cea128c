// The bytes of a settings file: windows-1252, as its other readers expect, UTF-8 where that lacks
// a character.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Settings.h"

#include <QStringConverter>
#include <array>
#include <optional>

namespace velmora {

namespace {

// What the bytes 0x80 to 0x9F stand for. The five that have no character of their own stand for
// the control character of the same number, as they do where the file comes from.
constexpr std::array<char16_t, 32> kHighControls{
    0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

std::optional<QString> FromUtf8(const QByteArray& bytes) {
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = decoder(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

QString FromWindows1252(const QByteArray& bytes) {
    QString text = QString::fromLatin1(bytes);
    for (QChar& character : text) {
        const char16_t code = character.unicode();
        if (code >= 0x80 && code < 0xA0) {
            character = kHighControls[code - 0x80u];
        }
    }
    return text;
}

std::optional<QByteArray> ToWindows1252(const QString& text) {
    QByteArray bytes;
    bytes.reserve(text.size());
    for (const QChar character : text) {
        const char16_t code = character.unicode();
        if (code < 0x80 || (code >= 0xA0 && code <= 0xFF)) {
            bytes += static_cast<char>(code);
            continue;
        }
        const auto* found = std::find(kHighControls.begin(), kHighControls.end(), code);
        if (found == kHighControls.end()) {
            return std::nullopt;
        }
        bytes += static_cast<char>(0x80 + (found - kHighControls.begin()));
    }
    return bytes;
}

} // namespace

QString DecodeSettings(const QByteArray& bytes) {
    if (const auto text = FromUtf8(bytes)) {
        return *text;
    }
    return FromWindows1252(bytes);
}

QByteArray EncodeSettings(const QString& text) {
    const auto bytes = ToWindows1252(text);
    // Bytes that happen to read as UTF-8 would come back as another text.
    return bytes && DecodeSettings(*bytes) == text ? *bytes : text.toUtf8();
}

} // namespace velmora
