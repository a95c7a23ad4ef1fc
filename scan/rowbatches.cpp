// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/rowbatches.h"

#include "store/querycomposer.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringList>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr int smallestBatch = 50;
constexpr int largestBatch = 10000;
constexpr int batchesOfTable = 10;

} // namespace

RowBatches::RowBatches(const QSqlDatabase& connection, int tableId, const QVariantMap& parameters)
    : m_connection(connection)
    , m_tableId(tableId)
    , m_filters(filterParameters(parameters))
    , m_lastId(std::numeric_limits<qint64>::min())
{
}

bool RowBatches::count()
{
    m_errorText = lookupFault(m_filters);
    QSqlQuery query(m_connection);
    query.setForwardOnly(true);
    if (!m_errorText.isEmpty() || !query.exec(composeSelect(m_tableId, QStringLiteral("COUNT(*)"), m_filters))
        || !query.next()) {
        m_errorText += query.lastError().text();
        return false;
    }
    m_rowsCount = query.value(0).toInt();
    m_batchSize = std::clamp(m_rowsCount / batchesOfTable, smallestBatch, largestBatch);
    return true;
}

bool RowBatches::next(const QString& columns, QVector<Row>& rows)
{
    QSqlQuery query(m_connection);
    query.setForwardOnly(true);
    if (!query.exec(statement(columns))) {
        m_errorText = query.lastError().text();
        return false;
    }
    rows.clear();
    const int columnsCount = query.record().count();
    while (query.next()) {
        Row row(columnsCount);
        for (int column = 0; column < columnsCount; ++column)
            row[column] = query.value(column);
        rows.append(std::move(row));
    }
    if (query.lastError().isValid()) {
        m_errorText = query.lastError().text();
        return false;
    }
    if (!rows.isEmpty())
        m_lastId = rows.constLast().constFirst().toLongLong();
    m_processedCount += rows.size();
    m_isLastBatchFull = rows.size() == m_batchSize;
    return true;
}

bool RowBatches::atEnd() const
{
    return !m_isLastBatchFull || m_processedCount >= m_rowsCount;
}

QString RowBatches::statement(const QString& columns) const
{
    // The number stands in the text because a lookup may hold anything, also what looks like a placeholder.
    QStringList conditions = composeConditions(m_tableId, m_filters);
    conditions.append(QStringLiteral("(id > %1)").arg(m_lastId));
    return QStringLiteral("SELECT %1 FROM %2 WHERE %3 ORDER BY id LIMIT %4")
        .arg(columns, metaDataTableName(m_tableId), conditions.join(QStringLiteral(" AND ")),
            QString::number(m_batchSize));
}
