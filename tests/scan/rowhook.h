// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSemaphore>
#include <QString>

#include <atomic>
#include <functional>

class Database;
class OperationReply;
struct sqlite3_context;
struct sqlite3_value;

/// Steps in when the store's own connection is about to write one certain row of a table: it makes that one statement
/// fail, or calls back, for example to cancel the operation at exactly that row.
///
/// Inserts, updates and deletes count alike, from 0. Owner: a test; made while no operation runs and destroyed before
/// the store. Thread: the test's; the callback is called on the store's thread.
class RowHook final
{
public:
    /// Makes the statement that writes this row fail with "injected".
    RowHook(Database& database, int tableId, int row);
    /// Calls back before this row is written, and lets it be written.
    RowHook(Database& database, int tableId, int row, std::function<void()> callback);
    ~RowHook();
    Q_DISABLE_COPY(RowHook)

    /// True once the row has been reached.
    bool wasHit() const { return m_count > m_row; }
    /// How many rows were about to be written so far.
    int count() const { return m_count; }

private:
    static void visit(sqlite3_context* context, int count, sqlite3_value** values);
    void execute(const QString& statement);
    void registerFunction(bool isWanted);

    Database& m_database;
    int m_row;
    std::function<void()> m_callback;
    std::atomic_int m_count{ 0 };
};

/// Cancels one operation when it is about to write one certain row; that row is still written.
///
/// The operation may reach the row before the test has its reply, and waits there for `watch()`. Owner and thread: as
/// for the hook.
class RowCancellation final
{
public:
    RowCancellation(Database& database, int tableId, int row);

    /// The operation that is to be canceled, started after this was made; gives it back.
    OperationReply* watch(OperationReply* operation);

    bool wasHit() const { return m_hook.wasHit(); }
    int count() const { return m_hook.count(); }

private:
    OperationReply* m_operation = nullptr;
    QSemaphore m_isStarted;
    RowHook m_hook;
};
