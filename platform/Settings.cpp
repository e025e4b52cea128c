// The user's own settings: small texts by section and key.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Settings.h"

#include "platform/Files.h"
#include "platform/Names.h"

#include <QDir>
#include <QSettings>
#include <QStringList>
#include <cerrno>
#include <unistd.h>

namespace platform {

namespace {

QString ConfigFolder() {
    for (const char* variable : {"VELMORA_CONFIG_HOME", "XDG_CONFIG_HOME"}) {
        const QString folder = DecodeName(qgetenv(variable));
        if (folder.startsWith(u'/')) {
            return folder + QStringLiteral("/velmora");
        }
    }
    return QDir::homePath() + QStringLiteral("/.config/velmora");
}

QString FileOf(const QString& application) {
    return ConfigFolder() + u'/' + application + QStringLiteral(".ini");
}

/// QSettings takes slashes in a name for groups and turns one kind into the other.
QString SafeName(QString name) {
    name.replace(u'%', QLatin1String("%25"));
    name.replace(u'/', QLatin1String("%2F"));
    return name.replace(u'\\', QLatin1String("%5C"));
}

QString Name(const QString& section, const QString& key) {
    return SafeName(section) + u'/' + SafeName(key);
}

/// A value with a comma that a person typed without quotes is read as a list.
QString TextOf(const QVariant& value) {
    return value.typeId() == QMetaType::QStringList ? value.toStringList().join(QLatin1String(", "))
                                                    : value.toString();
}

} // namespace

QString GetSetting(const QString& section, const QString& key, const QString& application) {
    const QSettings settings(FileOf(application), QSettings::IniFormat);
    return TextOf(settings.value(Name(section, key)));
}

SystemError SaveSetting(const QString& section, const QString& key, const QString& value,
                        const QString& application) {
    if (section.isEmpty() || key.isEmpty()) {
        return SystemError::Of(EINVAL);
    }
    if (const SystemError error = CreateFolders(ConfigFolder(), 0700); !error.Ok()) {
        return error;
    }
    const QString file = FileOf(application);
    QSettings settings(file, QSettings::IniFormat);
    settings.setValue(Name(section, key), value);
    settings.sync();
    // A line that QSettings cannot read is dropped, and the rest is stored all the same.
    if (settings.status() != QSettings::AccessError) {
        return {};
    }
    const QString refusing = Exists(file) ? file : ConfigFolder();
    return SystemError::Of(access(EncodeName(refusing).constData(), W_OK) == 0 ? EIO : EACCES);
}

} // namespace platform
