// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/cataloguefiles.h"

#include "store/sqlitestatement.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>

#include <sqlite3.h>

void makeCatalogue(const QString& path, const QString& name, int records)
{
    TestSupport::StoreFixture store;
    store.open();
    MetaDataList items;
    for (int number = 0; number < records; ++number)
        items.append(TestSupport::sampleRecord(QStringLiteral("/%1/%2.wav").arg(name, QString::number(number))));
    store.insert(1, items);
    // The expected number goes along, so that a record that got lost shows.
    store.insert(2, MetaDataList{ TestSupport::sampleRecord(QStringLiteral("/records/%1").arg(records)) });
    store.destroy();
    if (!QFile::copy(store.filePath(), path))
        qFatal("Cannot make %s", qPrintable(path));
}

void damagePagesOf(const QString& path, const QStringList& names)
{
    using TestSupport::firstValue;
    const qint64 size = firstValue(path, QStringLiteral("PRAGMA page_size")).toLongLong();
    const QString statement = QStringLiteral("SELECT rootpage FROM sqlite_master WHERE name='%1'");
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite))
        qFatal("Cannot write %s", qPrintable(path));
    for (const QString& name : names) {
        const qint64 page = firstValue(path, statement.arg(name)).toLongLong();
        if (page < 2 || !file.seek((page - 1) * size) || file.write(QByteArray(int(size), '\x5a')) != size)
            qFatal("Cannot damage %s", qPrintable(name));
    }
}

void copyInTheMiddleOfAChange(const QString& path, const QString& copyPath)
{
    const QString name = QStringLiteral("change");
    {
        QSqlDatabase connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        connection.setDatabaseName(path);
        bool isDone = connection.open();
        QSqlQuery query(connection);
        for (const char* statement : { "BEGIN", "UPDATE MetaData1 SET filePath='/changed' || filePath" })
            isDone = isDone && query.exec(QLatin1String(statement));
        // As when there is no room in memory for what has been changed.
        isDone = isDone && sqlite3_db_cacheflush(sqliteHandle(connection)) == SQLITE_OK;
        for (const char* suffix : { "", "-journal" })
            isDone = isDone && QFile::copy(path + QLatin1String(suffix), copyPath + QLatin1String(suffix));
        isDone = isDone && query.exec(QStringLiteral("ROLLBACK"));
        if (!isDone)
            qFatal("Cannot change %s", qPrintable(path));
    }
    QSqlDatabase::removeDatabase(name);
}

QString catalogueIn(const QString& path)
{
    using TestSupport::firstValue;
    if (!QFileInfo::exists(path))
        return QStringLiteral("missing");
    QString check = firstValue(path, QStringLiteral("PRAGMA integrity_check")).toString();
    if (check != QLatin1String("ok"))
        return check;
    const QString records = firstValue(path, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toString();
    const QString expected = firstValue(path, QStringLiteral("SELECT filePath FROM MetaData2")).toString();
    if (expected != QStringLiteral("/records/") + records)
        return QStringLiteral("%1 records instead of %2").arg(records, expected);
    const QString first = firstValue(path, QStringLiteral("SELECT MIN(filePath) FROM MetaData1")).toString();
    const QString last = firstValue(path, QStringLiteral("SELECT MAX(filePath) FROM MetaData1")).toString();
    const QString name = first.section(QLatin1Char('/'), 1, 1);
    return name == last.section(QLatin1Char('/'), 1, 1) ? name : QStringLiteral("a mixture");
}
