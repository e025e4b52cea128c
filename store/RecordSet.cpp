// Walking, filtering and writing back of records held in memory.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/RecordSet.h"

#include "sqlite/Unicode.h"
#include "store/StoreError.h"

#include <algorithm>

namespace velmora {

namespace {

// A value as a key under which equal ones meet: whole numbers in columns of numbers, texts in
// columns of texts. Nothing for other pairs, which compare by rules of their own.
std::optional<std::string> LookUpKey(FieldType type, const QVariant& value) {
    const bool isNumber = type == FieldType::Integer || type == FieldType::AutoNumber;
    const bool isText = type == FieldType::Text || type == FieldType::Memo;
    if (isNumber && value.typeId() == QMetaType::LongLong) {
        return std::to_string(value.toLongLong());
    }
    if (isText && value.typeId() == QMetaType::QString) {
        return sqlite::FoldCase(value.toString().toStdString());
    }
    return std::nullopt;
}

} // namespace

RecordSet::RecordSet(Connection& connection, const QString& sql, const QVariantList& values)
    : m_connection(connection) {
    Rows result = connection.Query(sql, values);
    m_columns = std::move(result.columns);
    m_records.reserve(result.rows.size());
    for (Row& row : result.rows) {
        m_records.push_back(std::make_unique<Record>(Record{std::move(row), {}}));
    }
    BuildView();
}

// ---- where it stands

bool RecordSet::OnRecord() const {
    return m_position >= 0 && m_position < static_cast<std::ptrdiff_t>(m_view.size());
}

RecordSet::Record& RecordSet::Current() {
    if (!OnRecord() || m_view[static_cast<std::size_t>(m_position)]->state >= State::Deleted) {
        throw StoreError(kNoCurrentRecord);
    }
    return *m_view[static_cast<std::size_t>(m_position)];
}

int RecordSet::RecordCount() const {
    return static_cast<int>(std::count_if(m_view.begin(), m_view.end(), [](const Record* record) {
        return record->state < State::Deleted;
    }));
}

bool RecordSet::BOF() const {
    return m_view.empty() || m_position < 0;
}

bool RecordSet::EOF_() const {
    return m_view.empty() || m_position >= static_cast<std::ptrdiff_t>(m_view.size());
}

// A deleted record stays the current one until the first move; behind it stands the next.
bool RecordSet::LeaveDeleted() {
    if (!OnRecord() || m_view[static_cast<std::size_t>(m_position)]->state < State::Deleted) {
        return false;
    }
    m_view.erase(m_view.begin() + m_position);
    m_findIndex.reset();
    return true;
}

void RecordSet::MoveFirst() {
    LeaveDeleted();
    m_position = 0;
}

void RecordSet::MoveLast() {
    LeaveDeleted();
    m_position = std::max<std::ptrdiff_t>(0, static_cast<std::ptrdiff_t>(m_view.size()) - 1);
}

void RecordSet::MoveNext() {
    if (EOF_()) {
        throw StoreError(kNoCurrentRecord);
    }
    if (!LeaveDeleted()) {
        ++m_position;
    }
}

void RecordSet::MovePrevious() {
    if (BOF()) {
        throw StoreError(kNoCurrentRecord);
    }
    LeaveDeleted();
    --m_position;
}

// ---- fields

std::optional<std::size_t> RecordSet::ColumnOf(QStringView name) const {
    for (std::size_t column = 0; column < m_columns.size(); ++column) {
        if (name.compare(m_columns[column].name, Qt::CaseInsensitive) == 0) {
            return column;
        }
    }
    return std::nullopt;
}

bool RecordSet::HasField(QStringView name) const {
    return ColumnOf(name).has_value();
}

Field RecordSet::Fields(QStringView name) {
    const auto column = ColumnOf(name);
    if (!column) {
        throw StoreError(kNoSuchField, {name.toString()});
    }
    return {*this, *column};
}

Field RecordSet::Fields(int position) {
    if (position < 0 || position >= FieldCount()) {
        throw StoreError(kNoSuchField, {QString::number(position)});
    }
    return {*this, static_cast<std::size_t>(position)};
}

// ---- filter and search

bool RecordSet::Passes(const Record& record, const Criteria& criteria) const {
    return criteria.Matches([&](const QString& name) {
        const auto column = ColumnOf(name);
        if (!column) {
            throw StoreError(kNoSuchField, {name});
        }
        return record.values[*column];
    });
}

void RecordSet::BuildView() {
    std::vector<Record*> view;
    for (const auto& record : m_records) {
        if (record->state < State::Deleted && (!m_filter || Passes(*record, *m_filter))) {
            view.push_back(record.get());
        }
    }
    m_view = std::move(view);
    m_position = 0;
    m_findIndex.reset();
}

void RecordSet::SetFilter(const QString& condition) {
    std::optional<Criteria> filter;
    if (!condition.trimmed().isEmpty()) {
        filter.emplace(condition);
    }
    m_filter.swap(filter);
    try {
        BuildView();
    } catch (...) {
        m_filter.swap(filter); // a field that is not there: all stays as it was
        throw;
    }
    m_filterText = condition;
}

bool RecordSet::Find(const QString& condition) {
    const Criteria criteria(condition);
    LeaveDeleted();
    m_position = std::max<std::ptrdiff_t>(m_position, 0);
    const auto sought = criteria.AsEquality();
    if (const auto* positions = sought ? LookUp(*sought) : nullptr) {
        const auto next = std::lower_bound(positions->begin(), positions->end(), m_position);
        m_position = next == positions->end() ? static_cast<std::ptrdiff_t>(m_view.size()) : *next;
        return next != positions->end();
    }
    for (; OnRecord(); ++m_position) {
        if (Passes(*m_view[static_cast<std::size_t>(m_position)], criteria)) {
            return true;
        }
    }
    return false;
}

// Where the value stands, in order; null when the kinds of column and value ask for a walk.
const std::vector<std::ptrdiff_t>* RecordSet::LookUp(const Criteria::Equality& sought) {
    static const std::vector<std::ptrdiff_t> kNowhere;
    const auto column = ColumnOf(sought.column);
    if (!column) {
        throw StoreError(kNoSuchField, {sought.column});
    }
    const auto key = LookUpKey(m_columns[*column].type, sought.value);
    if (!key) {
        return nullptr;
    }
    if (!m_findIndex || m_findIndex->column != *column) {
        FindIndex index{*column, {}};
        for (std::size_t i = 0; i < m_view.size(); ++i) {
            const QVariant& value = m_view[i]->values[*column];
            if (const auto own = LookUpKey(m_columns[*column].type, value)) {
                index.positions[*own].push_back(static_cast<std::ptrdiff_t>(i));
            } else if (value.isValid()) {
                return nullptr;
            }
        }
        m_findIndex = std::move(index);
    }
    const auto found = m_findIndex->positions.find(*key);
    return found == m_findIndex->positions.end() ? &kNowhere : &found->second;
}

// ---- changes

void RecordSet::AddNew() {
    RequireUpdatable();
    LeaveDeleted();
    auto record = std::make_unique<Record>();
    record->values.resize(m_columns.size());
    record->original.resize(m_columns.size());
    record->state = State::Added;
    m_findIndex.reset();
    m_view.push_back(record.get());
    m_position = static_cast<std::ptrdiff_t>(m_view.size()) - 1;
    m_records.push_back(std::move(record));
}

void RecordSet::Delete() {
    RequireUpdatable();
    Record& record = Current();
    record.wasAdded = record.state == State::Added;
    record.state = State::Deleted;
}

void RecordSet::CancelUpdate() {
    if (!OnRecord()) {
        throw StoreError(kNoCurrentRecord);
    }
    Record& record = *m_view[static_cast<std::size_t>(m_position)];
    if (record.state == State::Added || record.wasAdded) {
        record.state = State::Gone;
        LeaveDeleted();
    } else if (record.state != State::Gone) {
        if (!record.original.empty()) {
            record.values = std::move(record.original);
            record.original.clear();
        }
        record.state = State::Clean;
        m_findIndex.reset();
    }
}

QString RecordSet::UpdateTable() const {
    QString table = m_columns.empty() ? QString() : m_columns.front().table;
    const bool single = std::all_of(m_columns.begin(), m_columns.end(),
                                    [&](const ResultColumn& c) { return c.table == table; });
    if (table.isEmpty() || !single) {
        throw StoreError(kNotUpdatable);
    }
    return table;
}

// Refuses now what could not be written later.
void RecordSet::RequireUpdatable() const {
    (void)UpdateTable();
}

// What names the record in the database: its counter and, so that nobody's work is overwritten,
// what it held in the columns about to change; all it held when it is to be deleted or when there
// is no counter.
std::vector<NamedValue> RecordSet::Known(const Record& record) const {
    const bool hasCounter = std::any_of(m_columns.begin(), m_columns.end(), [](const auto& column) {
        return column.type == FieldType::AutoNumber;
    });
    const bool all = !hasCounter || record.state == State::Deleted;
    const Row& original = record.original.empty() ? record.values : record.original;
    std::vector<NamedValue> known;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        if (all || m_columns[i].type == FieldType::AutoNumber || record.values[i] != original[i]) {
            known.push_back({m_columns[i].name, original[i]});
        }
    }
    return known;
}

