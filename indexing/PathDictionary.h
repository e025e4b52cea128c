// Paths that a run of the index update is to add or to remove.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace velmora {

// Logical paths in capitals, each once, in the order of adding; key and item are the same text.
class PathDictionary {
  public:
    void Add(const QString& path);
    // False when it was not there.
    bool Remove(const QString& path);
    [[nodiscard]] bool Exists(const QString& path) const;
    [[nodiscard]] qsizetype Count() const { return m_items.size(); }
    [[nodiscard]] const QStringList& Items() const { return m_items; }

  private:
    QStringList m_items;
};

} // namespace velmora
