// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/store/connectionfixture.h"

#include "store/databaseschema.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>

TestConnection::TestConnection(const QString& filePath)
    : m_name(QUuid::createUuid().toString())
{
    QSqlDatabase newConnection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
    newConnection.setDatabaseName(filePath);
    if (!newConnection.open())
        qFatal("Cannot open: %s", qPrintable(newConnection.lastError().text()));
}

TestConnection::~TestConnection()
{
    connection().close();
    QSqlDatabase::removeDatabase(m_name);
}

QSqlDatabase TestConnection::connection() const
{
    return QSqlDatabase::database(m_name, false);
}

QVariantList TestConnection::column(const QString& statement) const
{
    QSqlQuery query(connection());
    if (!query.exec(statement))
        qFatal("Cannot run %s: %s", qPrintable(statement), qPrintable(query.lastError().text()));
    QVariantList values;
    while (query.next())
        values.append(query.value(0));
    return values;
}

QVariant TestConnection::value(const QString& statement) const
{
    const QVariantList values = column(statement);
    return values.isEmpty() ? QVariant() : values.first();
}

QStringList TestConnection::queryPlan(const QString& statement) const
{
    QSqlQuery query(connection());
    if (!query.exec(QLatin1String("EXPLAIN QUERY PLAN ") + statement))
        qFatal("Cannot explain %s: %s", qPrintable(statement), qPrintable(query.lastError().text()));
    QStringList lines;
    while (query.next())
        lines.append(query.value(QStringLiteral("detail")).toString());
    return lines;
}

QString TestConnection::execute(const QString& statement) const
{
    QSqlQuery query(connection());
    return query.exec(statement) ? QString() : query.lastError().text();
}

ConnectionFixture::ConnectionFixture(Schema schema)
    : m_connection(filePath())
{
    // A test needs no protection from a loss of power.
    execute(QStringLiteral("PRAGMA synchronous=OFF"));
    if (schema == Schema::Installed && !installSchema(connection()))
        qFatal("Cannot install the schema");
}
