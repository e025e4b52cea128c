// Where the words were found: the page that shows them, and the walk from one to the next.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/FileConverter.h"

#include <QString>

namespace velmora {

// The conversion of a found document into HTML in which hit N carries the anchor "hitN". fileName
// and spelling: as the engine gives them. Its Execute may run on any thread.
engine::FileConverter HtmlConverter(const QString& fileName, const QString& hits,
                                    const QString& spelling = {});

// The page of a conversion. Throws velmora::Error when there is none.
QString PageOf(const engine::ConvertedPage& page);

// Both at once, waiting for the conversion. hits: numbers parted by blanks. Throws velmora::Error.
void GetHtmlString(const QString& fileName, const QString& hits, QString& html,
                   const QString& spelling = {});

// The hit that an HTML page shows: none at first.
class HtmlHitWalk {
  public:
    void Reset(int count) {
        m_current = 0;
        m_count = count;
    }
    [[nodiscard]] int Current() const { return m_current; } // from 1; 0: none yet
    [[nodiscard]] int Count() const { return m_count; }
    [[nodiscard]] QString Anchor() const; // of the current hit

    // One on, one back. False at the end, which is told to the person.
    bool NextHit();
    bool PrevoiusHit();

  private:
    int m_current = 0;
    int m_count = 0;
};

} // namespace velmora
