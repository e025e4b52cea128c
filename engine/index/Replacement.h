// A new index that grows beside the old one and takes its place when it is whole.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/IndexFile.h"

#include <string>

namespace engine {

// For whoever holds the WriterLock. At any moment the index's name leads to one whole index, old or
// new, whatever happens to the process or the machine. Everything throws IndexError or
// sqlite::Error, and then leaves the old index where it was.
class Replacement {
  public:
    // Removes what a killed one left.
    explicit Replacement(std::string indexFile);
    // Removes the new index if it has not taken the old one's place.
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    // Machine path of the new index, which the caller makes.
    [[nodiscard]] const std::string& Path() const { return m_path; }
    // Brings all of the new index into its one file. The caller then closes its connections.
    static void Settle(IndexFile& fresh);
    // Copies the new index over a sound old one, through the database: those who are searching see
    // either the old or the new content.
    // shared: the old one is to lose its log.
    void CopyOver(IndexFile& fresh, bool shared) const;
    // Puts the new index, settled and closed, in the place of an old one that is damaged or not
    // there. Answers where the damaged one is kept; empty when there was none.
    [[nodiscard]] std::string TakePlace() const;

  private:
    void RemoveFresh() const noexcept;

    std::string m_indexFile, m_path;
};

// Whether the file can be opened as an index of any version. Damage deeper inside shows later.
[[nodiscard]] bool OpensAsIndex(const std::string& indexFile);

// The damaged index whose replacement was cut short: the index itself, or where it is kept by now;
// empty when there is none. What stands under the index's name may then lack its log. To be asked
// before a new Replacement begins.
[[nodiscard]] std::string CutShort(const std::string& indexFile);

} // namespace engine
