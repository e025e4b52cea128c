// The charset of names that an archive gives without telling it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace engine {

// Names of one archive share a charset, and many names tell it better than one.
class NameCharset {
  public:
    // Takes a name into account. What is UTF-8 tells nothing and is passed over.
    void Learn(std::string_view raw);
    // The name in UTF-8: what is UTF-8 stays, the rest is decoded from the charset in which all
    // that was learned reads best. Old DOS charsets are as likely as those of Windows and CJK.
    [[nodiscard]] std::string Decode(std::string_view raw);

  private:
    std::string m_sample;
    std::string m_charset; // empty: to be found out
};

} // namespace engine
