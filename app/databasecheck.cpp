// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/databasecheck.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUrl>
#include <QUuid>
#include <QVariant>

namespace {

QString damageThrough(QSqlDatabase& connection)
{
    if (!connection.open())
        return connection.lastError().text();
    QSqlQuery query(connection);
    if (!query.exec(QStringLiteral("PRAGMA quick_check(1)")) || !query.next())
        return query.lastError().text();
    const QString finding = query.value(0).toString();
    return finding == QLatin1String("ok") ? QString() : finding.simplified();
}

} // namespace

QString damageOfDatabase(const QString& filePath)
{
    const QString name = QUuid::createUuid().toString();
    QString damage;
    {
        QSqlDatabase connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        // A file that nobody writes needs no locks, and none of the files that SQLite would keep beside it.
        connection.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_OPEN_URI"));
        connection.setDatabaseName(
            QUrl::fromLocalFile(filePath).toString(QUrl::FullyEncoded) + QLatin1String("?immutable=1"));
        damage = damageThrough(connection);
    }
    QSqlDatabase::removeDatabase(name);
    return damage;
}
