// The tokenizer that hands on ready-made words.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/Feed.h"

#include "sqlite/Statement.h"

#include <sqlite3.h>

#include <cstring>
#include <exception>
#include <memory>

namespace engine {

struct Feed::State {
    TermSource* source = nullptr;
    std::exception_ptr failure;
};

namespace {

using TokenOut = int (*)(void*, int, const char*, int, int, int);

int HandOn(std::string_view terms, void* context, TokenOut out) {
    const char* at = terms.data();
    const char* end = at + terms.size();
    while (at < end) {
        const char* close = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
        if (close == nullptr)
            close = end;
        const bool colocated = *at == '\x01';
        if (colocated)
            ++at;
        if (close > at) {
            const int rc = out(context, colocated ? FTS5_TOKEN_COLOCATED : 0, at,
                               static_cast<int>(close - at), 0, 0);
            if (rc != SQLITE_OK)
                return rc;
        }
        at = close + 1;
    }
    return SQLITE_OK;
}

int Create(void* context, const char**, int, Fts5Tokenizer** out) {
    *out = static_cast<Fts5Tokenizer*>(context);
    return SQLITE_OK;
}

void Delete(Fts5Tokenizer*) {}

int Tokenize(Fts5Tokenizer* tokenizer, void* context, int, const char*, int, TokenOut out) {
    auto* state = reinterpret_cast<Feed::State*>(tokenizer);
    if (state->source == nullptr)
        return SQLITE_MISUSE;
    try {
        std::string_view terms;
        while (state->source->Next(terms))
            if (const int rc = HandOn(terms, context, out); rc != SQLITE_OK)
                return rc;
    } catch (...) {
        state->failure = std::current_exception();
        return SQLITE_ABORT;
    }
    return SQLITE_OK;
}

} // namespace

Feed::Feed(sqlite::Database& database) : m_state(new State) {
    std::unique_ptr<State> state(m_state);
    sqlite::Statement statement(database, "SELECT fts5(?1)");
    fts5_api* api = nullptr;
    sqlite3_bind_pointer(statement.Handle(), 1, &api, "fts5_api_ptr", nullptr);
    statement.Step();
    if (api == nullptr)
        throw sqlite::Error(SQLITE_ERROR, "this SQLite has no FTS5");
    fts5_tokenizer tokenizer{&Create, &Delete, &Tokenize};
    const int rc = api->xCreateTokenizer(api, "velmora_feed", state.release(), &tokenizer,
                                           [](void* owned) { delete static_cast<State*>(owned); });
    if (rc != SQLITE_OK)
        throw sqlite::Error(rc, "cannot register the tokenizer");
}

Feed::~Feed() = default;

void Feed::Set(TermSource* source) {
    m_state->source = source;
    m_state->failure = nullptr;
}

void Feed::Rethrow() {
    if (m_state->failure)
        std::rethrow_exception(std::exchange(m_state->failure, nullptr));
}

} // namespace engine
