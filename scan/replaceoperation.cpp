// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/replaceoperation.h"

#include "scan/batchedchange.h"
#include "scan/metadatareader.h"
#include "store/fieldcatalogue.h"
#include "store/metadata.h"
#include "store/metadatafields.h"
#include "store/operationreply.h"
#include "store/recordreader.h"
#include "store/recordwriter.h"
#include "store/transactionstate.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace {

// The columns before those of the fields that are searched.
enum Column
{
    Id,
    FilePath,
    IsPlain,
    FirstField
};

// True, or NULL for a text, for what the field can hold. SQLite sorts numbers before texts and texts before blobs, and
// NULL compares with nothing. To ask for the names of the types would make a whole replacement a tenth slower.
QString plainCondition(const MetaDataField& field)
{
    switch (field.read(MetaData()).userType()) {
    case QMetaType::QString:
        return QStringLiteral("(%1 < x'') IS NOT 0").arg(field.name);
    case QMetaType::Double:
        return QStringLiteral("%1 < ''").arg(field.name);
    default:
        return QStringLiteral("%1 BETWEEN -2147483647 AND 2147483647 AND %1=CAST(%1 AS INTEGER)").arg(field.name);
    }
}

// True for a row that would not change when it were read as a record and written again. Another program may have
// written other rows.
QString plainRowCondition()
{
    QStringList conditions;
    for (const QString& name : allFieldNames()) {
        if (name != QLatin1String("id") && name != QLatin1String("scanTimestamp"))
            conditions.append(plainCondition(*findMetaDataField(name)));
    }
    return QLatin1Char('(') + conditions.join(QStringLiteral(" AND ")) + QLatin1Char(')');
}

/// A record that is to be written, whole or only these fields of it.
struct Change
{
    MetaData record;
    QStringList fields;
    /// Else the record's other fields are not known, and writing it would empty them.
    bool isReadable = true;
};

/// What is to be replaced by what.
struct Replacement
{
    QString before;
    QString after;
    Qt::CaseSensitivity caseSensitivity;

    /// Changes `value`; false when there is nothing to change.
    bool apply(QString& value) const
    {
        if (before.isEmpty() ? !value.isEmpty() : !value.contains(before, caseSensitivity))
            return false;
        if (before.isEmpty())
            value = after.isNull() ? QStringLiteral("") : after;
        else
            value.replace(before, after, caseSensitivity);
        return true;
    }
};

class Replace final : public BatchedChange
{
public:
    Replace(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QStringList& fields,
        const Replacement& replacement, const QVariantMap& parameters)
        : BatchedChange(connection, reply, tableId, parameters)
        , m_replacement(replacement)
    {
        for (const QString& field : fields) {
            // The id tells which record is written.
            if (allFieldNames().contains(field) && field != QLatin1String("id"))
                m_fields.append(field);
        }
    }

private:
    bool changeRows() override;
    QString columns() const;
    bool replaceBatch(RecordWriter& writer, const QVector<RowBatches::Row>& rows);
    QVector<Change> changesOf(const QVector<RowBatches::Row>& rows) const;
    QVariantMap changedValues(const RowBatches::Row& row) const;
    Change changeOf(const RowBatches::Row& row, const QVariantMap& values) const;
    static MetaData write(RecordWriter& writer, const Change& change);

    // Those of the fields that there are and that can be replaced.
    QStringList m_fields;
    Replacement m_replacement;
};

bool Replace::changeRows()
{
    RecordWriter writer(connection(), tableId(), 0, false);
    const QString columnNames = columns();
    while (!isAtEnd()) {
        QVector<RowBatches::Row> rows;
        if (!readBatch(columnNames, rows))
            return false;
        // The commit then fails, and says so.
        if (!replaceBatch(writer, rows) && !isTransactionActive(connection()))
            break;
    }
    return true;
}

QString Replace::columns() const
{
    const QStringList first{ QStringLiteral("id"), QStringLiteral("filePath"), plainRowCondition() };
    return (first + m_fields).join(QStringLiteral(", "));
}

// False when records were refused.
bool Replace::replaceBatch(RecordWriter& writer, const QVector<RowBatches::Row>& rows)
{
    const QVector<Change> changes = changesOf(rows);
    // Counted before the write: refused records are reported as warnings, not taken off.
    addChangedRows(changes.size());
    QStringList warnings;
    for (const Change& change : changes) {
        const MetaData failed = write(writer, change);
        if (!failed.isNull())
            warnings.append(QStringLiteral("%1: %2").arg(failed.error(), failed.filePath()));
    }
    showProgress();
    reply()->addWarnings(warnings);
    return warnings.isEmpty();
}

// The record with its error set when it could not be written.
MetaData Replace::write(RecordWriter& writer, const Change& change)
{
    if (!change.isReadable) {
        MetaData unreadable = change.record;
        unreadable.setError(QCoreApplication::translate("Database", "Unknown database error"));
        return unreadable;
    }
    if (!change.fields.isEmpty())
        return writer.writeFields(change.record, change.fields);
    return writer.write(MetaDataList{ change.record }).value(0);
}

QVector<Change> Replace::changesOf(const QVector<RowBatches::Row>& rows) const
{
    QVector<Change> changes;
    for (const RowBatches::Row& row : rows) {
        const QVariantMap values = changedValues(row);
        if (!values.isEmpty())
            changes.append(changeOf(row, values));
    }
    return changes;
}

QVariantMap Replace::changedValues(const RowBatches::Row& row) const
{
    QVariantMap changes;
    for (int index = 0; index < m_fields.size(); ++index) {
        QString value = row.at(FirstField + index).toString();
        if (!m_replacement.apply(value))
            continue;
        const QString& field = m_fields.at(index);
        changes.insert(field, value);
        if (field == QLatin1String("filePath")) {
            const QFileInfo file(value);
            changes.insert(QStringLiteral("fileName"), file.fileName());
            changes.insert(QStringLiteral("fileType"), fileTypeOf(file));
        }
    }
    return changes;
}

// To write the changed columns only leaves the same row as to write all of them, and most indexes alone.
Change Replace::changeOf(const RowBatches::Row& row, const QVariantMap& values) const
{
    const QStringList names = values.keys();
    // The scan timestamp is not written along with other fields.
    const bool isWhole = !row.at(IsPlain).toBool() || names.contains(QStringLiteral("scanTimestamp"));
    const qint64 id = row.at(Id).toLongLong();
    MetaData record = isWhole ? fetchMetaData(connection(), tableId(), id) : MetaData();
    const bool isReadable = !isWhole || !record.isNull();
    record.setId(id);
    record.setFilePath(row.at(FilePath).toString());
    for (auto value = values.begin(); value != values.end(); ++value)
        findMetaDataField(value.key())->write(record, value.value());
    return { record, isWhole ? QStringList() : names, isReadable };
}

} // namespace

void runReplace(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QStringList& fields,
    const QString& before, const QString& after, Qt::CaseSensitivity caseSensitivity, const QVariantMap& parameters)
{
    Replace(connection, reply, tableId, fields, { before, after, caseSensitivity }, parameters).run();
}
