// Results for programs: one JSON object a line.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QJsonDocument>
#include <QJsonObject>

namespace velmora {

inline QString JsonLine(const QJsonObject& object) {
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + u'\n';
}

} // namespace velmora
