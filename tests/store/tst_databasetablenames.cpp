// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/databasesettings.h"
#include "tests/store/connectionfixture.h"
#include "tests/support/messagerecorder.h"
#include "tests/support/signalcounter.h"
#include "tests/support/storefixture.h"

#include <QtTest>

using TestSupport::MessageRecorder;
using TestSupport::SignalCounter;
using TestSupport::StoreFixture;

class DatabaseTableNamesTest : public QObject
{
    Q_OBJECT

private slots:
    void missingValueIsEmpty();
    void valueIsInsertedThenUpdated();
    void failedCheckIsLogged();
    void failedWriteIsLogged();
    void writeThatCannotBePreparedIsLogged();
    void tablesHaveDefaultNames();
    void numbersOutsideTheTablesHaveDefaultNames();
    void storedNamesAreRead();
    void namesAreStoredAsTheyAreJoined();
    void settingNamesReturnsAtOnce();
    void nameWithASemicolonSplits();
    void failedWriteLeavesTheNames();
    void closedStoreIgnoresNames();
    void closingForgetsTheNames();
    void receiverMayAskForTheNames();
};

void DatabaseTableNamesTest::missingValueIsEmpty()
{
    const ConnectionFixture fixture;

    QVERIFY(readSettingsValue(fixture.connection(), "nothing").isEmpty());
    QCOMPARE(fixture.execute("DROP TABLE Settings"), QString());
    QVERIFY(readSettingsValue(fixture.connection(), "nothing").isEmpty());
}

void DatabaseTableNamesTest::valueIsInsertedThenUpdated()
{
    const ConnectionFixture fixture;
    const QByteArray binary("\0\xff;\n", 4);

    QVERIFY(writeSettingsValue(fixture.connection(), "key", "first"));
    QVERIFY(writeSettingsValue(fixture.connection(), "other", "else"));
    QVERIFY(writeSettingsValue(fixture.connection(), "key", binary));

    QCOMPARE(readSettingsValue(fixture.connection(), "key"), binary);
    QCOMPARE(readSettingsValue(fixture.connection(), "other"), QByteArray("else"));
    QCOMPARE(fixture.value("SELECT COUNT(*) FROM Settings").toInt(), 2);
    QCOMPARE(fixture.value("SELECT typeof(value) FROM Settings").toString(), QStringLiteral("blob"));
}

void DatabaseTableNamesTest::failedCheckIsLogged()
{
    const ConnectionFixture fixture;
    QCOMPARE(fixture.execute("DROP TABLE Settings"), QString());
    const MessageRecorder recorder;

    QVERIFY(!writeSettingsValue(fixture.connection(), "key", "value"));

    const QStringList messages = recorder.messages(QtCriticalMsg);
    QCOMPARE(messages.size(), 1);
    QVERIFY2(messages.first().startsWith("Unable to check Settings value: no such table: Settings"),
        qPrintable(messages.first()));
}

void DatabaseTableNamesTest::failedWriteIsLogged()
{
    const ConnectionFixture fixture;
    QVERIFY(writeSettingsValue(fixture.connection(), "old", "value"));
    QCOMPARE(fixture.execute("PRAGMA query_only=ON"), QString());
    const MessageRecorder recorder;

    QVERIFY(!writeSettingsValue(fixture.connection(), "new", "value"));
    QVERIFY(!writeSettingsValue(fixture.connection(), "old", "changed"));

    QCOMPARE(recorder.messages(QtCriticalMsg).filter("Unable to write Settings value: ").size(), 2);
    QCOMPARE(readSettingsValue(fixture.connection(), "old"), QByteArray("value"));
}

void DatabaseTableNamesTest::writeThatCannotBePreparedIsLogged()
{
    const ConnectionFixture fixture;
    QCOMPARE(fixture.execute("DROP TABLE Settings"), QString());
    QCOMPARE(fixture.execute("CREATE VIEW Settings AS SELECT 'key' AS key, 'old' AS value"), QString());
    const MessageRecorder recorder;

    QVERIFY(!writeSettingsValue(fixture.connection(), "key", "new"));

    const QStringList messages = recorder.messages(QtCriticalMsg);
    QCOMPARE(messages.size(), 1);
    QVERIFY2(messages.first().startsWith("Unable to write Settings value: cannot modify Settings"),
        qPrintable(messages.first()));
}

void DatabaseTableNamesTest::tablesHaveDefaultNames()
{
    StoreFixture store;
    const SignalCounter changed(&store.database(), &Database::tableDisplayNamesChanged);
    QCOMPARE(store.database().tableDisplayName(1), QStringLiteral("Table1"));

    store.open();

    QTRY_COMPARE(changed.count(), 1);
    for (int tableId = 1; tableId <= 15; ++tableId)
        QCOMPARE(store.database().tableDisplayName(tableId), "Table" + QString::number(tableId));
}

void DatabaseTableNamesTest::numbersOutsideTheTablesHaveDefaultNames()
{
    StoreFixture store;
    store.open();

    QCOMPARE(store.database().tableDisplayName(0), QStringLiteral("Table0"));
    QCOMPARE(store.database().tableDisplayName(16), QStringLiteral("Table16"));
    QCOMPARE(store.database().tableDisplayName(-5), QStringLiteral("Table-5"));
}

