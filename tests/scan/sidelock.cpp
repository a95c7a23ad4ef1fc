// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/scan/sidelock.h"

#include <QSqlError>
#include <QUuid>

namespace {

QString lockingStatement(SideLock::Kind kind)
{
    switch (kind) {
    case SideLock::Kind::Exclusive:
        return QStringLiteral("BEGIN EXCLUSIVE");
    case SideLock::Kind::Writing:
        return QStringLiteral("BEGIN IMMEDIATE");
    default:
        // A statement whose rows are not all fetched keeps its shared lock.
        return QStringLiteral("SELECT name FROM sqlite_master");
    }
}

} // namespace

SideLock::SideLock(const QString& databaseFilePath, Kind kind)
    : m_connection(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QUuid::createUuid().toString()))
{
    m_connection.setDatabaseName(databaseFilePath);
    if (!m_connection.open())
        qFatal("Cannot open a second connection: %s", qPrintable(m_connection.lastError().text()));
    m_query.emplace(m_connection);
    m_query->setForwardOnly(true);
    if (!m_query->exec(lockingStatement(kind)) || (kind == Kind::Reading && !m_query->next()))
        qFatal("Cannot lock the database: %s", qPrintable(m_query->lastError().text()));
}

SideLock::~SideLock()
{
    const QString name = m_connection.connectionName();
    m_query.reset();
    m_connection.close();
    m_connection = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}
