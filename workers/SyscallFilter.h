// The kernel's wall around system calls: seccomp.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace workers {

// Whether files may be opened by name, for reading; something else must then say which.
enum class Opening { Refused, Reading };

// From now on this process can compute, ask for memory, read and close what it has open, and
// write to its socket and stderr. Everything else is refused with an error; what only an attacker
// would try ends the process. PR_SET_NO_NEW_PRIVS must be set. False: the kernel does not do it
// and nothing has changed.
[[nodiscard]] bool EnterSyscallFilter(Opening opening);

} // namespace workers
