// Machine paths as the bytes that the index keeps, and as text.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/IndexFile.h"
#include "platform/LogicalPath.h"
#include "platform/Names.h"

#include <string>

namespace engine {

[[nodiscard]] inline QString PathText(const std::string& bytes) {
    return platform::DecodeName(QByteArray::fromStdString(bytes));
}

// Of a logical path; empty when it leads nowhere on this machine.
[[nodiscard]] inline std::string PathBytes(const QString& logical) {
    return platform::EncodeName(platform::ToMachine(logical)).toStdString();
}

// The marks that part container and member are reserved.
[[nodiscard]] inline QString WithoutMarks(QString name) {
    return name.replace(QLatin1Char('>'), QChar(0xF03E)).replace(QLatin1Char('|'), QChar(0xF07C));
}

// The logical name in capitals as the index keeps it.
[[nodiscard]] inline std::string IndexName(const QString& machinePath) {
    return WithoutMarks(platform::Capitals(platform::ToLogical(machinePath))).toStdString();
}

// What the logical names of all documents below a folder (logical path) begin with; empty for "".
[[nodiscard]] inline std::string NamesBelow(const QString& folder) {
    return WithoutMarks(platform::Capitals(platform::WithBackslash(folder))).toStdString();
}

// The name after the one that is last below such a folder: "]" follows "\" in the order of bytes.
[[nodiscard]] inline std::string BehindNames(const std::string& below) {
    return below.empty() ? "\xFF" : below.substr(0, below.size() - 1) + "]";
}

// A member as people see it behind the path of its file.
[[nodiscard]] inline QString MemberText(const std::string& path) {
    return QString::fromStdString(path).replace(QLatin1Char('\\'), QLatin1Char('/'));
}

// Machine path of the index file in the folder of that logical path.
[[nodiscard]] inline std::string IndexFileOf(const QString& indexPath) {
    return PathBytes(indexPath) + "/" + kIndexFileName;
}

} // namespace engine
