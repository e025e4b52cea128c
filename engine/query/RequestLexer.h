// Cuts a request into operators, words and marks.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/query/Request.h"

#include <string>
#include <string_view>
#include <vector>

namespace engine {

struct RequestToken {
    enum class Kind : std::uint8_t {
        Words,  // a run of characters that holds words
        Quoted, // between quotation marks
        Open, Close,
        And, Or, Not, Contains, FirstWord, LastWord,
        Near, Before, // w/N, pre/N
        Filter,       // xfilter(...), text is what stands between the parentheses
        End,
    };
    Kind kind = Kind::End;
    std::string text;
    std::uint32_t distance = 0;
    std::size_t position = 1; // in characters from 1
};

// Ends with a token of kind End. Throws RequestError.
[[nodiscard]] std::vector<RequestToken> CutRequest(std::string_view request);

} // namespace engine
