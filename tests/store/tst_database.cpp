// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/databaseschema.h"
#include "tests/store/connectionfixture.h"
#include "tests/support/messagerecorder.h"
#include "tests/support/signalcounter.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"

#include <QFileInfo>
#include <QSqlDatabase>
#include <QtConcurrent>
#include <QtTest>

using TestSupport::MessageRecorder;
using TestSupport::SignalCounter;
using TestSupport::StoreFixture;

namespace {

const QString connectionName = QStringLiteral("MetaDatabase");

QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A complete database file in the place of the store's, changed by a statement.
void prepareFile(const QString& path, const QString& statement)
{
    const TestConnection connection(path);
    connection.execute(QStringLiteral("PRAGMA synchronous=OFF"));
    if (!installSchema(connection.connection()))
        qFatal("Cannot install the schema");
    if (!statement.isEmpty() && !connection.execute(statement).isEmpty())
        qFatal("Cannot execute %s", qPrintable(statement));
}

} // namespace

class DatabaseTest : public QObject
{
    Q_OBJECT

private slots:
    void newStoreIsClosed();
    void newFileIsCreatedWithItsTablesAndLargePages();
    void missingFolderIsCreated();
    void existingFileKeepsItsPageSize();
    void existingFileIsNotChangedByOpening();
    void emptyPathIsRefused();
    void folderInPlaceOfTheFileIsRefused();
    void textFileInPlaceOfTheFileIsRefused();
    void emptyFileIsRefused();
    void lockedFileIsNotTakenForDamaged();
    void damagedFileIsNotTakenForLocked();
    void fileThatCannotBeReadIsNotTakenForDamaged();
    void fileWithoutATableIsRefusedAndUnchanged_data();
    void fileWithoutATableIsRefusedAndUnchanged();
    void failedInstallationIsReported();
    void openedIsEmittedOnSuccessOnly();
    void openAfterAFailureWorksAndClearsTheError();
    void failedFileMayBeReplaced();
    void openingTwiceIsRefusedWithAWarning();
    void closeReturnsAfterClosed();
    void secondCloseDoesNothing();
    void closedStoreMayBeOpenedAgain();
    void closingReleasesTheConnection();
    void closesFromTwoThreadsBothReturn();
    void closeWorksAfterTheThreadHasEnded();
    void closeReturnsWhenTheThreadEndsAtThatMoment();
    void storeIsDestroyedAfterItsThreadHasEnded();
    void storeMayLiveInTheCallersThread();
    void destroyingAnOpenStoreStopsTheWarmUp();
    void pathAndErrorMayBeReadFromAnyThread();
    void metaObjectListsSignalsAndSlotsInOrder();
};

void DatabaseTest::newStoreIsClosed()
{
    StoreFixture store;

    QVERIFY(!store.database().isOpened());
    QCOMPARE(store.database().databaseFilePath(), store.filePath());
    QVERIFY(store.database().lastError().isEmpty());
    QVERIFY(store.database().tableDisplayNames().isEmpty());
    QVERIFY(!QFileInfo::exists(store.filePath()));
}

void DatabaseTest::newFileIsCreatedWithItsTablesAndLargePages()
{
    StoreFixture store;

    QVERIFY(store.database().open());

    QVERIFY(store.database().isOpened());
    const TestConnection connection(store.filePath());
    QVERIFY(hasValidSchema(connection.connection()));
    QCOMPARE(connection.value("SELECT COUNT(*) FROM sqlite_master WHERE type='index' AND sql NOT NULL").toInt(), 300);
    QCOMPARE(connection.value("PRAGMA page_size").toInt(), 65536);
}

void DatabaseTest::missingFolderIsCreated()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("a/b/c/VellumcastDB.dat");
    Database database(path);

    QVERIFY(database.open());

    QVERIFY(QFileInfo::exists(path));
}

