// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/databasecheck.h"

#include "app/databasefiles.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUrl>
#include <QUuid>
#include <QVariant>

namespace {

// What the answer of a query to a database tells, on a connection of its own; empty when it tells nothing.
template <typename Answer>
QString findingThrough(
    const QString& databaseName, const QString& options, const QString& statement, const Answer& answer)
{
    const QString name = QUuid::createUuid().toString();
    QString finding;
    {
        QSqlDatabase connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        connection.setConnectOptions(options);
        connection.setDatabaseName(databaseName);
        if (connection.open()) {
            QSqlQuery query(connection);
            finding = query.exec(statement) && query.next() ? answer(query) : query.lastError().text();
        } else {
            finding = connection.lastError().text();
        }
    }
    QSqlDatabase::removeDatabase(name);
    return finding;
}

} // namespace

QString damageOfDatabase(const QString& filePath)
{
    // A file that nobody writes needs no locks, and none of the files that SQLite would keep beside it.
    return findingThrough(QUrl::fromLocalFile(filePath).toString(QUrl::FullyEncoded) + QLatin1String("?immutable=1"),
        QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_OPEN_URI"), QStringLiteral("PRAGMA quick_check(1)"),
        [](const QSqlQuery& query) {
            const QString finding = query.value(0).toString();
            return finding == QLatin1String("ok") ? QString() : finding.simplified();
        });
}

QString rollBackInCopy(const QString& sourceFilePath, const QString& copyFilePath)
{
    const QString journal = DatabaseFiles::journalPath(DatabaseFiles::fileBehindLinks(sourceFilePath));
    if (!QFileInfo::exists(journal))
        return {};
    const QString copiedJournal = DatabaseFiles::journalPath(copyFilePath);
    if (!QFile::copy(journal, copiedJournal))
        return QCoreApplication::translate("DatabaseCheck", "Unable to copy file: %1").arg(journal);
    // SQLite rolls back before it reads, and removes the journal then, unless there is nothing to be rolled back.
    QString failure = findingThrough(
        copyFilePath, {}, QStringLiteral("PRAGMA schema_version"), [](const QSqlQuery&) { return QString(); });
    QFile::remove(copiedJournal);
    return failure;
}
