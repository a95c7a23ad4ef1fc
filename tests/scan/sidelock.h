// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

#include <optional>

/// A second connection to a database file that holds a lock on it, as another program would.
///
/// Owner: a test. Thread: its creator's.
class SideLock final
{
public:
    enum class Kind
    {
        /// Others may read and begin to write, but not commit.
        Reading,
        /// Others may read, but not write.
        Writing,
        /// Others may not even read.
        Exclusive
    };

    SideLock(const QString& databaseFilePath, Kind kind);
    /// Releases the lock.
    ~SideLock();
    Q_DISABLE_COPY(SideLock)

private:
    QSqlDatabase m_connection;
    std::optional<QSqlQuery> m_query;
};
