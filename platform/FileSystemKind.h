// What the kinds of file systems are good for.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace platform {

/// Whether a file system of this statfs type keeps its files on another
/// machine. File systems in user space share one type whatever they do:
/// they count as such here, and IsNetworkFileSystem looks closer.
[[nodiscard]] bool IsNetworkMagic(long type);

/// The type that all file systems in user space have.
constexpr long kFuseMagic = 0x65735546;

} // namespace platform
