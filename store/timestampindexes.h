// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>
#include <vector>

struct sqlite3;

/// The indexes of one table that change with a scan time stamp: taken away while very many rows get another one, and
/// made anew in the end. To sort a whole table costs less than to move each row, whose places lie far apart.
///
/// The indexes after them are made anew as well, so that all keep their order, which is part of how SQLite chooses one
/// for a query; each keeps its name and text. It opens no transaction: it is to be used within one.
///
/// Owner: the stack of one operation. Thread: that of the connection.
class TimestampIndexes final
{
public:
    TimestampIndexes(sqlite3* handle, const QString& tableName);

    /// Stops at one that cannot be dropped, for example because a statement on the table is running, and when it is
    /// canceled; the others stay and are written row by row.
    void drop(const std::function<bool()>& isCanceled);
    /// Makes those anew that were dropped. False after a failure, or when it was canceled between two of them: the
    /// transaction must then be rolled back.
    bool create(const std::function<bool()>& isCanceled);

private:
    struct Index
    {
        QString name;
        QString creation;
    };

    std::vector<Index> read() const;

    sqlite3* m_handle;
    QString m_tableName;
    std::vector<Index> m_dropped;
};
