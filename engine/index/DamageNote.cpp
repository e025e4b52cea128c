// The note, and the thorough look that it brings about.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/DamageNote.h"

#include "engine/index/Paths.h"
#include "engine/index/StoredText.h"
#include "platform/Files.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

namespace engine {
namespace {

constexpr int kStepsBetweenQuestions = 100'000; // of the database's machine

std::string NotePath(const std::string& indexFile) {
    return indexFile + ".suspect";
}

// While it lives, statements end with ErrorKind::Interrupt once keepGoing says no.
class Watch {
  public:
    Watch(sqlite::Database& database, const std::function<bool()>& keepGoing)
        : m_database(database) {
        sqlite3_progress_handler(
            database.Handle(), kStepsBetweenQuestions,
            [](void* context) {
                return (*static_cast<const std::function<bool()>*>(context))() ? 0 : 1;
            },
            const_cast<std::function<bool()>*>(&keepGoing));
    }
    ~Watch() { sqlite3_progress_handler(m_database.Handle(), 0, nullptr, nullptr); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

  private:
    sqlite::Database& m_database;
};

void ReadEverything(IndexFile& index) {
    if (const std::string said = index.Db().ReadPragma("integrity_check(1)"); said != "ok")
        throw IndexError(IndexFault::Damaged, said);
    index.Db().Exec("INSERT INTO words(words) VALUES('integrity-check')");
    sqlite::Statement texts(index.Db(), "SELECT plain, text FROM chunk");
    while (texts.Step())
        (void)Decompress(texts.Blob(1), static_cast<std::size_t>(texts.Int64(0)));
}

} // namespace

void NoteDamage(const std::string& indexFile) noexcept {
    const int file = open(NotePath(indexFile).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (file >= 0)
        close(file);
}

bool IsDamageNoted(const std::string& indexFile) {
    return platform::Exists(PathText(NotePath(indexFile)));
}

void ForgetDamage(const std::string& indexFile) noexcept {
    (void)unlink(NotePath(indexFile).c_str());
}

bool IsWhole(IndexFile& index, const std::function<bool()>& keepGoing) {
    const Watch watch(index.Db(), keepGoing);
    try {
        ReadEverything(index);
    } catch (const IndexError& error) {
        return error.fault != IndexFault::Damaged;
    } catch (const sqlite::Error& error) {
        if (error.Kind() == sqlite::ErrorKind::Interrupt)
            return true;
        if (error.Kind() != sqlite::ErrorKind::Corrupt)
            throw;
        return false;
    }
    return true;
}

} // namespace engine
