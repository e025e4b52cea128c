// Rows of a query held in memory: walk, filter, find, add, edit, delete, write back.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "store/Connection.h"
#include "store/Criteria.h"

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

namespace velmora {

class RecordSet;

// One field of the current record, for the expression at hand.
class Field {
  public:
    Field(RecordSet& records, std::size_t column) : m_records(records), m_column(column) {}

    [[nodiscard]] QString Name() const;
    [[nodiscard]] QVariant Value() const; // invalid when null
    [[nodiscard]] bool IsNull() const { return !Value().isValid(); }
    [[nodiscard]] QString Text() const;     // "" when null
    [[nodiscard]] qlonglong Number() const; // 0 when null

    // Into memory; UpdateBatch writes it. An invalid QVariant is null, a truth value -1 or 0.
    // Throws when the text is longer than the column or no number for a numeric one.
    void SetValue(const QVariant& value);

  private:
    RecordSet& m_records;
    std::size_t m_column;
};

// Which pending changes UpdateBatch writes.
enum class Affect { Current = 1, All = 3, AllChapters = 4 };

// Changes stay in memory until UpdateBatch, deleted records too. Positions: before the first
// record (BOF), on one, behind the last (EOF_). All of it may throw velmora::Error. The connection
// must outlive the record set.
//   auto rs = GetRsIdxdFolders();
//   for (; !rs->EOF_(); rs->MoveNext()) { use(rs->Fields(u"spath").Text()); }
//   rs->AddNew();
//   rs->Fields(u"suser").SetValue(Program().gUserKey);
//   rs->UpdateBatch();
//   id = rs->Fields(u"i_id").Number();
class RecordSet {
  public:
    // Runs the query and stands on the first record.
    RecordSet(Connection& connection, const QString& sql, const QVariantList& values = {});

    // Records that pass the filter, without deleted ones, with added ones.
    [[nodiscard]] int RecordCount() const;
    // Both hold when there is no record at all.
    [[nodiscard]] bool BOF() const;
    [[nodiscard]] bool EOF_() const;

    // Moving where there is no record is a failure; MoveFirst and MoveLast of none do nothing.
    void MoveFirst();
    void MoveLast();
    void MoveNext();
    void MovePrevious();

    // Name without regard to case, or position from 0.
    [[nodiscard]] Field Fields(QStringView name);
    [[nodiscard]] Field Fields(int position);
    [[nodiscard]] int FieldCount() const { return static_cast<int>(m_columns.size()); }
    [[nodiscard]] bool HasField(QStringView name) const;

    // A new record, all null, becomes the current one.
    void AddNew();
    // Marks the current record; its fields are gone, the next move leaves it.
    void Delete();
    // Writes what is pending. Current: the current record, shown or not as the filter says; All and
    // AllChapters: every record, as one transaction, deleted ones first. A record that was changed
    // or deleted by another since it was read is a failure (kRecordChanged) and stays pending; only
    // the columns that this record set changed count, so that others may edit other columns.
    void UpdateBatch(Affect affect = Affect::Current);
    // Drops the current record's pending changes; an added record goes away.
    void CancelUpdate();

    // A condition as Criteria.h tells; "" lifts the filter. Stands on the first record that passes.
    void SetFilter(const QString& condition);
    [[nodiscard]] QString Filter() const { return m_filterText; }
    // Searches from the current record on, itself included; EOF_ when there is none. Answers
    // whether there is one. Looking up many values of one column one after the other is cheap.
    bool Find(const QString& condition);

  private:
    friend class Field;
    enum class State { Clean, Added, Changed, Deleted, Gone };
    struct Record {
        Row values;
        Row original; // as read, what UpdateBatch compares with; empty until the first change
        State state = State::Clean;
        bool wasAdded = false; // deleted before it was ever written
    };

    [[nodiscard]] std::optional<std::size_t> ColumnOf(QStringView name) const;
    [[nodiscard]] Record& Current();
    [[nodiscard]] bool OnRecord() const;
    [[nodiscard]] bool Passes(const Record& record, const Criteria& criteria) const;
    [[nodiscard]] QString UpdateTable() const;
    void RequireUpdatable() const;
    [[nodiscard]] std::vector<NamedValue> Known(const Record& record) const;
    [[nodiscard]] Record Written(const Record& record);
    [[nodiscard]] QVariant Fitting(std::size_t column, const QVariant& value) const;
    [[nodiscard]] const std::vector<std::ptrdiff_t>* LookUp(const Criteria::Equality& sought);
    void WriteAll();
    void BuildView();
    bool LeaveDeleted();

    Connection& m_connection;
    std::vector<ResultColumn> m_columns;
    std::vector<std::unique_ptr<Record>> m_records;
    std::vector<Record*> m_view;   // what the filter lets through, in order
    std::ptrdiff_t m_position = 0; // in the view; -1 before, size behind
    QString m_filterText;
    std::optional<Criteria> m_filter;

    // Positions in the view by the value of one column, made by Find, gone with any change.
    struct FindIndex {
        std::size_t column;
        std::unordered_map<std::string, std::vector<std::ptrdiff_t>> positions;
    };
    std::optional<FindIndex> m_findIndex;
};

// Owner of a record set, or of none after a cancelled failure. Using none is a failure with a
// report of its own, not a crash; test it where none is expected.
class RecordSetPtr {
  public:
    RecordSetPtr() = default;
    explicit RecordSetPtr(std::unique_ptr<RecordSet> records) : m_records(std::move(records)) {}

    explicit operator bool() const { return m_records != nullptr; }
    RecordSet* operator->() const { return &**this; }
    RecordSet& operator*() const;

  private:
    std::unique_ptr<RecordSet> m_records;
};

} // namespace velmora
