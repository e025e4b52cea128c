// Runs that make an index anew: the first one, one that is wanted, one in place of a damaged one.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/IndexRun.h"

#include "engine/index/DamageNote.h"
#include "engine/index/Paths.h"

#include <algorithm>
#include <unordered_set>

namespace engine {
namespace {

// Kept in the index until a run over the whole archive has made it untrue.
constexpr const char* kOthersMissing = "others missing";

// What a job takes out of the index by name.
class Removals {
  public:
    explicit Removals(const IndexJob& job) {
        for (const QString& folder : job.ToRemoveFolders)
            m_folders.push_back(NamesBelow(folder));
        for (const QString& name : ReadRemoveList(job))
            m_files.insert(name.toStdString());
    }
    [[nodiscard]] bool Take(std::string_view name) const {
        const auto holds = [&](const std::string& folder) { return name.starts_with(folder); };
        return m_files.count(std::string(name)) != 0 ||
               std::any_of(m_folders.begin(), m_folders.end(), holds);
    }

  private:
    std::vector<std::string> m_folders;
    std::unordered_set<std::string> m_files;
};

} // namespace

// The first index shows itself with its tables: a file without any is then known to be damaged.
void IndexRun::Create() {
    m_index =
        std::make_unique<IndexFile>(m_fresh->Path(), WritingMode(), m_alphabet.Canonical());
    SettleAndClose();
    (void)m_fresh->TakePlace();
}

// At any moment one whole index is there: the new one grows beside the old one.
void IndexRun::Rebuild(const std::string& indexFile, bool damaged) {
    RunInto(m_fresh->Path(), true);
    m_store.reset();
    if (m_report.aborted)
        return;
    if (!damaged && OpensAsIndex(indexFile)) {
        m_fresh->CopyOver(*m_index, m_job.Shared);
    } else {
        SettleAndClose();
        m_report.damagedKept = PathText(m_fresh->TakePlace());
    }
    ForgetDamage(indexFile);
}

// The job begins again with a new index, which also gets what the damaged one knew of.
void IndexRun::Mend(const std::string& indexFile, const std::string& damaged) {
    m_store.reset();
    m_index.reset();
    m_report = {};
    m_damaged = std::make_unique<DamagedIndex>(damaged);
    RunInto(m_fresh->Path(), true);
    if (m_report.aborted)
        return;
    SettleAndClose();
    const std::string kept = m_fresh->TakePlace();
    m_report.damagedKept = PathText(kept.empty() ? damaged : kept);
    ForgetDamage(indexFile);
}

// Takes its time: everything is read.
bool IndexRun::IsStillWhole(const std::string& indexFile) const {
    try {
        IndexFile index(indexFile, IndexMode::Search, m_alphabet.Canonical());
        if (!IsWhole(index, [this] { return !m_progress.Aborted(); }))
            return false;
    } catch (const IndexError& error) {
        if (error.fault == IndexFault::Damaged)
            return false;
        throw;
    }
    if (!m_progress.Aborted())
        ForgetDamage(indexFile);
    return true;
}

void IndexRun::SettleAndClose() {
    m_store.reset();
    Replacement::Settle(*m_index);
    m_index.reset();
}

void IndexRun::AddKnownFiles(FolderScan& scan) {
    const Removals removals(m_job);
    scan.Know(m_damaged->KnownPlaces());
    const bool whole = m_damaged->ListFiles(
        [&](const std::string& folder, const std::string& file, std::string_view name) {
            if (!m_progress.Aborted() && !removals.Take(name))
                scan.AddKnown(folder, file);
        });
    m_damaged.reset(); // it is to be renamed
    if (!whole && !m_job.WholeArchive)
        m_index->SetMeta(kOthersMissing, "1");
}

void IndexRun::TellWhatIsMissing() {
    if (m_job.WholeArchive && !m_report.aborted && m_index->Meta(kOthersMissing))
        m_index->Db().Exec("DELETE FROM meta WHERE name = 'others missing'");
    m_report.otherFoldersMissing = m_index->Meta(kOthersMissing).has_value();
}

} // namespace engine
