// The windows that are photographed, by name.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/SearchJob.h"

#include <QList>
#include <QString>
#include <QWidget>
#include <functional>

namespace velmora {

// What the windows are opened over: an archive with a few documents and a real index, made on the
// fly. Its program and help speak the language in force.
class Stage {
  public:
    virtual ~Stage() = default;
    // Machine path of the folder of documents, or of a file in it.
    [[nodiscard]] virtual QString Docs(const QString& name = {}) const = 0;
    [[nodiscard]] virtual engine::SearchResults Search(const QString& request) const = 0;
    // Waits until it is so, at most some seconds; events run meanwhile.
    virtual void WaitUntil(const std::function<bool()>& isSo) const = 0;
};

// Takes the picture of a shown window.
using Grab = std::function<void(QWidget& window)>;

// A line of the table: opens its window in the state that is to be seen and calls `grab` once.
struct Shot {
    QString name;
    std::function<void(Stage& stage, const Grab& grab)> take;
};

// One table for each folder of windows: a new window is one line there.
QList<Shot> CoreShots();
QList<Shot> StoreShots();
QList<Shot> IndexingShots();
QList<Shot> SearchShots();
QList<Shot> MainShots();

// A window that needs nothing but to be shown.
template <class Window> void TakePlain(Stage&, const Grab& grab) {
    Window window;
    window.show();
    grab(window);
}

// Runs what opens a modal window, grabs that and closes it.
void TakeModal(const std::function<void()>& open, const Grab& grab);

} // namespace velmora