// Writes one pending record and answers how it stands afterwards; the record itself stays as it
// is, since a transaction around may still fail.
RecordSet::Record RecordSet::Written(const Record& record) {
    const QString table = UpdateTable();
    Record written = record;
    std::vector<NamedValue> changes;
    for (std::size_t i = 0; i < record.original.size(); ++i) {
        if (record.values[i] != record.original[i]) {
            changes.push_back({m_columns[i].name, record.values[i]});
        }
    }
    bool found = true;
    if (record.state == State::Deleted) {
        found = record.wasAdded || m_connection.DeleteRow(table, Known(record));
    } else if (record.state == State::Added) {
        const qlonglong number = m_connection.InsertRow(table, changes);
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            if (m_columns[i].type == FieldType::AutoNumber) {
                written.values[i] = number;
            }
        }
    } else if (record.state == State::Changed && !changes.empty()) {
        found = m_connection.UpdateRow(table, Known(record), changes);
    }
    if (!found) {
        throw StoreError(kRecordChanged);
    }
    written.original.clear();
    written.state = record.state >= State::Deleted ? State::Gone : State::Clean;
    return written;
}

void RecordSet::UpdateBatch(Affect affect) {
    if (affect != Affect::Current) {
        WriteAll();
        return;
    }
    if (!OnRecord()) {
        throw StoreError(kNoCurrentRecord);
    }
    Record& record = *m_view[static_cast<std::size_t>(m_position)];
    record = Written(record);
    m_findIndex.reset();
}

void RecordSet::WriteAll() {
    std::vector<std::pair<Record*, Record>> written;
    m_connection.InTransaction([&] {
        // Deleted ones first: a new record may have their key.
        for (const State state : {State::Deleted, State::Changed, State::Added}) {
            for (const auto& record : m_records) {
                if (record->state == state) {
                    written.emplace_back(record.get(), Written(*record));
                }
            }
        }
    });
    for (auto& [record, after] : written) {
        *record = std::move(after);
    }
    m_findIndex.reset();
}

RecordSet& RecordSetPtr::operator*() const {
    if (!m_records) {
        throw StoreError(kNoRecordSet);
    }
    return *m_records;
}

} // namespace velmora
