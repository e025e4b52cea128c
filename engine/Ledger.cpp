// Asks the index what became of its documents.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/Ledger.h"

#include "engine/index/IndexFile.h"
#include "engine/index/IndexRun.h"
#include "engine/index/Paths.h"

#include <algorithm>
#include <map>
#include <utility>

namespace engine {
namespace {

// All files and all members are counted as Read, on indexes alone, which are a small part of the
// file; then what is in another state comes, to be taken off.
constexpr const char* kCount = R"(
SELECT f.path, c.state, c.number FROM (
  SELECT folder, 0 AS state, count(*) AS number FROM document WHERE parent = 0 GROUP BY folder
  UNION ALL
  SELECT d.folder, 0, sum(m.number) FROM
    (SELECT parent, count(*) AS number FROM document WHERE parent <> 0 GROUP BY parent) m
    JOIN document d ON d.id = m.parent GROUP BY d.folder
  UNION ALL
  SELECT folder, state, count(*) FROM document WHERE state <> 0 GROUP BY folder, state
) c JOIN folder f ON f.id = c.folder)";
static_assert(static_cast<int>(ReadState::Read) == 0);

// Calls use with the open index; what the database says becomes an IndexError.
template <class Use>
auto WithIndex(const QString& indexPath, const QString& alphabetFile, Use use) {
    const std::string file = PathBytes(indexPath) + '/' + kIndexFileName;
    IndexFile index(file, IndexMode::Search, AlphabetOf(alphabetFile));
    try {
        return use(index);
    } catch (const sqlite::Error& error) {
        throw Translate(error);
    }
}

std::string Joined(std::string_view folder, std::string_view file) {
    std::string path(folder);
    if (path != "/")
        path += '/';
    return path.append(file);
}

} // namespace

std::vector<Problem> ListProblems(const QString& indexPath, const QString& alphabetFile,
                                  const QString& folder) {
    return WithIndex(indexPath, alphabetFile, [&](IndexFile& index) {
        sqlite::Statement rows(
            index.Db(), "SELECT f.path, d.file, d.path, d.state, d.reason FROM document d "
                        "JOIN folder f ON f.id = d.folder "
                        "WHERE d.state <> 0 AND d.state <> ?1 AND d.name >= ?2 AND d.name < ?3 "
                        "ORDER BY d.name");
        const std::string below = NamesBelow(folder);
        rows.Bind(1, static_cast<int>(ReadState::NameOnly));
        rows.Bind(2, below).Bind(3, BehindNames(below));
        std::vector<Problem> problems;
        while (rows.Step()) {
            const QString file = PathText(Joined(rows.Blob(0), rows.Blob(1)));
            problems.push_back({file + MemberText(std::string(rows.Text(2))),
                                static_cast<ReadState>(rows.Int(3)),
                                QString::fromStdString(std::string(rows.Text(4)))});
        }
        return problems;
    });
}

std::vector<FolderCounts> CountDocuments(const QString& indexPath, const QString& alphabetFile,
                                         const QString& folder) {
    return WithIndex(indexPath, alphabetFile, [&](IndexFile& index) {
        const std::string below = NamesBelow(folder);
        std::map<std::pair<std::string, std::string>, FolderCounts> inOrder;
        std::string path, name, order;
        sqlite::Statement rows(index.Db(), kCount);
        while (rows.Step()) {
            if (path != rows.Blob(0)) {
                path = rows.Blob(0);
                name = IndexName(PathText(Joined(path, {})));
                order = name; // with a folder before those that only begin like it
                std::replace(order.begin(), order.end(), '\\', '\1');
            }
            if (!name.starts_with(below))
                continue;
            // Two folders may differ by case only, and then have one name.
            FolderCounts& counts = inOrder[{order, path}];
            counts.folder = PathText(path);
            // A state that is none of ours counts as not read.
            const auto state = std::min(static_cast<std::size_t>(rows.Int(1)), kReadStates - 1);
            const auto number = static_cast<std::uint64_t>(rows.Int64(2));
            counts.documents[state] += number;
            if (state != 0)
                counts.documents[0] -= number;
        }
        std::vector<FolderCounts> all;
        all.reserve(inOrder.size());
        for (auto& [_, counts] : inOrder)
            all.push_back(std::move(counts));
        return all;
    });
}

} // namespace engine
