// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSqlDatabase>
#include <QString>

/// One SQLite transaction that is rolled back unless it was committed, also after a COMMIT that failed.
///
/// Owner: the stack of one operation. Thread: that of the connection. Every query on the connection must be finished
/// before `commit()` or `rollback()`.
class Transaction final
{
public:
    explicit Transaction(const QSqlDatabase& connection);
    ~Transaction();
    Q_DISABLE_COPY(Transaction)

    /// Executes "BEGIN TRANSACTION"; false with `errorText()` set when it fails.
    bool begin();
    /// Likewise, and takes the file's write lock, waiting for it as long as the connection waits. Without, the first
    /// write takes it; and once something was read, SQLite does not wait, since others may be waiting in turn. The
    /// table is any one that there is; no row of it is touched.
    bool beginWriting(const QString& tableName);
    /// Executes "COMMIT"; after a failure the transaction is rolled back, so that later ones can begin.
    bool commit();
    /// Executes "ROLLBACK".
    bool rollback();
    /// The driver's text of the last failure.
    QString errorText() const { return m_errorText; }

private:
    bool execute(const QString& statement);

    QSqlDatabase m_connection;
    QString m_errorText;
    bool m_active = false;
};
