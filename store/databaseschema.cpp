// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/databaseschema.h"

#include "store/fieldcatalogue.h"
#include "store/querycomposer.h"

#include <QDebug>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>

#include <algorithm>

namespace {

// Keep the text of the statements: it is stored in every file, blanks and all.
const char* const createMetaDataTable
    = "CREATE TABLE IF NOT EXISTS %1 (id INTEGER PRIMARY KEY AUTOINCREMENT NOT NULL, "
      "filePath TEXT COLLATE NOCASE UNIQUE NOT NULL, fileName TEXT COLLATE NOCASE NOT NULL, "
      "fileType TEXT COLLATE NOCASE NOT NULL, library TEXT COLLATE NOCASE NOT NULL DEFAULT '', "
      "description TEXT COLLATE NOCASE NOT NULL, duration REAL CHECK (duration > 0.0),rating REAL DEFAULT 1.0,"
      "sampleRate INTEGER CHECK (sampleRate > 0),channelsCount INTEGER CHECK (channelsCount > 0),"
      "bitsPerSample INTEGER CHECK (bitsPerSample > 0),originReference TEXT, artist TEXT, title TEXT, album TEXT, "
      "comments TEXT, genre TEXT, year TEXT, bitrate TEXT, playlist INTEGER DEFAULT 0, "
      "scanTimestamp INTEGER DEFAULT 0)";

const char* const createFullIndex = "CREATE INDEX IF NOT EXISTS %1_%2 ON %1 (%3)";

const char* const createPartialIndex
    = "CREATE INDEX IF NOT EXISTS %1_playlist_%2 ON %1 (playlist, %2) WHERE playlist=1";

const char* const createSettingsTable
    = "CREATE TABLE IF NOT EXISTS Settings (key TEXT PRIMARY KEY, value BLOB) WITHOUT ROWID";

// The columns of each full index, joined with ";". The single columns serve the plain sorted view, those with the time
// stamp the view of the last scan. filePath has an index already, for it is unique.
const char* const fullIndexes[] = {
    "fileName",
    "fileType",
    "library",
    "description",
    "duration",
    "rating",
    "scanTimestamp;filePath",
    "scanTimestamp;fileName",
    "scanTimestamp;fileType",
    "scanTimestamp;library",
    "scanTimestamp;description",
    "scanTimestamp;duration",
    "scanTimestamp;rating",
};

const char* const pragmas[] = {
    "PRAGMA cache_size=3000000",
    "PRAGMA mmap_size=1073741824",
    "PRAGMA page_size = 65536",
};

const QString settingsTableName = QStringLiteral("Settings");

bool executeOrLog(const QSqlDatabase& connection, const QString& statement, const char* failure)
{
    QSqlQuery query(connection);
    if (query.exec(statement))
        return true;
    qCritical().noquote() << failure << query.lastError().text();
    return false;
}

bool createFullIndexes(const QSqlDatabase& connection, const QString& tableName)
{
    return std::all_of(std::begin(fullIndexes), std::end(fullIndexes), [&](const char* specification) {
        const QStringList columns = QString::fromLatin1(specification).split(QLatin1Char(';'));
        const QString statement = QString::fromLatin1(createFullIndex)
                                      .arg(tableName, columns.join(QLatin1Char('_')), columns.join(QLatin1Char(',')));
        return executeOrLog(connection, statement, "Unable to create full index:");
    });
}

bool createPartialIndexes(const QSqlDatabase& connection, const QString& tableName)
{
    const QStringList& fields = sortableFieldNames();
    return std::all_of(fields.begin(), fields.end(), [&](const QString& field) {
        const QString statement = QString::fromLatin1(createPartialIndex).arg(tableName, field);
        return executeOrLog(connection, statement, "Unable to create partial index:");
    });
}

bool installMetaDataTable(const QSqlDatabase& connection, const QString& tableName)
{
    const QString statement = QString::fromLatin1(createMetaDataTable).arg(tableName);
    return executeOrLog(connection, statement, "Unable to create MetaData table:")
        && createFullIndexes(connection, tableName) && createPartialIndexes(connection, tableName);
}

bool installMetaDataTables(const QSqlDatabase& connection)
{
    for (int tableId = 1; tableId <= metaDataTablesCount; ++tableId) {
        if (!installMetaDataTable(connection, metaDataTableName(tableId)))
            return false;
    }
    return true;
}

// Over a thousand times SQLite would wait for the disk, for a file in which nothing is lost yet. The table that comes
// afterwards is written with everything before it, and without that table the file is not taken for a database.
bool installUnsynchronised(const QSqlDatabase& connection)
{
    QSqlQuery query(connection);
    const QString synchronous = QStringLiteral("PRAGMA synchronous");
    const QString previous = query.exec(synchronous) && query.next() ? query.value(0).toString() : QString();
    query.finish();
    if (!previous.isEmpty())
        query.exec(synchronous + QStringLiteral("=OFF"));
    const bool isInstalled = installMetaDataTables(connection);
    if (!previous.isEmpty())
        query.exec(synchronous + QLatin1Char('=') + previous);
    return isInstalled;
}

} // namespace

bool installSchema(const QSqlDatabase& connection)
{
    const bool hasTables = installUnsynchronised(connection);
    return hasTables
        && executeOrLog(connection, QString::fromLatin1(createSettingsTable), "Unable to create Settings table:");
}

bool hasValidSchema(const QSqlDatabase& connection)
{
    const QStringList tables = connection.tables(QSql::Tables);
    for (int tableId = 1; tableId <= metaDataTablesCount; ++tableId) {
        if (!tables.contains(metaDataTableName(tableId)))
            return false;
    }
    return tables.contains(settingsTableName);
}

void applyPragmas(const QSqlDatabase& connection)
{
    for (const char* pragma : pragmas)
        QSqlQuery(connection).exec(QString::fromLatin1(pragma));
}