void DatabaseTableNamesTest::storedNamesAreRead()
{
    StoreFixture store;
    store.open();
    QCOMPARE(
        store.execute("INSERT INTO Settings VALUES ('tableDisplayNames', CAST('Alpha;;Gämma' AS BLOB))"), QString());
    const SignalCounter changed(&store.database(), &Database::tableDisplayNamesChanged);

    store.database().refreshTableDisplayNames();

    QTRY_VERIFY(changed.count() > 0);
    QTRY_COMPARE(store.database().tableDisplayNames(), QStringList({ "Alpha", "", "Gämma" }));
    QCOMPARE(store.database().tableDisplayName(1), QStringLiteral("Alpha"));
    QCOMPARE(store.database().tableDisplayName(2), QStringLiteral("Table2"));
    QCOMPARE(store.database().tableDisplayName(3), QStringLiteral("Gämma"));
    QCOMPARE(store.database().tableDisplayName(4), QStringLiteral("Table4"));
}

void DatabaseTableNamesTest::namesAreStoredAsTheyAreJoined()
{
    StoreFixture store;
    store.open();

    store.database().setTableDisplayNames({ "Once" });
    store.database().setTableDisplayNames({ "Müsik", "", "Loops & more" });
    store.database().close();

    const TestConnection connection(store.filePath());
    QCOMPARE(connection.column("SELECT key FROM Settings"), QVariantList{ "tableDisplayNames" });
    QCOMPARE(connection.value("SELECT value FROM Settings").toByteArray(), QByteArray("Müsik;;Loops & more"));
    store.open();
    QTRY_COMPARE(store.database().tableDisplayName(1), QStringLiteral("Müsik"));
}

void DatabaseTableNamesTest::settingNamesReturnsAtOnce()
{
    StoreFixture store;
    const SignalCounter changed(&store.database(), &Database::tableDisplayNamesChanged);
    store.open();
    QTRY_COMPARE(changed.count(), 1);

    store.database().setTableDisplayNames({ "Alpha" });

    QCOMPARE(changed.count(), 1);
    QTRY_COMPARE(changed.count(), 2);
    QCOMPARE(store.database().tableDisplayNames(), QStringList{ "Alpha" });
}

void DatabaseTableNamesTest::nameWithASemicolonSplits()
{
    StoreFixture store;
    store.open();

    store.database().setTableDisplayNames({ "Alpha;Beta", "Gamma" });

    QTRY_COMPARE(store.database().tableDisplayNames(), QStringList({ "Alpha", "Beta", "Gamma" }));
}

void DatabaseTableNamesTest::failedWriteLeavesTheNames()
{
    StoreFixture store;
    store.open();
    store.database().setTableDisplayNames({ "Alpha" });
    QTRY_COMPARE(store.database().tableDisplayName(1), QStringLiteral("Alpha"));
    QCOMPARE(store.execute("PRAGMA query_only=ON"), QString());
    const MessageRecorder recorder;
    const SignalCounter changed(&store.database(), &Database::tableDisplayNamesChanged);

    store.database().setTableDisplayNames({ "Beta" });

    QTRY_COMPARE(changed.count(), 1);
    QCOMPARE(store.database().tableDisplayNames(), QStringList{ "Alpha" });
    QCOMPARE(recorder.messages(QtCriticalMsg).filter("Unable to write Settings value: ").size(), 1);
}

void DatabaseTableNamesTest::closedStoreIgnoresNames()
{
    StoreFixture store;
    store.open();
    store.database().setTableDisplayNames({ "Alpha" });
    store.database().close();
    QCoreApplication::processEvents();
    const SignalCounter changed(&store.database(), &Database::tableDisplayNamesChanged);

    store.database().setTableDisplayNames({ "Beta" });
    store.database().refreshTableDisplayNames();
    store.destroy();
    QCoreApplication::processEvents();

    QCOMPARE(changed.count(), 0);
    QCOMPARE(TestConnection(store.filePath()).value("SELECT value FROM Settings").toByteArray(), QByteArray("Alpha"));
}

void DatabaseTableNamesTest::closingForgetsTheNames()
{
    StoreFixture store;
    store.open();
    store.database().setTableDisplayNames({ "Alpha" });

    store.database().close();

    QVERIFY(store.database().tableDisplayNames().isEmpty());
    QCOMPARE(store.database().tableDisplayName(1), QStringLiteral("Table1"));
}

void DatabaseTableNamesTest::receiverMayAskForTheNames()
{
    StoreFixture store;
    QString name;
    // Runs in the store's thread, inside the emission.
    connect(
        &store.database(), &Database::tableDisplayNamesChanged, &store.database(),
        [&]() { name = store.database().tableDisplayName(2); }, Qt::DirectConnection);
    store.open();

    store.database().close();

    QCOMPARE(name, QStringLiteral("Table2"));
}

QTEST_GUILESS_MAIN(DatabaseTableNamesTest)

#include "tst_databasetablenames.moc"
