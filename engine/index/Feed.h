// Gives the full-text table its words ready-made: they were cut and folded by the worker.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "sqlite/Database.h"

#include <string_view>

namespace engine {

// Words of the document that is being put in or taken out, chunk by chunk.
class TermSource {
  public:
    virtual ~TermSource() = default;
    // The next words, each closed by a line feed, \x01 before one that shares the place of the
    // one before; false at the end. May throw: the statement then fails, and Feed rethrows.
    virtual bool Next(std::string_view& terms) = 0;
};

// The tokenizer "velmora_feed" of one connection. Lives as long as the connection.
class Feed {
  public:
    explicit Feed(sqlite::Database& database);
    ~Feed();
    Feed(const Feed&) = delete;
    Feed& operator=(const Feed&) = delete;

    // Makes source the words of the next statement that puts a document in or takes one out.
    void Set(TermSource* source);
    // Throws what the source threw, if it did.
    void Rethrow();

    struct State;

  private:
    State* m_state; // owned by the connection once registered
};

} // namespace engine