void DatabaseTest::existingFileKeepsItsPageSize()
{
    StoreFixture store;
    prepareFile(store.filePath(), QString());

    QVERIFY(store.database().open());

    QCOMPARE(TestConnection(store.filePath()).value("PRAGMA page_size").toInt(), 4096);
}

void DatabaseTest::existingFileIsNotChangedByOpening()
{
    StoreFixture store;
    prepareFile(store.filePath(), QString());
    const QByteArray contents = contentsOf(store.filePath());

    QVERIFY(store.database().open());
    store.database().close();

    QCOMPARE(contentsOf(store.filePath()), contents);
}

void DatabaseTest::emptyPathIsRefused()
{
    Database database{ QString() };

    QVERIFY(!database.open());

    QCOMPARE(database.lastError(), QStringLiteral("Database file is not specified"));
    QVERIFY(!database.isOpened());
}

void DatabaseTest::folderInPlaceOfTheFileIsRefused()
{
    StoreFixture store;
    QVERIFY(QDir().mkpath(store.filePath()));
    const QString frame = "Can't open database: ";

    QVERIFY(!store.database().open());

    const QString error = store.database().lastError();
    QVERIFY2(error.startsWith(frame) && error.size() > frame.size(), qPrintable(error));
    QVERIFY(!QSqlDatabase::contains(connectionName));
}

void DatabaseTest::textFileInPlaceOfTheFileIsRefused()
{
    StoreFixture store;
    const QByteArray contents = QByteArray("This is not a database.\n").repeated(500);
    TestSupport::writeFile(store.filePath(), contents);

    QVERIFY(!store.database().open());

    QCOMPARE(store.database().lastError(), QStringLiteral("Invalid database structure"));
    QCOMPARE(contentsOf(store.filePath()), contents);
}

void DatabaseTest::lockedFileIsNotTakenForDamaged()
{
    StoreFixture store;
    TestSupport::makeEmptyDatabase(store.filePath());
    {
        const TestConnection other(store.filePath());
        QCOMPARE(other.execute(QStringLiteral("BEGIN EXCLUSIVE")), QString());

        QVERIFY(!store.database().open());
    }
    const QString error = store.database().lastError();
    QVERIFY2(error.startsWith(QLatin1String("Can't open database: ")), qPrintable(error));
    QVERIFY(store.database().isLockedByAnother());
    QVERIFY(store.database().open());
    QVERIFY(!store.database().isLockedByAnother());
}

void DatabaseTest::damagedFileIsNotTakenForLocked()
{
    StoreFixture store;
    TestSupport::writeFile(store.filePath(), "no database");

    QVERIFY(!store.database().open());

    QVERIFY(!store.database().isLockedByAnother());
}

// A folder in the place of the journal keeps SQLite from reading even a whole file.
void DatabaseTest::fileThatCannotBeReadIsNotTakenForDamaged()
{
    StoreFixture store;
    TestSupport::makeEmptyDatabase(store.filePath());
    const QString obstacle = store.filePath() + "-journal";
    QVERIFY(QDir().mkpath(obstacle));

    QVERIFY(!store.database().open());

    const QString error = store.database().lastError();
    QVERIFY2(error.startsWith("Can't open database: disk I/O error"), qPrintable(error));
    QVERIFY(!store.database().isLockedByAnother());
    QVERIFY(QDir().rmdir(obstacle));
    QVERIFY(store.database().open());
}

void DatabaseTest::emptyFileIsRefused()
{
    StoreFixture store;
    TestSupport::writeFile(store.filePath(), QByteArray());

    QVERIFY(!store.database().open());

    QCOMPARE(store.database().lastError(), QStringLiteral("Invalid database structure"));
    QCOMPARE(QFileInfo(store.filePath()).size(), Q_INT64_C(0));
}

void DatabaseTest::fileWithoutATableIsRefusedAndUnchanged_data()
{
    QTest::addColumn<QString>("statement");

    QTest::newRow("last table") << "DROP TABLE MetaData15";
    QTest::newRow("settings") << "DROP TABLE Settings";
    QTest::newRow("renamed table") << "ALTER TABLE MetaData1 RENAME TO metadata_1";
}

