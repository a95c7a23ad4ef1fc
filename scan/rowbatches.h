// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <QVector>

/// Walks the rows of a table, or those that a view shows, in about ten batches in the order of their ids.
///
/// Each batch begins behind the last id of the one before, so that rows that leave the view while they are being
/// changed neither end the walk early nor push others out of it.
///
/// Owner: the stack of one operation. Thread: that of the connection.
class RowBatches final
{
public:
    /// The values of the columns that were asked for, in their order.
    using Row = QVector<QVariant>;

    /// Of `parameters` only the filters count (see store/querycomposer.h).
    RowBatches(const QSqlDatabase& connection, int tableId, const QVariantMap& parameters);

    /// Counts the rows and fixes the size of the batches; call it first. False with `errorText()` set when it fails.
    bool count();
    /// Reads the next batch; `columns` must begin with "id". False with `errorText()` set when it fails.
    bool next(const QString& columns, QVector<Row>& rows);

    /// True when the last batch was not full or as many rows as were counted have been read.
    bool atEnd() const;
    int rowsCount() const { return m_rowsCount; }
    int processedCount() const { return m_processedCount; }
    int batchSize() const { return m_batchSize; }
    QString errorText() const { return m_errorText; }

private:
    QString statement(const QString& columns) const;

    QSqlDatabase m_connection;
    int m_tableId;
    QVariantMap m_filters;
    int m_rowsCount = 0;
    int m_batchSize = 0;
    int m_processedCount = 0;
    qint64 m_lastId;
    bool m_isLastBatchFull = true;
    QString m_errorText;
};
