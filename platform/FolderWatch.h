// Tells when something in one folder changes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/Files.h"

#include <QObject>
#include <memory>

class QSocketNotifier;

namespace platform {

/// Watches the names in a folder and the content of its files, not what lies deeper. Changes made
/// on other machines are not seen. QFileSystemWatcher tells neither writing into a file that is
/// there nor folders whose names are no UTF-8.
class FolderWatch : public QObject {
    Q_OBJECT

  public:
    explicit FolderWatch(QObject* parent = nullptr);
    ~FolderWatch() override;

    /// Watches this folder (machine path) in place of the one before; an empty path watches
    /// nothing. When the system refuses, nothing is watched.
    [[nodiscard]] SystemError Watch(const QString& path);

  Q_SIGNALS:
    /// One or many changes, the folder's own end included.
    void Changed();

  private:
    void Read();

    FileDescriptor m_events;
    std::unique_ptr<QSocketNotifier> m_notifier;
    int m_watch = -1;
};

} // namespace platform
