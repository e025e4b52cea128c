// The kernel's wall around files: Landlock.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "workers/Landlock.h"

#include "workers/Descriptor.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cstdint>

namespace workers {

namespace {

// Rights and fields that came after the headers of the reference system; a kernel is only asked
// for those that it knows.
constexpr std::uint64_t kTruncate = 1ULL << 14;    // version 3
constexpr std::uint64_t kDeviceIoctl = 1ULL << 15; // version 5

struct Ruleset {
    std::uint64_t files = 0;
    std::uint64_t network = 0; // version 4: bind and connect over TCP
    std::uint64_t scoped = 0;  // version 6: abstract sockets and signals
};

// What anyone may read and what libraries look for after their start.
constexpr const char* kReadable[] = {
    "/usr",       "/lib", "/lib32", "/lib64", "/etc/fonts", "/etc/ld.so.cache", "/etc/localtime",
#ifdef VELMORA_SANITIZED
    "/proc/self", // the sanitizer's reports name functions and memory areas
#endif
};

Ruleset EverythingKnown(int version) {
    Ruleset ruleset;
    ruleset.files = LANDLOCK_ACCESS_FS_MAKE_SYM * 2 - 1; // version 1: all up to this one
    if (version >= 2)
        ruleset.files |= LANDLOCK_ACCESS_FS_REFER;
    if (version >= 3)
        ruleset.files |= kTruncate;
    if (version >= 4)
        ruleset.network = 3;
    if (version >= 5)
        ruleset.files |= kDeviceIoctl;
    if (version >= 6)
        ruleset.scoped = 3;
    return ruleset;
}

std::size_t SizeKnown(int version) {
    return version >= 6 ? sizeof(Ruleset) : version >= 4 ? 16 : 8;
}

// A path that does not exist needs no rule.
bool AllowReading(int ruleset, const char* path) {
    const Descriptor place(::open(path, O_PATH | O_CLOEXEC));
    struct stat about {};
    if (!place || ::fstat(place.Get(), &about) != 0)
        return true;
    landlock_path_beneath_attr rule{};
    rule.parent_fd = place.Get();
    rule.allowed_access = LANDLOCK_ACCESS_FS_READ_FILE;
    if (S_ISDIR(about.st_mode))
        rule.allowed_access |= LANDLOCK_ACCESS_FS_READ_DIR;
    return ::syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0) == 0;
}

} // namespace

int LandlockVersion() {
    const long version =
        ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return version > 0 ? static_cast<int>(version) : 0;
}

bool EnterLandlock() {
    const int version = LandlockVersion();
    if (version == 0)
        return false;
    const Ruleset everything = EverythingKnown(version);
    const Descriptor ruleset(static_cast<int>(
        ::syscall(SYS_landlock_create_ruleset, &everything, SizeKnown(version), 0)));
    if (!ruleset)
        return false;
    for (const char* path : kReadable)
        if (!AllowReading(ruleset.Get(), path))
            return false;
    return ::syscall(SYS_landlock_restrict_self, ruleset.Get(), 0) == 0;
}

} // namespace workers
