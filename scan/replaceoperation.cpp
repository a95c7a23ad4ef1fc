// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/replaceoperation.h"

#include "scan/rowbatches.h"
#include "store/fieldcatalogue.h"
#include "store/metadata.h"
#include "store/metadatafields.h"
#include "store/operationreply.h"
#include "store/recordreader.h"
#include "store/recordwriter.h"
#include "store/transaction.h"
#include "store/transactionstate.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSqlDatabase>

#include <algorithm>
#include <optional>

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

// Neither is written along with the other fields.
bool isIdentity(const QString& field)
{
    return field == QLatin1String("id") || field == QLatin1String("scanTimestamp");
}

/// A record that is to be written, whole or only these fields of it.
struct Change
{
    MetaData record;
    QStringList fields;
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
            value = after;
        else
            value.replace(before, after, caseSensitivity);
        return true;
    }
};

class Replace
{
    Q_DECLARE_TR_FUNCTIONS(Replace)

public:
    Replace(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QStringList& fields,
        const Replacement& replacement, const QVariantMap& parameters)
        : m_connection(connection)
        , m_reply(reply)
        , m_batches(connection, tableId, parameters)
        , m_tableId(tableId)
        , m_replacement(replacement)
    {
        for (const QString& field : fields) {
            if (allFieldNames().contains(field))
                m_fields.append(field);
        }
    }

    void run();

private:
    bool replaceRows();
    QString columns() const;
    bool replaceBatch(const QVector<RowBatches::Row>& rows);
    QVector<Change> changesOf(const QVector<RowBatches::Row>& rows) const;
    QVariantMap changedValues(const RowBatches::Row& row) const;
    Change changeOf(const RowBatches::Row& row, const QVariantMap& values) const;
    MetaData write(const Change& change);
    void finish(Transaction& transaction, bool isComplete);

    const QSqlDatabase& m_connection;
    OperationReply* m_reply;
    RowBatches m_batches;
    // As long as rows are being replaced.
    std::optional<RecordWriter> m_writer;
    int m_tableId;
    // Those of the fields that there are.
    QStringList m_fields;
    Replacement m_replacement;
    int m_replacementsCount = 0;
    QString m_error;
};

void Replace::run()
{
    m_reply->setProgress(0, -1);
    if (!m_batches.count()) {
        m_reply->setError(tr("Unable to get rows count: %1").arg(m_batches.errorText()));
        return;
    }
    m_reply->setProgress(0, m_batches.rowsCount());
    Transaction transaction(m_connection);
    if (!transaction.begin()) {
        m_reply->setError(tr("Unable to begin replace transaction: %1").arg(transaction.errorText()));
        return;
    }
    m_writer.emplace(m_connection, m_tableId, 0, false);
    const bool isComplete = replaceRows();
    m_writer.reset();
    finish(transaction, isComplete);
}

// False when canceled or failed.
bool Replace::replaceRows()
{
    const QString columnNames = columns();
    while (!m_batches.atEnd()) {
        if (m_reply->isCanceled())
            return false;
        QVector<RowBatches::Row> rows;
        if (!m_batches.next(columnNames, rows)) {
            m_error = tr("Unable to select MetaData: %1").arg(m_batches.errorText());
            return false;
        }
        // The commit then fails, and says so.
        if (!replaceBatch(rows) && !isTransactionActive(m_connection))
            return true;
    }
    return !m_reply->isCanceled();
}

QString Replace::columns() const
{
    const QStringList first{ QStringLiteral("id"), QStringLiteral("filePath"), plainRowCondition() };
    return (first + m_fields).join(QStringLiteral(", "));
}

// False when records were refused.
bool Replace::replaceBatch(const QVector<RowBatches::Row>& rows)
{
    const QVector<Change> changes = changesOf(rows);
    // Counted before the write: refused records are reported as warnings, not taken off.
    m_replacementsCount += changes.size();
    QStringList warnings;
    for (const Change& change : changes) {
        const MetaData failed = write(change);
        if (!failed.isNull())
            warnings.append(QStringLiteral("%1: %2").arg(failed.error(), failed.filePath()));
    }
    m_reply->setProgress(m_batches.processedCount(), m_batches.rowsCount());
    m_reply->addWarnings(warnings);
    return warnings.isEmpty();
}

// The record with its error set when it could not be written.
MetaData Replace::write(const Change& change)
{
    if (!change.fields.isEmpty())
        return m_writer->writeFields(change.record, change.fields);
    return m_writer->write(MetaDataList{ change.record }).value(0);
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
            changes.insert(QStringLiteral("fileType"), file.suffix().toLower());
        }
    }
    return changes;
}

// To write the changed columns only leaves the same row as to write all of them, and most indexes alone.
Change Replace::changeOf(const RowBatches::Row& row, const QVariantMap& values) const
{
    const QStringList names = values.keys();
    const bool isWhole = !row.at(IsPlain).toBool() || std::any_of(names.begin(), names.end(), isIdentity);
    const qint64 id = row.at(Id).toLongLong();
    MetaData record = isWhole ? fetchMetaData(m_connection, m_tableId, id) : MetaData();
    record.setId(id);
    record.setFilePath(row.at(FilePath).toString());
    for (auto value = values.begin(); value != values.end(); ++value)
        findMetaDataField(value.key())->write(record, value.value());
    return { record, isWhole ? QStringList() : names };
}

// The reply is ended last: its owner may release it as soon as it has ended.
void Replace::finish(Transaction& transaction, bool isComplete)
{
    if (!isComplete) {
        transaction.rollback();
        m_reply->setError(m_error.isEmpty() ? tr("Canceled") : m_error);
    } else if (!transaction.commit()) {
        m_reply->setError(tr("Unable to commit replace transaction: %1").arg(transaction.errorText()));
    } else {
        m_reply->setResult(QStringLiteral("replacementsCount"), m_replacementsCount);
        m_reply->finish();
    }
}

} // namespace

void runReplace(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QStringList& fields,
    const QString& before, const QString& after, Qt::CaseSensitivity caseSensitivity, const QVariantMap& parameters)
{
    Replace(connection, reply, tableId, fields, { before, after, caseSensitivity }, parameters).run();
}