void DatabaseTest::fileWithoutATableIsRefusedAndUnchanged()
{
    QFETCH(QString, statement);
    StoreFixture store;
    prepareFile(store.filePath(), statement);
    const QByteArray contents = contentsOf(store.filePath());

    QVERIFY(!store.database().open());

    QCOMPARE(store.database().lastError(), QStringLiteral("Invalid database structure"));
    QVERIFY(!store.database().isOpened());
    QVERIFY(!QSqlDatabase::contains(connectionName));
    QCOMPARE(contentsOf(store.filePath()), contents);
}

// A journal that belongs to no file is taken for a hot one and cannot be deleted, being a folder: every write fails.
void DatabaseTest::failedInstallationIsReported()
{
    StoreFixture store;
    QVERIFY(QDir().mkpath(store.filePath() + "-journal"));
    const MessageRecorder recorder;

    QVERIFY(!store.database().open());

    QCOMPARE(store.database().lastError(), QStringLiteral("Database installation failed"));
    const QStringList messages = recorder.messages(QtCriticalMsg);
    QCOMPARE(messages.size(), 1);
    QVERIFY2(messages.first().startsWith("Unable to create MetaData table: "), qPrintable(messages.first()));
    QVERIFY(!store.database().isOpened());
    QVERIFY(!QSqlDatabase::contains(connectionName));
}

void DatabaseTest::openedIsEmittedOnSuccessOnly()
{
    StoreFixture store;
    const SignalCounter opened(&store.database(), &Database::opened);
    TestSupport::writeFile(store.filePath(), "no database");

    QVERIFY(!store.database().open());
    QVERIFY(QFile::remove(store.filePath()));
    TestSupport::makeEmptyDatabase(store.filePath());
    QCOMPARE(opened.count(), 0);
    QVERIFY(store.database().open());

    QTRY_COMPARE(opened.count(), 1);
}

void DatabaseTest::openAfterAFailureWorksAndClearsTheError()
{
    const MessageRecorder recorder;
    StoreFixture store;
    TestSupport::writeFile(store.filePath(), "no database");

    QVERIFY(!store.database().open());
    QVERIFY(!store.database().open());
    QVERIFY(!store.database().lastError().isEmpty());
    QVERIFY(QFile::remove(store.filePath()));
    TestSupport::makeEmptyDatabase(store.filePath());

    QVERIFY(store.database().open());
    QVERIFY(store.database().lastError().isEmpty());
    QVERIFY(store.database().isOpened());
    QCOMPARE(recorder.messages(), QStringList());
}

void DatabaseTest::failedFileMayBeReplaced()
{
    StoreFixture store;
    prepareFile(store.filePath(), "DROP TABLE MetaData15");
    QVERIFY(!store.database().open());

    QVERIFY(QFile::rename(store.filePath(), store.filePath() + ".old"));
    QVERIFY(store.database().open());

    QVERIFY(hasValidSchema(TestConnection(store.filePath()).connection()));
    QVERIFY(!hasValidSchema(TestConnection(store.filePath() + ".old").connection()));
}

void DatabaseTest::openingTwiceIsRefusedWithAWarning()
{
    StoreFixture store;
    store.open();
    const MessageRecorder recorder;

    QVERIFY(!store.database().open());

    QCOMPARE(recorder.messages(QtWarningMsg), QStringList{ "Database is already opened" });
    QVERIFY(store.database().isOpened());
    QVERIFY(store.database().lastError().isEmpty());
}

void DatabaseTest::closeReturnsAfterClosed()
{
    StoreFixture store;
    store.open();
    const SignalCounter closed(&store.database(), &Database::closed);

    store.database().close();

    QCOMPARE(closed.count(), 1);
    QVERIFY(!store.database().isOpened());
}

