// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>

namespace {

QVariantList runStatement(const QString& databaseFilePath, const QString& connectionName, const QString& statement)
{
    QSqlDatabase connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName);
    connection.setDatabaseName(databaseFilePath);
    if (!connection.open())
        qFatal("Cannot open %s: %s", qPrintable(databaseFilePath), qPrintable(connection.lastError().text()));
    QSqlQuery query(connection);
    query.setForwardOnly(true);
    if (!query.exec(statement))
        qFatal("Cannot run %s: %s", qPrintable(statement), qPrintable(query.lastError().text()));
    QVariantList values;
    while (query.next())
        values.append(query.value(0));
    return values;
}

} // namespace

void TestSupport::writeFile(const QString& path, const QByteArray& contents)
{
    QFileInfo(path).dir().mkpath(QStringLiteral("."));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        qFatal("Cannot write %s: %s", qPrintable(path), qPrintable(file.errorString()));
}

QByteArray TestSupport::contents(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("Cannot read %s: %s", qPrintable(path), qPrintable(file.errorString()));
    return file.readAll();
}

QVariantList TestSupport::firstColumn(const QString& databaseFilePath, const QString& statement)
{
    const QString connectionName = QUuid::createUuid().toString();
    const QVariantList values = runStatement(databaseFilePath, connectionName, statement);
    QSqlDatabase::removeDatabase(connectionName);
    return values;
}

QVariant TestSupport::firstValue(const QString& databaseFilePath, const QString& statement)
{
    const QVariantList values = firstColumn(databaseFilePath, statement);
    return values.isEmpty() ? QVariant() : values.first();
}
