// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/databaseschema.h"
#include "tests/store/connectionfixture.h"
#include "tests/support/messagerecorder.h"

#include <QtTest>

namespace {

QString tableText(const QString& name)
{
    return QString(
        "CREATE TABLE %1 (id INTEGER PRIMARY KEY AUTOINCREMENT NOT NULL, filePath TEXT COLLATE NOCASE UNIQUE "
        "NOT NULL, fileName TEXT COLLATE NOCASE NOT NULL, fileType TEXT COLLATE NOCASE NOT NULL, library "
        "TEXT COLLATE NOCASE NOT NULL DEFAULT '', description TEXT COLLATE NOCASE NOT NULL, duration REAL "
        "CHECK (duration > 0.0),rating REAL DEFAULT 1.0,sampleRate INTEGER CHECK (sampleRate > "
        "0),channelsCount INTEGER CHECK (channelsCount > 0),bitsPerSample INTEGER CHECK (bitsPerSample > "
        "0),originReference TEXT, artist TEXT, title TEXT, album TEXT, comments TEXT, genre TEXT, year "
        "TEXT, bitrate TEXT, playlist INTEGER DEFAULT 0, scanTimestamp INTEGER DEFAULT 0)")
        .arg(name);
}

QStringList strings(const QVariantList& values)
{
    QStringList texts;
    for (const QVariant& value : values)
        texts.append(value.toString());
    return texts;
}

} // namespace

class DatabaseSchemaTest : public QObject
{
    Q_OBJECT

private slots:
    void fifteenTablesAndTheSettingsAreCreated();
    void tablesHaveTheirText();
    void settingsTableHasItsText();
    void eachTableHasTwentyNamedIndexes();
    void indexesAreMadeInOrder();
    void installedSchemaIsValid();
    void missingTableMakesTheSchemaInvalid_data();
    void missingTableMakesTheSchemaInvalid();
    void failingStatementIsLoggedAndEndsTheInstallation_data();
    void failingStatementIsLoggedAndEndsTheInstallation();
    void pragmasAreSet();
    void idsAreNotUsedAgain();
};

void DatabaseSchemaTest::fifteenTablesAndTheSettingsAreCreated()
{
    const ConnectionFixture fixture;

    QStringList tables = strings(fixture.column("SELECT name FROM sqlite_master WHERE type='table' "
                                                "AND name NOT LIKE 'sqlite_%'"));

    QStringList expected;
    for (int tableId = 1; tableId <= 15; ++tableId)
        expected.append("MetaData" + QString::number(tableId));
    expected.append("Settings");
    QCOMPARE(tables, expected);
}

void DatabaseSchemaTest::tablesHaveTheirText()
{
    const ConnectionFixture fixture;

    const QStringList texts = strings(fixture.column("SELECT sql FROM sqlite_master WHERE type='table' "
                                                     "AND name LIKE 'MetaData%'"));

    QCOMPARE(texts.size(), 15);
    for (int tableId = 1; tableId <= 15; ++tableId)
        QCOMPARE(texts.at(tableId - 1), tableText("MetaData" + QString::number(tableId)));
}

void DatabaseSchemaTest::settingsTableHasItsText()
{
    const ConnectionFixture fixture;

    QCOMPARE(fixture.value("SELECT sql FROM sqlite_master WHERE name='Settings'").toString(),
        QStringLiteral("CREATE TABLE Settings (key TEXT PRIMARY KEY, value BLOB) WITHOUT ROWID"));
}

void DatabaseSchemaTest::eachTableHasTwentyNamedIndexes()
{
    const ConnectionFixture fixture;
    const QString count = "SELECT COUNT(*) FROM sqlite_master WHERE type='index' AND tbl_name='MetaData%1' AND sql ";

    for (int tableId = 1; tableId <= 15; ++tableId) {
        QCOMPARE(fixture.value(count.arg(tableId) + "NOT NULL").toInt(), 20);
        QCOMPARE(fixture.value(count.arg(tableId) + "IS NULL").toInt(), 1);
    }
    QCOMPARE(fixture.column("SELECT name FROM sqlite_master WHERE name='MetaData3_filePath'"), QVariantList());
}

void DatabaseSchemaTest::indexesAreMadeInOrder()
{
    const ConnectionFixture fixture;
    const QStringList texts = strings(fixture.column("SELECT sql FROM sqlite_master WHERE type='index' "
                                                     "AND tbl_name='MetaData3' AND sql NOT NULL"));

    QStringList expected;
    for (const char* field : { "fileName", "fileType", "library", "description", "duration", "rating" })
        expected.append(QString("CREATE INDEX MetaData3_%1 ON MetaData3 (%1)").arg(field));
    const QStringList fields{ "filePath", "fileName", "fileType", "library", "description", "duration", "rating" };
    for (const QString& field : fields)
        expected.append(QString("CREATE INDEX MetaData3_scanTimestamp_%1 ON MetaData3 (scanTimestamp,%1)").arg(field));
    for (const QString& field : fields) {
        expected.append(
            QString("CREATE INDEX MetaData3_playlist_%1 ON MetaData3 (playlist, %1) WHERE playlist=1").arg(field));
    }
    QCOMPARE(texts, expected);
}

