// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>
#include <vector>

struct sqlite3;

/// The rows of one table that a scan has found as they were: noted one by one, and in the end given the scan's time
/// stamp all at once. Of a large part of a table that is several times quicker than row by row, since the indexes that
/// change with it can be made anew (see TimestampIndexes).
///
/// Owner: RecordWriter, made after the transaction has begun. Thread: that of the connection. Memory: 8 bytes a row.
class UnchangedRows final
{
public:
    /// A row that was refused the time stamp, for a constraint (a trigger's refusal is one) or for another reason.
    struct Failure
    {
        qint64 id;
        bool isConstraint;
    };

    UnchangedRows(sqlite3* handle, const QString& tableName);

    void add(qint64 id) { m_ids.push_back(id); }
    /// Gives all of them the time stamp, in ms since the epoch (UTC), save those of `failures()`. False when SQLite
    /// gave up the transaction or an index could not be made anew, and when it was canceled on the way: the transaction
    /// must then be rolled back. It opens none; without one, the rows are written some at a time.
    bool touch(qint64 scanTimestamp, const std::function<bool()>& isCanceled);
    const std::vector<Failure>& failures() const { return m_failures; }

private:
    bool isTransactionLost() const;
    bool areWorthNewIndexes() const;
    bool touchEach(qint64 scanTimestamp, const std::function<bool()>& isCanceled);

    sqlite3* m_handle;
    QString m_tableName;
    bool m_isInTransaction;
    std::vector<qint64> m_ids;
    std::vector<Failure> m_failures;
};
