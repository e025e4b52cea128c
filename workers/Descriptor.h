// Owner of a file descriptor.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <unistd.h>

#include <utility>

namespace workers {

class Descriptor {
  public:
    Descriptor() = default;
    // Takes over fd; a negative one means none.
    explicit Descriptor(int fd) : m_fd(fd) {}
    Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        other.Close();
        return *this;
    }
    ~Descriptor() { Close(); }

    explicit operator bool() const { return m_fd >= 0; }
    [[nodiscard]] int Get() const { return m_fd; }
    void Close() {
        if (m_fd >= 0)
            ::close(std::exchange(m_fd, -1));
    }

  private:
    int m_fd = -1;
};

} // namespace workers
