// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/readoperations.h"

#include "store/fieldcatalogue.h"
#include "store/operationreply.h"
#include "store/querycomposer.h"
#include "store/recordreader.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

namespace {

struct ReadOperations
{
    Q_DECLARE_TR_FUNCTIONS(Database)
};

QVariantList readColumn(QSqlQuery& query, const QString& fieldName)
{
    const int index = query.record().indexOf(fieldName);
    QVariantList values;
    while (query.next())
        values.append(query.value(index));
    return values;
}

MetaDataList readRecords(QSqlQuery& query)
{
    const RecordReader reader(query);
    MetaDataList items;
    while (query.next())
        items.append(reader.read());
    return items;
}

// True for a row that comes before the bound record. It is ascending for 0 only, whereas the order of a page is
// descending for 1 only; callers give no other value.
QString composePrecedence(const QString& sortField, const QVariantMap& parameters)
{
    const bool isAscending = parameters.value(QStringLiteral("sortOrder")).toInt() == Qt::AscendingOrder;
    return QStringLiteral("((%1 %2 :sortFieldTerminator) OR ((%1 = :sortFieldTerminator) AND (id %2 :id)))")
        .arg(sortField, isAscending ? QStringLiteral("<") : QStringLiteral(">"));
}

// With the values that tell the record's place; `sortField` is empty where its id does.
bool executeForRecord(QSqlQuery& query, const MetaData& record, const QString& sortField)
{
    query.bindValue(QStringLiteral(":id"), record.id());
    if (!sortField.isEmpty())
        query.bindValue(QStringLiteral(":sortFieldTerminator"), record.toVariantMap().value(sortField));
    return query.exec();
}

} // namespace

void runGetRowsCount(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QVariantMap& parameters)
{
    const QString fault = lookupFault(parameters);
    QSqlQuery query(connection);
    query.setForwardOnly(true);
    const QString statement = composeSelect(tableId, QStringLiteral("COUNT(*)"), filterParameters(parameters));
    if (!fault.isEmpty() || !query.exec(statement) || !query.next()) {
        reply->setError(ReadOperations::tr("Unable to get rows count: %1").arg(fault + query.lastError().text()));
        return;
    }
    reply->setResult(QStringLiteral("rowsCount"), query.value(0).toInt());
    reply->finish();
}

void runPullMetaData(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QVariantMap& parameters)
{
    const QString singleField = parameters.value(QStringLiteral("singleField")).toString();
    if (!singleField.isEmpty() && !allFieldNames().contains(singleField)) {
        reply->setError(ReadOperations::tr("Invalid single field specified"));
        return;
    }
    const QString columns = singleField.isEmpty() ? QStringLiteral("*") : singleField;
    const QString fault = lookupFault(parameters);
    QSqlQuery query(connection);
    query.setForwardOnly(true);
    if (!fault.isEmpty() || !query.prepare(composeSelect(tableId, columns, parameters)) || !query.exec()) {
        reply->setError(ReadOperations::tr("Unable to select MetaData: %1").arg(fault + query.lastError().text()));
        return;
    }
    const QVariant items
        = singleField.isEmpty() ? QVariant::fromValue(readRecords(query)) : QVariant(readColumn(query, singleField));
    // A row that cannot be read ends the rows as their end does.
    if (query.lastError().isValid()) {
        reply->setError(ReadOperations::tr("Unable to select MetaData: %1").arg(query.lastError().text()));
        return;
    }
    reply->setResult(QStringLiteral("items"), items);
    reply->finish();
}

void runLookupMetaDataRow(const QSqlDatabase& connection, OperationReply* reply, int tableId, qint64 metaDataId,
    const QVariantMap& parameters)
{
    const MetaData record = fetchMetaData(connection, tableId, metaDataId);
    if (record.isNull()) {
        reply->setError(ReadOperations::tr("Unable to find MetaData"));
        return;
    }
    const QString sortField = parameters.value(QStringLiteral("sortField")).toString();
    const bool isSorted = sortableFieldNames().contains(sortField);
    QStringList conditions = composeConditions(tableId, parameters);
    conditions.append(isSorted ? composePrecedence(sortField, parameters) : QStringLiteral("(id < :id)"));

    QSqlQuery query(connection);
    query.setForwardOnly(true);
    const QString statement
        = QLatin1String("SELECT COUNT(*) FROM ") + metaDataTableName(tableId) + composeWhere(conditions);
    const QString fault = lookupFault(parameters);
    if (!fault.isEmpty() || !query.prepare(statement)
        || !executeForRecord(query, record, isSorted ? sortField : QString())) {
        reply->setError(ReadOperations::tr("Unable to find MetaData: %1").arg(fault + query.lastError().text()));
        return;
    }
    if (!query.next()) {
        reply->setError(ReadOperations::tr("Unable to find MetaData"));
        return;
    }
    reply->setResult(QStringLiteral("row"), query.value(0).toInt());
    reply->finish();
}
