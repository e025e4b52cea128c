// One field of the current record, and which values a column takes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/RecordSet.h"
#include "store/StoreError.h"

#include <cmath>
#include <limits>

namespace velmora {

namespace {

QString FittingText(const ResultColumn& column, const QVariant& value) {
    QString text = value.toString();
    if (column.size > 0 && text.size() > column.size) {
        throw StoreError(kValueTooLong,
                         {column.name, QString::number(text.size()), QString::number(column.size)});
    }
    return text;
}

QVariant FittingNumber(const ResultColumn& column, const QVariant& value) {
    if (value.typeId() == QMetaType::Bool) {
        return QVariant::fromValue<qlonglong>(value.toBool() ? -1 : 0);
    }
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(number)) {
        throw StoreError(kValueMismatch, {column.name, value.toString()});
    }
    if (column.type == FieldType::Double) {
        return number;
    }
    const double whole = std::nearbyint(number);
    if (whole < std::numeric_limits<qint32>::min() || whole > std::numeric_limits<qint32>::max()) {
        throw StoreError(kValueMismatch, {column.name, value.toString()});
    }
    return static_cast<qlonglong>(whole);
}

} // namespace

QVariant RecordSet::Fitting(std::size_t column, const QVariant& value) const {
    const ResultColumn& target = m_columns[column];
    if (target.type == FieldType::AutoNumber) {
        throw StoreError(kNotUpdatable);
    }
    if (!value.isValid() || value.typeId() == QMetaType::Nullptr) {
        return {};
    }
    if (target.type == FieldType::Integer || target.type == FieldType::Double) {
        return FittingNumber(target, value);
    }
    return FittingText(target, value);
}

QString Field::Name() const {
    return m_records.m_columns[m_column].name;
}

QVariant Field::Value() const {
    return m_records.Current().values[m_column];
}

QString Field::Text() const {
    return Value().toString();
}

qlonglong Field::Number() const {
    return Value().toLongLong();
}

void Field::SetValue(const QVariant& value) {
    RecordSet::Record& record = m_records.Current();
    QVariant fitting = m_records.Fitting(m_column, value);
    if (record.state == RecordSet::State::Clean) {
        record.state = RecordSet::State::Changed;
        record.original = record.values;
    }
    record.values[m_column] = std::move(fitting);
    m_records.m_findIndex.reset();
}

} // namespace velmora