void DatabaseSchemaTest::installedSchemaIsValid()
{
    const ConnectionFixture fixture;

    QVERIFY(hasValidSchema(fixture.connection()));
}

void DatabaseSchemaTest::missingTableMakesTheSchemaInvalid_data()
{
    QTest::addColumn<QStringList>("statements");

    QTest::newRow("last table") << QStringList{ "DROP TABLE MetaData15" };
    QTest::newRow("first table") << QStringList{ "DROP TABLE MetaData1" };
    QTest::newRow("settings") << QStringList{ "DROP TABLE Settings" };
    QTest::newRow("lower case") << QStringList{ "ALTER TABLE MetaData1 RENAME TO other",
        "ALTER TABLE other RENAME TO metadata1" };
    QTest::newRow("a view instead") << QStringList{ "DROP TABLE MetaData7",
        "CREATE VIEW MetaData7 AS SELECT * FROM MetaData8" };
}

void DatabaseSchemaTest::missingTableMakesTheSchemaInvalid()
{
    QFETCH(QStringList, statements);
    const ConnectionFixture fixture;
    for (const QString& statement : statements)
        QCOMPARE(fixture.execute(statement), QString());

    QVERIFY(!hasValidSchema(fixture.connection()));
}

void DatabaseSchemaTest::failingStatementIsLoggedAndEndsTheInstallation_data()
{
    QTest::addColumn<QString>("obstacle");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("tablesCount");

    QTest::newRow("table") << "CREATE INDEX MetaData2 ON other (name)"
                           << "Unable to create MetaData table: " << 1;
    QTest::newRow("full index") << "CREATE TABLE MetaData2_fileName (name)"
                                << "Unable to create full index: " << 2;
    QTest::newRow("partial index") << "CREATE TABLE MetaData3_playlist_rating (name)"
                                   << "Unable to create partial index: " << 3;
    QTest::newRow("settings") << "CREATE INDEX Settings ON other (name)"
                              << "Unable to create Settings table: " << 15;
}

void DatabaseSchemaTest::failingStatementIsLoggedAndEndsTheInstallation()
{
    QFETCH(QString, obstacle);
    QFETCH(QString, message);
    QFETCH(int, tablesCount);
    const ConnectionFixture fixture(ConnectionFixture::Schema::None);
    QCOMPARE(fixture.execute("CREATE TABLE other (name)"), QString());
    QCOMPARE(fixture.execute(obstacle), QString());

    const TestSupport::MessageRecorder recorder;
    const bool isInstalled = installSchema(fixture.connection());

    QVERIFY(!isInstalled);
    const QStringList messages = recorder.messages(QtCriticalMsg);
    QCOMPARE(messages.size(), 1);
    QVERIFY2(messages.first().startsWith(message), qPrintable(messages.first()));
    QVERIFY(messages.first().size() > message.size());
    const QStringList tables = fixture.connection().tables();
    QCOMPARE(tables.filter(QRegularExpression("^MetaData\\d+$")).size(), tablesCount);
}

void DatabaseSchemaTest::pragmasAreSet()
{
    const ConnectionFixture fixture(ConnectionFixture::Schema::None);

    applyPragmas(fixture.connection());
    QVERIFY(installSchema(fixture.connection()));

    QCOMPARE(fixture.value("PRAGMA cache_size").toInt(), 3000000);
    QCOMPARE(fixture.value("PRAGMA mmap_size").toInt(), 1073741824);
    QCOMPARE(fixture.value("PRAGMA page_size").toInt(), 65536);
}

void DatabaseSchemaTest::idsAreNotUsedAgain()
{
    const ConnectionFixture fixture;
    const QString insert
        = "INSERT INTO MetaData1 (filePath, fileName, fileType, description) VALUES ('/a', 'a', '', '')";
    QCOMPARE(fixture.execute(insert), QString());
    QCOMPARE(fixture.execute("DELETE FROM MetaData1"), QString());

    QCOMPARE(fixture.execute(insert), QString());

    QCOMPARE(fixture.value("SELECT id FROM MetaData1").toInt(), 2);
}

QTEST_GUILESS_MAIN(DatabaseSchemaTest)

#include "tst_databaseschema.moc"
