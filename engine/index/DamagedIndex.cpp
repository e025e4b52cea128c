// Reads a damaged index as far as it goes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/DamagedIndex.h"

#include "engine/index/IndexFile.h"

#include <sqlite3.h>

#include <chrono>
#include <optional>

namespace engine {
namespace {

// A row, or nothing when the table cannot be read any further.
std::optional<bool> Next(sqlite::Statement& rows) {
    try {
        return rows.Step();
    } catch (const sqlite::Error&) {
        return std::nullopt;
    }
}

} // namespace

DamagedIndex::DamagedIndex(const std::string& file) {
    try {
        m_database =
            sqlite::Database(file, {sqlite::OpenMode::ReadWrite, std::chrono::seconds(10)});
        // It is set aside as it was found.
        sqlite3_db_config(m_database.Handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        if (m_database.ReadPragmaInt("application_id") != kApplicationId ||
            m_database.ReadPragmaInt("user_version") != kIndexVersion)
            m_database.Close();
        else
            m_database.Exec("PRAGMA query_only = 1; PRAGMA cell_size_check = 1");
    } catch (const sqlite::Error&) {
        m_database.Close();
    }
}

Places DamagedIndex::KnownPlaces() {
    Places places;
    if (!m_database.IsOpen())
        return places;
    try {
        sqlite::Statement rows(m_database, "SELECT path, device FROM place");
        while (rows.Step())
            places[std::string(rows.Blob(0))] = static_cast<std::uint64_t>(rows.Int64(1));
    } catch (const sqlite::Error&) {
        // Then what is away counts as gone.
    }
    return places;
}

bool DamagedIndex::IsSound(const char* table) {
    try {
        return m_database.ReadPragma("integrity_check(" + std::string(table) + ")") == "ok";
    } catch (const sqlite::Error&) {
        return false;
    }
}

bool DamagedIndex::ListFiles(const Use& use) {
    if (!m_database.IsOpen())
        return false;
    bool whole = IsSound("folder") && IsSound("document");
    std::optional<sqlite::Statement> rows;
    try {
        // In the order of the table: its own pages are all that has to be readable.
        rows.emplace(m_database,
                     "SELECT folder, file, name FROM document NOT INDEXED WHERE parent = 0");
    } catch (const sqlite::Error&) {
        return false;
    }
    std::int64_t folderId = 0;
    std::string folder;
    std::optional<bool> more;
    while ((more = Next(*rows)).value_or(false)) {
        try {
            if (folder.empty() || rows->Int64(0) != folderId) {
                folderId = rows->Int64(0);
                sqlite::Statement find(m_database, "SELECT path FROM folder WHERE id = ?1");
                find.Bind(1, folderId);
                folder = find.Step() ? std::string(find.Blob(0)) : std::string();
            }
        } catch (const sqlite::Error&) {
            folder.clear();
        }
        const std::string file(rows->Blob(1));
        // Damage may have made anything of a name.
        if (folder.empty() || folder.front() != '/' || file.empty() ||
            file.find_first_of(std::string_view("/\0", 2)) != std::string::npos) {
            whole = false;
            continue;
        }
        use(folder, file, rows->Text(2));
    }
    return whole && more.has_value();
}

} // namespace engine
