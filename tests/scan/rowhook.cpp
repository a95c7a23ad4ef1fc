// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/scan/rowhook.h"

#include "store/database.h"
#include "store/operationreply.h"

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>

#include <sqlite3.h>

namespace {

const QStringList events{ "INSERT", "UPDATE", "DELETE" };

QSqlDatabase storeConnection()
{
    return QSqlDatabase::database(QStringLiteral("MetaDatabase"), false);
}

} // namespace

RowHook::RowHook(Database& database, int tableId, int row)
    : RowHook(database, tableId, row, std::function<void()>())
{
}

RowHook::RowHook(Database& database, int tableId, int row, std::function<void()> callback)
    : m_database(database)
    , m_row(row)
    , m_callback(std::move(callback))
{
    registerFunction(true);
    for (const QString& event : events)
        execute(QStringLiteral("CREATE TEMP TRIGGER rowHook%1 BEFORE %1 ON main.MetaData%2 BEGIN SELECT rowHook(); END")
                    .arg(event, QString::number(tableId)));
}

RowHook::~RowHook()
{
    for (const QString& event : events)
        execute(QStringLiteral("DROP TRIGGER temp.rowHook%1").arg(event));
    registerFunction(false);
}

void RowHook::visit(sqlite3_context* context, int /*count*/, sqlite3_value** /*values*/)
{
    auto* hook = static_cast<RowHook*>(sqlite3_user_data(context));
    const int row = hook->m_count++;
    if (row == hook->m_row && hook->m_callback)
        hook->m_callback();
    else if (row == hook->m_row)
        sqlite3_result_error(context, "injected", -1);
}

void RowHook::execute(const QString& statement)
{
    const auto run = [&statement]() {
        QSqlQuery query(storeConnection());
        if (!query.exec(statement))
            qFatal("%s: %s", qPrintable(statement), qPrintable(query.lastError().text()));
    };
    QMetaObject::invokeMethod(&m_database, run, Qt::BlockingQueuedConnection);
}

void RowHook::registerFunction(bool isWanted)
{
    const auto run = [this, isWanted]() {
        const QVariant handle = storeConnection().driver()->handle();
        if (qstrcmp(handle.typeName(), "sqlite3*") != 0)
            qFatal("The driver gives no SQLite handle");
        auto* connection = *static_cast<sqlite3* const*>(handle.constData());
        const int code = sqlite3_create_function(
            connection, "rowHook", 0, SQLITE_UTF8, this, isWanted ? &RowHook::visit : nullptr, nullptr, nullptr);
        if (code != SQLITE_OK)
            qFatal("Cannot register the function: %s", sqlite3_errmsg(connection));
    };
    QMetaObject::invokeMethod(&m_database, run, Qt::BlockingQueuedConnection);
}

RowCancellation::RowCancellation(Database& database, int tableId, int row)
    : m_hook(database, tableId, row, [this]() {
        m_isStarted.acquire();
        m_operation->cancel();
    })
{
}

OperationReply* RowCancellation::watch(OperationReply* operation)
{
    m_operation = operation;
    m_isStarted.release();
    return operation;
}
