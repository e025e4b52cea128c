// Faults of the index in words.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/IndexFaults.h"

#include "indexing/EngineWords.h"
#include "search/RequestMessage.h"

namespace velmora {

void ThrowOnFault(const engine::SearchResults& results) {
    if (results.fault) {
        const bool malformed = results.fault == engine::IndexFault::Request;
        throw CommandError{malformed ? kUsage : kUnusable, RequestMessage(results)};
    }
}

CommandError EndingOf(const engine::IndexError& error) {
    return {kUnusable, FaultMessage(error.fault, QString::fromUtf8(error.what()))};
}

} // namespace velmora
