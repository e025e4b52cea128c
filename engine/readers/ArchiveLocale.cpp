// The locale in which archive members' names are read.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/ArchiveLocale.h"

namespace engine {

locale_t Utf8Locale() {
    static const locale_t locale = [] {
        locale_t made = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return made != nullptr ? made : newlocale(LC_CTYPE_MASK, "en_US.UTF-8", nullptr);
    }();
    return locale;
}

ScopedUtf8Locale::ScopedUtf8Locale()
    : m_before(Utf8Locale() == nullptr ? nullptr : uselocale(Utf8Locale())) {}

ScopedUtf8Locale::~ScopedUtf8Locale() {
    if (m_before != nullptr)
        uselocale(m_before);
}

} // namespace engine
