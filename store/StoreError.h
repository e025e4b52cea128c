// Failures of the data layer in the words of the message table.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/Failure.h"
#include "core/Messages.h"
#include "store/MessageIds.h"

#include <QStringList>

namespace velmora {

// The failure of that message id, which is its number too.
inline Error StoreError(int id, const QStringList& arguments = {}) {
    return {id, GetMessage(id, arguments)};
}

} // namespace velmora
