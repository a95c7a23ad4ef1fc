// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/replaceoperation.h"

#include "scan/rowbatches.h"
#include "store/metadata.h"
#include "store/operationreply.h"
#include "store/recordwriter.h"
#include "store/transaction.h"
#include "store/transactionstate.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlRecord>

namespace {

QVariantMap fieldsOf(const QSqlRecord& row)
{
    QVariantMap fields;
    for (int column = 0; column < row.count(); ++column)
        fields.insert(row.fieldName(column), row.value(column));
    return fields;
}

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
        , m_fields(fields)
        , m_replacement(replacement)
    {
    }

    void run();

private:
    bool replaceRows();
    bool replaceBatch(const QVector<QSqlRecord>& rows);
    MetaDataList changedRecords(const QVector<QSqlRecord>& rows) const;
    QVariantMap changedFields(const QVariantMap& row) const;
    void finish(Transaction& transaction, bool isComplete);

    const QSqlDatabase& m_connection;
    OperationReply* m_reply;
    RowBatches m_batches;
    int m_tableId;
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
    const bool isComplete = replaceRows();
    finish(transaction, isComplete);
}

// False when canceled or failed.
bool Replace::replaceRows()
{
    while (!m_batches.atEnd()) {
        if (m_reply->isCanceled())
            return false;
        QVector<QSqlRecord> rows;
        if (!m_batches.next(QStringLiteral("*"), rows)) {
            m_error = tr("Unable to select MetaData: %1").arg(m_batches.errorText());
            return false;
        }
        // The commit then fails, and says so.
        if (!replaceBatch(rows) && !isTransactionActive(m_connection))
            return true;
    }
    return !m_reply->isCanceled();
}

// False when records were refused.
bool Replace::replaceBatch(const QVector<QSqlRecord>& rows)
{
    const MetaDataList records = changedRecords(rows);
    // Counted before the write: refused records are reported as warnings, not taken off.
    m_replacementsCount += records.size();
    const MetaDataList failedRecords = writeMetaData(m_connection, m_tableId, records, 0, false);
    QStringList warnings;
    for (const MetaData& record : failedRecords)
        warnings.append(QStringLiteral("%1: %2").arg(record.error(), record.filePath()));
    m_reply->setProgress(m_batches.processedCount(), m_batches.rowsCount());
    m_reply->addWarnings(warnings);
    return warnings.isEmpty();
}

MetaDataList Replace::changedRecords(const QVector<QSqlRecord>& rows) const
{
    MetaDataList records;
    for (const QSqlRecord& row : rows) {
        QVariantMap fields = fieldsOf(row);
        const QVariantMap changes = changedFields(fields);
        if (changes.isEmpty())
            continue;
        for (auto change = changes.cbegin(); change != changes.cend(); ++change)
            fields.insert(change.key(), change.value());
        records.append(MetaData(fields));
    }
    return records;
}

QVariantMap Replace::changedFields(const QVariantMap& row) const
{
    QVariantMap changes;
    for (const QString& field : m_fields) {
        if (!row.contains(field))
            continue;
        QString value = row.value(field).toString();
        if (!m_replacement.apply(value))
            continue;
        changes.insert(field, value);
        if (field == QLatin1String("filePath")) {
            const QFileInfo file(value);
            changes.insert(QStringLiteral("fileName"), file.fileName());
            changes.insert(QStringLiteral("fileType"), file.suffix().toLower());
        }
    }
    return changes;
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
