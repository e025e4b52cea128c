// The rules for the name that a new document gets when it is first saved.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/NameFile.h"

#include "core/CommonFunctions.h"
#include "core/Dialogue.h"
#include "core/Failure.h"
#include "core/Messages.h"
#include "platform/LogicalPath.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr qsizetype kLongestPath = 250; // installations on other systems open no longer one

} // namespace

bool TakesCharacter(QChar character) {
    return character.category() == QChar::Other_Control || VerifyFileName(QString(character));
}

QString CheckedFileName(const QString& name, const QString& folder) {
    return Guard("FrmNameFile", "cmdOk_Click", [&]() -> QString {
        QString full = name.trimmed();
        const bool isBlank = full.isEmpty();
        if (!platform::Capitals(full).endsWith(u".TIF")) {
            full += u".TIF"_s;
        }
        const QString path = platform::JoinPath(folder, full);
        if (isBlank || !VerifyFileName(full) || path.size() > kLongestPath) {
            Tell(GetMessage(88), GetMessage(115), Icon::Exclamation);
            return {};
        }
        if (VerifyExistsFileName(path)) {
            Tell(GetMessage(193), GetMessage(88), Icon::Exclamation);
            return {};
        }
        return full;
    });
}

} // namespace velmora
