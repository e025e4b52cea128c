// The windows of store/.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/windows/FrmArchiveManagement.h"
#include "store/windows/FrmArchiveSelection.h"
#include "tests/screenshots/Shots.h"

using namespace Qt::StringLiterals;

namespace velmora {

QList<Shot> StoreShots() {
    return {
        {u"FrmArchiveSelection"_s, TakePlain<FrmArchiveSelection>},
        {u"FrmArchiveManagement"_s, TakePlain<FrmArchiveManagement>},
    };
}

} // namespace velmora
