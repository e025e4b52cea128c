// A folder of real texts and containers, in an older and a newer state.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace engine_test {

enum class Age { Older, Newer };

// Fills the folder (machine path), whatever it held before. Newer: a third of the files has
// changed, some are gone and some have come; times of change are always the same for the same
// content. Three folders below it: "texts", "mixed" with containers and office files, "single".
void WriteCorpus(const QString& folder, Age age);

// Words that stand in the corpus, for requests; some in all files, some in one.
[[nodiscard]] QStringList CorpusRequests();

} // namespace engine_test
