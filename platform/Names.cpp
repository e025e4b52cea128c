// Machine paths as text and as the bytes that the system takes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Names.h"

namespace platform {

namespace {

constexpr char32_t kMarkBase = 0xF700;

bool IsMark(QChar c) {
    return c.unicode() >= kMarkBase + 0x80 && c.unicode() <= kMarkBase + 0xFF;
}

/// Characters that text uses for a purpose of its own: in a real name they travel byte for byte.
bool IsTaken(char32_t code) {
    return code == 0xF05C || (code >= kMarkBase + 0x80 && code <= kMarkBase + 0xFF);
}

/// Reads one character of strict UTF-8 at `p`. Answers its length in bytes, 0 when it is not valid.
int ReadUtf8(const uchar* p, const uchar* end, char32_t& code) {
    const uchar first = *p;
    if (first < 0x80) {
        code = first;
        return 1;
    }
    const int length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || end - p < length) {
        return 0;
    }
    code = first & (0x7F >> length);
    for (int i = 1; i < length; ++i) {
        if ((p[i] & 0xC0) != 0x80) {
            return 0;
        }
        code = (code << 6) | (p[i] & 0x3F);
    }
    const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    return overlong || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF ? 0 : length;
}

} // namespace

QByteArray EncodeName(const QString& machinePath) {
    // A broken surrogate pair would turn into some other
    // character, and so perhaps into another file's name.
    if (machinePath.contains(QChar(u'\0')) || !machinePath.isValidUtf16()) {
        return {};
    }
    QByteArray bytes;
    qsizetype done = 0;
    for (qsizetype i = 0; i < machinePath.size(); ++i) {
        if (IsMark(machinePath[i])) {
            bytes += QStringView(machinePath).mid(done, i - done).toUtf8();
            bytes += static_cast<char>(machinePath[i].unicode() - kMarkBase);
            done = i + 1;
        }
    }
    return done == 0 ? machinePath.toUtf8() : bytes + QStringView(machinePath).mid(done).toUtf8();
}

QString DecodeName(const QByteArray& bytes) {
    QString text;
    text.reserve(bytes.size());
    const auto* p = reinterpret_cast<const uchar*>(bytes.constData());
    const uchar* end = p + bytes.size();
    while (p < end) {
        char32_t code = 0;
        const int length = ReadUtf8(p, end, code);
        if (length == 0 || IsTaken(code)) {
            // A broken sequence gives up one byte only: the next one may begin a good character.
            const int marked = length == 0 ? 1 : length;
            text += MarkBytes(QByteArray(reinterpret_cast<const char*>(p), marked));
            p += marked;
        } else {
            text += QChar::fromUcs4(code);
            p += length;
        }
    }
    return text;
}

QString MarkBytes(const QByteArray& bytes) {
    QString text;
    for (const char byte : bytes) {
        text += QChar(static_cast<char16_t>(kMarkBase + static_cast<uchar>(byte)));
    }
    return text;
}

} // namespace platform
