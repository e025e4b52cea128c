// The yardstick: files straight into a plain FTS5 table with its ascii tokenizer, nothing else.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

namespace {

void Exec(sqlite3* database, const char* sql) {
    char* error = nullptr;
    if (sqlite3_exec(database, sql, nullptr, nullptr, &error) != SQLITE_OK) {
        std::cerr << sql << ": " << error << "\n";
        std::exit(1);
    }
}

} // namespace

// bare_fts5 DATABASE FOLDER
int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    sqlite3* database = nullptr;
    sqlite3_open(argv[1], &database);
    Exec(database, "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;"
                   "CREATE VIRTUAL TABLE t USING fts5(x, content='', tokenize='ascii'); BEGIN");
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(database, "INSERT INTO t(x) VALUES(?1)", -1, &insert, nullptr);
    std::size_t bytes = 0;
    std::size_t sinceCommit = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[2])) {
        if (!entry.is_regular_file())
            continue;
        std::ifstream file(entry.path(), std::ios::binary);
        std::ostringstream content;
        content << file.rdbuf();
        const std::string text = content.str();
        sqlite3_bind_text(insert, 1, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
        sqlite3_step(insert);
        sqlite3_reset(insert);
        bytes += text.size();
        if ((sinceCommit += text.size()) > (std::size_t{64} << 20)) {
            Exec(database, "COMMIT; BEGIN");
            sinceCommit = 0;
        }
    }
    sqlite3_finalize(insert);
    Exec(database, "COMMIT");
    sqlite3_close(database);
    std::cout << bytes << "\n";
}