void DatabaseTest::secondCloseDoesNothing()
{
    StoreFixture store;
    store.open();
    const SignalCounter closed(&store.database(), &Database::closed);

    store.database().close();
    store.database().close();
    QCoreApplication::processEvents();

    QCOMPARE(closed.count(), 1);
}

void DatabaseTest::closedStoreMayBeOpenedAgain()
{
    StoreFixture store;
    store.open();
    store.insert(3, { TestSupport::sampleRecord("/a.wav") });
    store.database().close();

    QVERIFY(store.database().open());

    QCOMPARE(store.records(3).size(), 1);
}

void DatabaseTest::closingReleasesTheConnection()
{
    const MessageRecorder recorder;
    StoreFixture store;
    store.open();
    store.insert(1, { TestSupport::sampleRecord("/a.wav") });
    QCOMPARE(store.records(1).size(), 1);
    TestSupport::await(store.database().deleteMetaData(1, { 1 }));
    TestSupport::await(store.database().rebuild());
    QVERIFY(QSqlDatabase::connectionNames().contains(connectionName));

    store.database().close();

    QVERIFY(!QSqlDatabase::connectionNames().contains(connectionName));
    QCOMPARE(recorder.messages(), QStringList());
}

void DatabaseTest::closesFromTwoThreadsBothReturn()
{
    for (int round = 0; round < 20; ++round) {
        StoreFixture store;
        store.open();
        const SignalCounter closed(&store.database(), &Database::closed);
        QThread other;
        QObject context;
        context.moveToThread(&other);
        other.start();
        QMetaObject::invokeMethod(&context, [&]() {
            store.database().close();
            other.quit();
        });

        store.database().close();
        other.wait();
        QCoreApplication::processEvents();

        QCOMPARE(closed.count(), 1);
        QVERIFY(!store.database().isOpened());
    }
}

void DatabaseTest::closeWorksAfterTheThreadHasEnded()
{
    const MessageRecorder recorder;
    StoreFixture store;
    store.open();
    const SignalCounter closed(&store.database(), &Database::closed);
    store.thread().quit();
    store.thread().wait();

    store.database().close();

    QVERIFY(!store.database().isOpened());
    QTRY_COMPARE(closed.count(), 1);
    QVERIFY(!QSqlDatabase::contains(connectionName));
    QCOMPARE(recorder.messages(), QStringList());
}

// The thread takes a while to end: the later rounds close a little later, so that some meet each step of its ending.
void DatabaseTest::closeReturnsWhenTheThreadEndsAtThatMoment()
{
    StoreFixture store;
    prepareFile(store.filePath(), QString());
    for (int round = 0; round < 500; ++round) {
        store.thread().start();
        QVERIFY(store.database().open());
        std::atomic<int> delay{ round * 50 };

        store.thread().quit();
        while (--delay > 0) { }
        store.database().close();

        QVERIFY(!store.database().isOpened());
        QVERIFY(store.thread().wait());
    }
}

void DatabaseTest::storeIsDestroyedAfterItsThreadHasEnded()
{
    const MessageRecorder recorder;
    const QTemporaryDir folder;
    QThread thread;
    TestSupport::makeEmptyDatabase(folder.filePath("store.dat"));
    auto database = std::make_unique<Database>(folder.filePath("store.dat"));
    database->moveToThread(&thread);
    thread.start();
    QVERIFY(database->open());
    thread.quit();
    thread.wait();

    database.reset();

    QVERIFY(!QSqlDatabase::contains(connectionName));
    QCOMPARE(recorder.messages(), QStringList());
}

