// The locale in which archive members' names are read.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <clocale>

namespace engine {

// C.UTF-8, whatever the process has; null where the system has none. Lives for good.
[[nodiscard]] locale_t Utf8Locale();

// Gives the calling thread that locale, until destroyed: the archive library reads names through
// the locale and has none to give in "C".
class ScopedUtf8Locale {
  public:
    ScopedUtf8Locale();
    ~ScopedUtf8Locale();
    ScopedUtf8Locale(const ScopedUtf8Locale&) = delete;
    ScopedUtf8Locale& operator=(const ScopedUtf8Locale&) = delete;

  private:
    locale_t m_before;
};

} // namespace engine
