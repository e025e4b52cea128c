// Refuses an archive on a share where file locks cannot be relied on.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>

namespace velmora {

// folder: machine path. Throws velmora::Error with a text for the person in front when two who
// write there at once would damage the database. On a local disk it asks nothing.
void RequireShareLocks(const QString& folder);

} // namespace velmora
