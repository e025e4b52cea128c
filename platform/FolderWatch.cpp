// Watches a folder through inotify.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/FolderWatch.h"

#include "platform/Names.h"

#include <QSocketNotifier>
#include <array>
#include <cerrno>
#include <sys/inotify.h>
#include <unistd.h>

namespace platform {

FolderWatch::FolderWatch(QObject* parent) : QObject(parent) {}

FolderWatch::~FolderWatch() = default;

SystemError FolderWatch::Watch(const QString& path) {
    if (m_watch >= 0) {
        inotify_rm_watch(m_events.Number(), m_watch);
        m_watch = -1;
    }
    if (path.isEmpty()) {
        return {};
    }
    if (!m_events.IsOpen()) {
        m_events = FileDescriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
        if (!m_events.IsOpen()) {
            return SystemError::Last();
        }
        m_notifier = std::make_unique<QSocketNotifier>(m_events.Number(), QSocketNotifier::Read);
        connect(m_notifier.get(), &QSocketNotifier::activated, this, &FolderWatch::Read);
    }
    m_watch = inotify_add_watch(m_events.Number(), EncodeName(path).constData(),
                                IN_ATTRIB | IN_CREATE | IN_DELETE | IN_MODIFY | IN_MOVE |
                                    IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR);
    return m_watch < 0 ? SystemError::Last() : SystemError();
}

void FolderWatch::Read() {
    alignas(inotify_event) std::array<char, 16 * 1024> buffer;
    bool changed = false;
    for (;;) {
        const ssize_t length = read(m_events.Number(), buffer.data(), buffer.size());
        if (length <= 0) {
            break;
        }
        for (ssize_t at = 0; at < length;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
            // Late news of a folder that was watched before does not count; a full queue does.
            changed = changed || (event->mask & IN_Q_OVERFLOW) != 0 ||
                      (event->wd == m_watch && (event->mask & IN_IGNORED) == 0);
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        }
    }
    if (changed) {
        Q_EMIT Changed();
    }
}

} // namespace platform
