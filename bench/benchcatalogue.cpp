// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/benchcatalogue.h"

#include "store/operationreply.h"
#include "store/querycomposer.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace {

const char* const fillStatement
    = "INSERT INTO %1 (filePath, fileName, fileType, library, description, duration, rating, sampleRate, "
      "channelsCount, bitsPerSample, playlist, scanTimestamp) "
      "WITH RECURSIVE numbers(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM numbers WHERE i + 1 < %2) "
      "SELECT printf('/sounds/%08d.wav', i), printf('%08d.wav', i), 'wav', 'Library ' || (i % 100), 'Sound ' || i, "
      "1 + i % 600, i % 1000, 48000, 2, 16, i % 1000 = 0, 1000 FROM numbers";

void execute(QSqlDatabase& connection, const QString& statement)
{
    QSqlQuery query(connection);
    if (!query.exec(statement))
        qFatal("%s: %s", qPrintable(statement), qPrintable(query.lastError().text()));
}

QStringList column(QSqlDatabase& connection, const QString& statement)
{
    QSqlQuery query(connection);
    if (!query.exec(statement))
        qFatal("%s: %s", qPrintable(statement), qPrintable(query.lastError().text()));
    QStringList values;
    while (query.next())
        values.append(query.value(0).toString());
    return values;
}

void fill(const QString& filePath)
{
    const QString name = QStringLiteral("BenchCatalogue");
    {
        QSqlDatabase connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        connection.setDatabaseName(filePath);
        if (!connection.open())
            qFatal("Cannot open %s", qPrintable(filePath));
        execute(connection, QStringLiteral("PRAGMA synchronous=OFF"));
        execute(connection, QStringLiteral("BEGIN"));
        for (const int rows : { BenchCatalogue::smallRows, BenchCatalogue::largeRows }) {
            const int tableId = BenchCatalogue::tableOf(rows);
            const QString statement
                = QString::fromLatin1(fillStatement).arg(metaDataTableName(tableId), QString::number(rows));
            BenchCatalogue::fillTable(connection, tableId, statement);
        }
        execute(connection, QStringLiteral("COMMIT"));
    }
    QSqlDatabase::removeDatabase(name);
}

class Catalogue
{
public:
    Catalogue()
        : m_database(m_folder.filePath(QStringLiteral("bench.dat")))
    {
        m_database.moveToThread(&m_thread);
        m_thread.start();
        open();
        m_database.close();
        fill(m_database.databaseFilePath());
        open();
    }
    ~Catalogue()
    {
        m_database.close();
        m_thread.quit();
        m_thread.wait();
    }
    Q_DISABLE_COPY(Catalogue)

    Database& database() { return m_database; }

private:
    void open()
    {
        if (!m_database.open())
            qFatal("Cannot open the store: %s", qPrintable(m_database.lastError()));
    }

    QTemporaryDir m_folder;
    QThread m_thread;
    Database m_database;
};

std::unique_ptr<Catalogue>& catalogue()
{
    static std::unique_ptr<Catalogue> instance;
    return instance;
}

} // namespace

int BenchCatalogue::tableOf(qint64 rows)
{
    return rows == smallRows ? 1 : 2;
}

// The indexes are made again afterwards: sorting a million rows is much quicker than inserting each.
void BenchCatalogue::fillTable(QSqlDatabase& connection, int tableId, const QString& insertStatement)
{
    const QString indexes
        = QStringLiteral("FROM sqlite_master WHERE type='index' AND sql IS NOT NULL AND tbl_name='%1'")
              .arg(metaDataTableName(tableId));
    const QStringList creations = column(connection, "SELECT sql " + indexes);
    const QStringList names = column(connection, "SELECT name " + indexes);
    for (const QString& name : names)
        execute(connection, "DROP INDEX " + name);
    execute(connection, insertStatement);
    for (const QString& creation : creations)
        execute(connection, creation);
}

Database& BenchCatalogue::database()
{
    if (!catalogue())
        catalogue() = std::make_unique<Catalogue>();
    return catalogue()->database();
}

void BenchCatalogue::close()
{
    catalogue().reset();
}

std::unique_ptr<OperationReply> BenchCatalogue::await(OperationReply* reply)
{
    std::unique_ptr<OperationReply> owned(reply);
    owned->waitForFinished();
    if (owned->hasError())
        qFatal("Operation failed: %s", qPrintable(owned->errorString()));
    return owned;
}
