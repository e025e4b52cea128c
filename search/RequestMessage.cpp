// Words for malformed requests.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/RequestMessage.h"

#include "core/Messages.h"
#include "indexing/EngineWords.h"
#include "search/MessageIds.h"

namespace velmora {

namespace {

using Reason = engine::RequestError::Reason;

int MessageOf(Reason reason, bool atEnd) {
    switch (reason) {
    case Reason::OperandMissing:
        return atEnd ? kWordMissingAtEnd : kWordMissing;
    case Reason::OperatorMissing:
        return kOperatorMissing;
    case Reason::ParenthesisMissing:
        return kParenthesisOpen;
    case Reason::ParenthesisExtra:
        return kParenthesisExtra;
    case Reason::QuoteMissing:
        return kQuoteOpen;
    case Reason::NumberMissing:
        return kNumberMissing;
    case Reason::FilterMalformed:
        return kFilterMalformed;
    case Reason::NotBesideNear:
        return kNotBesideNear;
    case Reason::TooLong:
        return kRequestTooLong;
    case Reason::TooManyWords:
        return kTooManyWords;
    }
    return kWordMissingAtEnd;
}

} // namespace

QString RequestMessage(const engine::SearchResults& results) {
    if (results.fault != engine::IndexFault::Request) {
        return FaultMessage(results.fault.value_or(engine::IndexFault::Other), results.faultText);
    }
    return GetMessage(MessageOf(results.requestFault, results.token.isEmpty()),
                      {QString::number(results.position), results.token});
}

int CaretPosition(const QString& text, std::size_t position) {
    qsizetype at = 0;
    for (std::size_t character = 1; character < position && at < text.size(); ++character) {
        at += text[at].isHighSurrogate() ? 2 : 1;
    }
    return static_cast<int>(std::min(at, text.size()));
}

} // namespace velmora
