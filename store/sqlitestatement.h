// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <string_view>
#include <vector>

class QSqlDatabase;
struct sqlite3;
struct sqlite3_stmt;

/// SQLite's own handle of an open connection; null when the driver is not built on the very SQLite that this program
/// is linked with. Borrowed: it lives as long as the connection is open. Thread: that of the connection.
sqlite3* sqliteHandle(const QSqlDatabase& connection);

/// One statement run straight by SQLite, for passes over a whole table: a million rows cost a third of what they do
/// through `QSqlQuery`, which makes a variant, and of every text a copy in UTF-16, for each value read, and has SQLite
/// turn each text that is bound into UTF-8.
///
/// Owner: the stack of one operation. Thread: that of the connection.
class SqliteStatement final
{
public:
    SqliteStatement(sqlite3* handle, const QString& statement);
    ~SqliteStatement();
    Q_DISABLE_COPY(SqliteStatement)

    /// Gives a value to the place of this number, from 1 on, and begins anew.
    void bind(int place, qint64 value);
    /// Likewise a null value, a text, a whole number or a double.
    void bind(int place, const QVariant& value);
    /// Steps to the next row; false after the last one and after a failure.
    bool next();
    /// Runs a statement that gives no rows, and ends it; how many rows it changed, or -1 after a failure.
    int run();
    /// Ends a statement of which not all rows were read: while it runs, indexes of its table cannot be dropped.
    void finish();
    /// True when the statement could not be prepared or a step failed.
    bool hasFailed() const { return m_hasFailed; }

    qint64 integer(int column) const;
    bool isText(int column) const;
    /// UTF-8 as stored; valid until the next step.
    std::string_view text(int column) const;

private:
    sqlite3_stmt* m_statement = nullptr;
    // Of the places from 1 on: they must be there as long as the statement runs.
    std::vector<QByteArray> m_texts;
    // Also after its last row: until it is reset, SQLite takes no values for it.
    bool m_isRunning = false;
    bool m_hasFailed = false;
};
