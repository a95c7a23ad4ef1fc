// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/transaction.h"

#include <QSqlError>
#include <QSqlQuery>

Transaction::Transaction(const QSqlDatabase& connection)
    : m_connection(connection)
{
}

Transaction::~Transaction()
{
    if (m_active)
        rollback();
}

bool Transaction::begin()
{
    m_active = execute(QStringLiteral("BEGIN TRANSACTION"));
    return m_active;
}

bool Transaction::beginWriting(const QString& tableName)
{
    if (!begin())
        return false;
    if (execute(QStringLiteral("UPDATE %1 SET id=id WHERE 0").arg(tableName)))
        return true;
    const QString errorText = m_errorText;
    rollback();
    m_errorText = errorText;
    return false;
}

bool Transaction::commit()
{
    if (execute(QStringLiteral("COMMIT"))) {
        m_active = false;
        return true;
    }
    // Left open, it would make every later BEGIN fail and swallow every later write.
    const QString errorText = m_errorText;
    rollback();
    m_errorText = errorText;
    return false;
}

bool Transaction::rollback()
{
    m_active = false;
    return execute(QStringLiteral("ROLLBACK"));
}

bool Transaction::execute(const QString& statement)
{
    QSqlQuery query(m_connection);
    if (query.exec(statement))
        return true;
    m_errorText = query.lastError().text();
    return false;
}
