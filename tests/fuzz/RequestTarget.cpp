// Any text is a request, or a RequestError that tells a place inside the text.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/Request.h"
#include "engine/query/RequestLexer.h"
#include "engine/text/Tokenizer.h"
#include "tests/fuzz/Target.h"

#include <algorithm>

namespace fuzz {
namespace {

using engine::RequestNode;

std::size_t Characters(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

// How many children a node of that kind has.
int Children(RequestNode::Kind kind) {
    switch (kind) {
    case RequestNode::Kind::Phrase:
    case RequestNode::Kind::FirstWord:
    case RequestNode::Kind::LastWord:
    case RequestNode::Kind::NameIs:
    case RequestNode::Kind::NameIsNot:
        return 0;
    case RequestNode::Kind::Not:
    case RequestNode::Kind::Contains:
        return 1;
    default:
        return 2;
    }
}

void CheckTree(const RequestNode& node, std::size_t characters) {
    Require((Children(node.kind) > 0) == (node.left != nullptr), "a left side amiss");
    Require((Children(node.kind) > 1) == (node.right != nullptr), "a right side amiss");
    const bool measures = node.kind == RequestNode::Kind::Near ||
                          node.kind == RequestNode::Kind::Before ||
                          node.kind == RequestNode::Kind::NotNear;
    Require(!measures || node.distance > 0, "a distance of 0");
    for (const engine::WordPattern& word : node.words) {
        Require(word.position >= 1 && word.position <= characters, "a word outside the request");
        Require(!word.text.empty(), "a word without text");
        Require(word.fixedLetters <= Characters(word.text), "more fixed letters than there are");
        Require(word.differences >= 0, "less than no difference");
    }
    if (node.left)
        CheckTree(*node.left, characters);
    if (node.right)
        CheckTree(*node.right, characters);
}

template <class Parse> void Check(std::string_view input, Parse parse) {
    const std::size_t characters = Characters(input);
    try {
        parse(characters);
    } catch (const engine::RequestError& error) {
        Require(error.position >= 1 && error.position <= characters + 1,
                "an error outside the request");
        Require(error.what()[0] != '\0', "an error without words");
    }
}

} // namespace

void FuzzRequest(const Target&, std::string_view input) {
    static engine::Tokenizer tokenizer;
    Check(input, [&](std::size_t characters) {
        const auto tokens = engine::CutRequest(input);
        Require(!tokens.empty() && tokens.back().kind == engine::RequestToken::Kind::End,
                "tokens without an end");
        for (std::size_t i = 0; i < tokens.size(); ++i)
            Require(tokens[i].position <= characters + 1 &&
                        (i == 0 || tokens[i].position >= tokens[i - 1].position),
                    "tokens out of order");
    });
    Check(input, [&](std::size_t characters) {
        if (const auto tree = engine::ParseRequestText(input, tokenizer))
            CheckTree(*tree, characters);
    });
    Check(input, [&](std::size_t characters) {
        if (const auto tree = engine::ParseFileConditions(input, tokenizer))
            CheckTree(*tree, characters);
    });
}

} // namespace fuzz
