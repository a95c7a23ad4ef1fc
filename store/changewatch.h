// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <vector>

struct sqlite3;

/// Tells what has happened to one table since it was last asked, so that what was read from it can be kept.
///
/// Rows changed through this connection are noted one by one, a few thousand of them; all that cannot be told so (more
/// rows, a change by another connection to the file, rows that went without a note) makes the verdict `Anything`.
/// Changes that were rolled back may be told as well.
///
/// It takes the connection's one update hook. Owner: IndexedReads. Thread: that of the connection, which must stay open
/// meanwhile. Memory: 8 bytes for each changed row.
class ChangeWatch final
{
public:
    enum class Verdict
    {
        Nothing,
        Rows,
        Anything,
        /// The file cannot be read for the moment.
        Unknown
    };

    explicit ChangeWatch(sqlite3* handle);
    ~ChangeWatch();
    ChangeWatch(const ChangeWatch&) = delete;
    ChangeWatch& operator=(const ChangeWatch&) = delete;

    /// The table to be watched from now on.
    void setTable(const QByteArray& name);
    /// What has changed since the last `settle()`. To be asked within a transaction: what is read after the answer is
    /// then as old as the answer.
    Verdict ask();
    /// The ids of the verdict `Rows`, each at least once.
    const std::vector<qint64>& changedRows() const { return m_changedRows; }
    /// All that the last answer told of has been taken in.
    void settle();

private:
    static void noteChange(void* watch, int operation, const char* database, const char* table, long long rowId);

    sqlite3* m_handle;
    QByteArray m_tableName;
    std::vector<qint64> m_changedRows;
    bool m_hasTooManyChanges = false;
    // Rows of any table, as counted by SQLite and as noted.
    qint64 m_settledChanges = 0;
    qint64 m_notedChanges = 0;
    // Changes with each commit of another connection.
    qint64 m_settledVersion = 0;
    qint64 m_askedVersion = 0;
};
