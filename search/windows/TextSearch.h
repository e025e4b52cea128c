// The flow of a text search: wait window, results, messages, and the way back to the browser.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>

class QLineEdit;
class QWidget;

namespace velmora {

// What a text search needs of the main window. The callbacks may be empty.
struct TextSearchHost {
    QWidget* window = nullptr;       // the windows of the search stand over it
    QLineEdit* txtRicerca = nullptr; // holds the request; must not be null
    bool Synonyms = false;           // state of CHKSINONIMI
    // Closes the file filter when one is showing.
    std::function<void()> CloseFilter;
    // Shows a file in the folder tree; logical path, in the disk's spelling where it exists.
    std::function<void(QString)> FindElement;
};

// folder: logical path to search in, empty for the whole archive. Comes back when the result window
// is closed or a message has told why there is none.
void TextSearch(const TextSearchHost& host, const QString& folder, bool includeMail);

} // namespace velmora
