// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/metadata.h"
#include "store/sqlitestatement.h"
#include "store/unchangedrows.h"

#include <QHash>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

/// Inserts or updates records in one table, with statements that are prepared once each.
///
/// A record with an id updates that row; one without is inserted with `scanTimestamp` (ms since the epoch, UTC) or,
/// with `lookupByFilePath`, updates the row of the same path and gives it that time stamp; where nothing else has
/// changed, the time stamp is all that is written, and only by `finish()`. A record that carries an error is not
/// written. Opens no transaction of its own.
///
/// Owner: the stack of one operation; it must be gone before the transaction ends. Thread: that of the connection.
class RecordWriter final
{
public:
    RecordWriter(const QSqlDatabase& connection, int tableId, qint64 scanTimestamp, bool lookupByFilePath);
    Q_DISABLE_COPY(RecordWriter)

    /// Returns the records that could not be written, each with its error text set; may be called again and again.
    MetaDataList write(const MetaDataList& items);
    /// Gives the time stamp to the rows that were found unchanged; to be called once, after the last record. A time
    /// stamp that is refused is reported: the records of such rows are returned, as above. Without `lookupByFilePath`
    /// there are none.
    MetaDataList finish(const std::function<bool()>& isCanceled = []() { return false; });
    /// SQLite's text of a failure of `finish()` as a whole, else empty. After one, and when `finish()` was canceled on
    /// the way, the transaction must be rolled back.
    QString finishError() const { return m_finishError; }
    /// Writes only these fields of a record that has an id: the record with its error text set when they could not be
    /// written, else a null record. The fields are any but "id" and "scanTimestamp".
    MetaData writeFields(const MetaData& item, const QStringList& fields);

private:
    struct KnownRow
    {
        qint64 id = 0;
        bool isUnchanged = false;
    };

    MetaData write(const MetaData& item);
    MetaData failed(const MetaData& item) const;
    void prepare(QSqlQuery& query, const QString& statement);
    KnownRow findKnownRow(const MetaData& item);
    qint64 findByFilePath(const QString& filePath);
    bool compareWithRow(const MetaData& item, KnownRow& row);
    bool insert(const MetaData& item);
    bool update(const MetaData& item, qint64 id);
    bool writeByFilePath(const MetaData& item);
    bool rescan(const MetaData& item, qint64 id);
    bool execute(QSqlQuery& query);
    void noteFailure(bool isConstraint);

    QSqlDatabase m_connection;
    int m_tableId;
    QString m_tableName;
    bool m_wasInTransaction;
    bool m_isTransactionLost = false;
    bool m_wasLastKnown = false;
    QSqlQuery m_update;
    QSqlQuery m_insert;
    QSqlQuery m_find;
    QSqlQuery m_rescan;
    // By the names of the fields that each writes.
    QHash<QStringList, QSqlQuery> m_fieldUpdates;
    qint64 m_scanTimestamp;
    bool m_lookupByFilePath;
    // Null where SQLite's own handle cannot be used or is not needed; all rows are written whole then.
    sqlite3* m_handle;
    std::optional<SqliteStatement> m_comparison;
    std::optional<UnchangedRows> m_unchangedRows;
    QString m_errorText;
    QString m_finishError;
};

/// Writes one list of records and finishes; see `RecordWriter`. When that fails as a whole, all records are returned.
MetaDataList writeMetaData(const QSqlDatabase& connection, int tableId, const MetaDataList& items, qint64 scanTimestamp,
    bool lookupByFilePath);
