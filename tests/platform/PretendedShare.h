// Lets this process take every folder for one on a network share.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace platform_test {

// For as long as it lives; one at a time.
class PretendedShare {
  public:
    enum class Locks {
        Work,
        Granted, // to everybody who asks, so that they mean nothing
        Refused, // ENOLCK
    };
    explicit PretendedShare(Locks locks = Locks::Work);
    ~PretendedShare();
    PretendedShare(const PretendedShare&) = delete;
    PretendedShare& operator=(const PretendedShare&) = delete;
};

} // namespace platform_test