void DatabaseTest::storeMayLiveInTheCallersThread()
{
    const MessageRecorder recorder;
    const QTemporaryDir folder;
    TestSupport::makeEmptyDatabase(folder.filePath("store.dat"));
    {
        Database database(folder.filePath("store.dat"));
        QVERIFY(database.open());
        // A receiver in the same thread may ask the store for its state.
        connect(&database, &Database::closed, &database, [&database]() { database.tableDisplayName(1); });
        const auto reply = TestSupport::await(database.getRowsCount(1, {}));
        QCOMPARE(reply->result("rowsCount").toInt(), 0);
    }
    QVERIFY(!QSqlDatabase::contains(connectionName));
    QCOMPARE(recorder.messages(), QStringList());
}

void DatabaseTest::destroyingAnOpenStoreStopsTheWarmUp()
{
    auto store = std::make_unique<StoreFixture>();
    prepareFile(store->filePath(), QString());
    // SQLite does not mind what follows its last page.
    QVERIFY(QFile::resize(store->filePath(), Q_INT64_C(1) << 40));
    store->open();

    store.reset();

    QTRY_COMPARE(QThreadPool::globalInstance()->activeThreadCount(), 0);
}

void DatabaseTest::pathAndErrorMayBeReadFromAnyThread()
{
    StoreFixture store;
    TestSupport::makeEmptyDatabase(store.filePath());
    std::atomic<bool> isDone{ false };
    QFuture<void> reader = QtConcurrent::run([&]() {
        while (!isDone) {
            store.database().databaseFilePath();
            store.database().lastError();
            store.database().isOpened();
            store.database().tableDisplayName(1);
        }
    });

    for (int round = 0; round < 3; ++round) {
        QVERIFY(store.database().open());
        store.database().setTableDisplayNames({ "Alpha" });
        store.database().close();
    }

    isDone = true;
    reader.waitForFinished();
}

void DatabaseTest::metaObjectListsSignalsAndSlotsInOrder()
{
    const QMetaObject& metaObject = Database::staticMetaObject;
    QStringList methods;
    for (int index = metaObject.methodOffset(); index < metaObject.methodCount(); ++index) {
        const QMetaMethod method = metaObject.method(index);
        const QString access = method.access() == QMetaMethod::Public ? "public " : "private ";
        const QString kind = method.methodType() == QMetaMethod::Signal ? "signal " : access + "slot ";
        methods.append(
            kind + method.typeName() + ' ' + method.methodSignature() + ' ' + method.parameterNames().join(','));
    }

    const QString slot = "private slot void ";
    const QStringList expected{ "signal void opened() ", "signal void closed() ",
        "signal void tableDisplayNamesChanged() ", "public slot bool open() ", "public slot void close() ",
        "public slot void setTableDisplayNames(QStringList) value", "public slot void refreshTableDisplayNames() ",
        slot + "open(OperationReply*) reply",
        slot + "scan(OperationReply*,int,QStringList,QString) reply,tableId,paths,libraryEvaluationRules",
        slot + "getRowsCount(OperationReply*,int,QVariantMap) reply,tableId,parameters",
        slot + "pullMetaData(OperationReply*,int,QVariantMap) reply,tableId,parameters",
        slot + "pushMetaData(OperationReply*,int,MetaDataList) reply,tableId,items",
        slot + "deleteMetaData(OperationReply*,int,QVariantList) reply,tableId,ids",
        slot + "setMetaDataPlaylist(OperationReply*,int,QVariantList,int) reply,tableId,ids,value",
        slot + "lookupMetaDataRow(OperationReply*,int,int,QVariantMap) reply,tableId,metaDataId,parameters",
        slot + "evaluateLibraries(OperationReply*,int,QString) reply,tableId,libraryEvaluationRules",
        slot
            + "replace(OperationReply*,int,QStringList,QString,QString,Qt::CaseSensitivity,QVariantMap) "
              "reply,tableId,fields,before,after,caseSensitivity,parameters",
        slot + "clearTable(OperationReply*,int) reply,tableId", slot + "rebuild(OperationReply*) reply" };
    QCOMPARE(methods, expected);
}

QTEST_GUILESS_MAIN(DatabaseTest)

#include "tst_database.moc"
