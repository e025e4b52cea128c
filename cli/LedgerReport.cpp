// Prints problems and counts of the index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/LedgerReport.h"

#include "cli/Ending.h"
#include "cli/IndexFaults.h"
#include "cli/IndexProgress.h"
#include "cli/Json.h"
#include "cli/MessageIds.h"
#include "cli/Session.h"
#include "core/Messages.h"
#include "engine/Ledger.h"
#include "platform/Names.h"
#include "search/TextQuery.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

using engine::FolderCounts;
using engine::kReadStates;
using engine::ReadState;

QString StateName(ReadState state) {
    switch (state) {
    case ReadState::Read:
        return u"read"_s;
    case ReadState::Partly:
        return u"partly"_s;
    case ReadState::Encrypted:
        return u"encrypted"_s;
    case ReadState::Damaged:
        return u"damaged"_s;
    case ReadState::Unknown:
        return u"unknown"_s;
    case ReadState::NameOnly:
        return u"name-only"_s;
    case ReadState::Failed:
        break;
    }
    return u"failed"_s;
}

// Logical path of the folder that the report is about; empty: everything.
QString FolderOf(const Arguments& arguments) {
    const QByteArrayList& operands = arguments.Operands();
    if (operands.size() > 1) {
        throw UsageError{kArgumentExtra, {platform::DecodeName(operands[1])}};
    }
    return operands.isEmpty() ? QString() : LogicalPathOf(operands.front());
}

template <class List> auto FromIndex(List list, const QString& folder) {
    try {
        return list(IndexFolder(), AlphabetFile(), folder);
    } catch (const engine::IndexError& error) {
        throw EndingOf(error);
    }
}

FolderCounts SumOf(const std::vector<FolderCounts>& folders) {
    FolderCounts sum;
    for (const FolderCounts& each : folders) {
        for (std::size_t state = 0; state < kReadStates; ++state) {
            sum.documents[state] += each.documents[state];
        }
    }
    return sum;
}

void PrintJson(const std::vector<FolderCounts>& folders, Output& output) {
    for (const FolderCounts& each : folders) {
        QJsonObject object{{u"folder"_s, each.folder}};
        for (std::size_t state = 0; state < kReadStates; ++state) {
            object.insert(StateName(static_cast<ReadState>(state)),
                          static_cast<qint64>(each.documents[state]));
        }
        output.Utf8(JsonLine(object));
    }
}

// A column for all documents, and one for each state that any document is in; folders stand last,
// since they are of any width.
class CountsTable {
  public:
    explicit CountsTable(const FolderCounts& sum) {
        const QStringList all = GetMessage(kCountsHeadings).split(u'\t');
        m_headings << all.front();
        for (std::size_t state = 0; state < kReadStates; ++state) {
            if (sum.documents[state] != 0) {
                m_states.push_back(state);
                m_headings << all[static_cast<qsizetype>(state) + 1];
            }
        }
        m_folder = all.last();
        // No number is wider than the sum of its column.
        const QStringList numbers = NumbersOf(sum);
        for (qsizetype column = 0; column < numbers.size(); ++column) {
            m_widths << std::max(m_headings[column].size(), numbers[column].size());
        }
    }
    [[nodiscard]] QString Heading() const { return Line(m_headings, m_folder); }
    [[nodiscard]] QString Line(const FolderCounts& counts, const QString& name) const {
        return Line(NumbersOf(counts), name);
    }

  private:
    [[nodiscard]] QStringList NumbersOf(const FolderCounts& counts) const {
        QStringList numbers{QString::number(counts.Total())};
        for (const std::size_t state : m_states) {
            numbers << QString::number(counts.documents[state]);
        }
        return numbers;
    }
    [[nodiscard]] QString Line(const QStringList& cells, const QString& name) const {
        QString line;
        for (qsizetype column = 0; column < cells.size(); ++column) {
            line += cells[column].rightJustified(m_widths[column]) + u"  "_s;
        }
        return line + name;
    }

    QStringList m_headings; // of the numbers
    QString m_folder;       // heading of the folders
    std::vector<std::size_t> m_states;
    QList<qsizetype> m_widths;
};

} // namespace

int PrintProblems(const Arguments& arguments, Output& output) {
    const QString folder = FolderOf(arguments);
    OpenArchive(arguments);
    const std::vector<engine::Problem> problems = FromIndex(&engine::ListProblems, folder);
    for (const engine::Problem& problem : problems) {
        if (arguments.Has("--json")) {
            output.Utf8(JsonLine({{u"file"_s, problem.file},
                                  {u"state"_s, StateName(problem.state)},
                                  {u"reason"_s, problem.reason}}));
        } else {
            output.Line(ProblemText(problem));
        }
    }
    return problems.empty() ? kDone : kIncomplete;
}

int PrintCounts(const Arguments& arguments, Output& output) {
    const QString folder = FolderOf(arguments);
    OpenArchive(arguments);
    const std::vector<FolderCounts> folders = FromIndex(&engine::CountDocuments, folder);
    if (folders.empty() && !folder.isEmpty()) {
        output.Complain(GetMessage(kNoneInFolder, {MachinePathOf(arguments.Operands().front())}));
        return kIncomplete;
    }
    const FolderCounts sum = SumOf(folders);
    if (arguments.Has("--json")) {
        PrintJson(folders, output);
    } else {
        const CountsTable table(sum);
        output.Line(table.Heading());
        for (const FolderCounts& each : folders) {
            output.Line(table.Line(each, each.folder));
        }
        output.Line(table.Line(sum, GetMessage(kCountsTotal)));
    }
    const bool allRead = sum.Total() == sum.Of(ReadState::Read) + sum.Of(ReadState::NameOnly);
    return allRead ? kDone : kIncomplete;
}

} // namespace velmora
