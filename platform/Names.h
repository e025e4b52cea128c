// Machine paths as text and as the bytes that the system takes.
// SPDX-License-Identifier: AGPL-3.0-or-later
//
// A name on a Unix disk is any run of bytes; most are UTF-8, old ones are not. As text, a byte B
// that is no part of valid UTF-8 becomes the one character U+F700 + B (so U+F780 to U+F7FF), and
// goes back to that byte. A name that really holds one of those characters, or U+F05C (which stands
// for a back-slash in logical paths), is written byte for byte in the same way. So every name
// survives the way to text and back, no two names share a text, and none of these characters
// changes with its case.
#pragma once

#include <QByteArray>
#include <QString>

namespace platform {

/// The bytes of a machine path, for system calls. Text that DecodeName
/// made gives the same bytes again. A path that holds a zero character
/// names no file: the answer is empty, and system calls refuse it.
[[nodiscard]] QByteArray EncodeName(const QString& machinePath);

/// The text of a name or path that the system gave. Never fails, whatever the bytes are.
[[nodiscard]] QString DecodeName(const QByteArray& bytes);

/// The given bytes one by one as characters U+F780 to U+F7FF; only for bytes from 0x80 on.
[[nodiscard]] QString MarkBytes(const QByteArray& bytes);

} // namespace platform
