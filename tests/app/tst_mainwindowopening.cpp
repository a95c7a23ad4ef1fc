// SPDX-License-Identifier: GPL-3.0-or-later
// What the main window does when its database cannot be opened.
#include "tests/app/windowfixture.h"

#include "tests/scan/sidelock.h"
#include "tests/support/messagerecorder.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

namespace {

QString found(int rows)
{
    return QStringLiteral("Found Records: %1").arg(rows);
}

bool hasButtons(const QMessageBox& box, QMessageBox::StandardButtons buttons)
{
    return box.standardButtons() == buttons;
}

// Answers the question that comes before a database is given up.
void whenAskedToReinitialise(const std::function<void(QMessageBox&)>& answer)
{
    whenModal<QMessageBox>(QCoreApplication::instance(), answer,
        [](QMessageBox& box) { return hasButtons(box, QMessageBox::Yes | QMessageBox::No); });
}

// Answers the box over a database that another program has locked.
void whenToldOfALock(const std::function<void(QMessageBox&)>& answer)
{
    whenModal<QMessageBox>(QCoreApplication::instance(), answer,
        [](QMessageBox& box) { return hasButtons(box, QMessageBox::Retry | QMessageBox::Cancel); });
}

// A folder in the place of the journal: SQLite cannot read the database beside it, be it as whole as it may.
QString obstacle(const WindowFixture& fixture)
{
    return fixture.databaseFile() + QStringLiteral("-journal");
}

bool hasBackupFolder(const WindowFixture& fixture)
{
    return QFileInfo::exists(fixture.dataFile(QStringLiteral("Backup")));
}

} // namespace

class MainWindowOpeningTest : public QObject
{
    Q_OBJECT

private slots:
    void damagedDatabaseIsAskedAbout();
    void declinedQuestionLeavesTheDatabaseClosed();
    void acceptedQuestionMovesTheFileAway();
    void acceptedQuestionLeavesAFileThatOpensByThen();
    void quittingAfterTheAnswerMovesNothing();
    void lockedDatabaseIsOpenedOnceItIsFree();
    void lockedDatabaseThatIsGivenUpStaysWhereItIs();
    void databaseLockedDuringTheQuestionIsNotMovedAway();
};

void MainWindowOpeningTest::damagedDatabaseIsAskedAbout()
{
    WindowFixture fixture;
    TestSupport::writeFile(fixture.databaseFile(), "damaged");
    const TestSupport::MessageRecorder log;
    QStringList texts;
    whenModal<QMessageBox>(QCoreApplication::instance(), [&texts](QMessageBox& box) {
        texts = QStringList({ box.windowTitle(), box.text(), box.informativeText(), box.defaultButton()->text() });
        QCOMPARE(box.icon(), QMessageBox::Critical);
        QCOMPARE(box.textFormat(), Qt::PlainText);
        QCOMPARE(box.standardButtons(), QMessageBox::Yes | QMessageBox::No);
        box.button(QMessageBox::No)->click();
    });

    fixture.build();

    QCOMPARE(texts.value(0), QStringLiteral("Database Error"));
    QCOMPARE(texts.value(1),
        QStringLiteral("Unable to open existing database file.\nDo you want to re-initialize database?"));
    QCOMPARE(texts.value(2),
        QStringLiteral("This operation will create new empty database file and all your previously entered information "
                       "will be erased.\n\nIf you have created a backup of your database please restore it after "
                       "completing this operation, otherwise you will have to re-scan your files."));
    QVERIFY2(texts.value(3).contains(QStringLiteral("No")), qPrintable(texts.value(3)));
    // What the store said is kept beside the question.
    QCOMPARE(log.messages(QtCriticalMsg).size(), 1);
}

void MainWindowOpeningTest::declinedQuestionLeavesTheDatabaseClosed()
{
    WindowFixture fixture;
    TestSupport::writeFile(fixture.databaseFile(), "damaged");
    const TestSupport::MessageRecorder log;
    whenModal<QMessageBox>(
        QCoreApplication::instance(), [](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });

    MainWindow& window = fixture.build();

    QVERIFY(!window.isDatabaseOpened());
    QCOMPARE(QFileInfo(fixture.databaseFile()).size(), qint64(7));
    QVERIFY(!QDir(fixture.dataFile(QStringLiteral("Backup"))).exists());
}

void MainWindowOpeningTest::acceptedQuestionMovesTheFileAway()
{
    WindowFixture fixture;
    TestSupport::firstValue(fixture.databaseFile(), QStringLiteral("DROP TABLE MetaData15"));
    const TestSupport::MessageRecorder log;
    whenModal<QMessageBox>(
        QCoreApplication::instance(), [](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); });

    MainWindow& window = fixture.build();

    QVERIFY(window.isDatabaseOpened());
    QTRY_COMPARE(fixture.counters(), found(0));
    QCOMPARE(log.messages(QtCriticalMsg), QStringList(QStringLiteral("Invalid database structure")));
    const QDir backup(fixture.dataFile(QStringLiteral("Backup")));
    const QString folder = backup.entryList(QDir::Dirs | QDir::NoDotAndDotDot).value(0);
    const QString moved = backup.filePath(folder + QStringLiteral("/VellumcastDB.dat"));
    const QString count = QStringLiteral("SELECT COUNT(*) FROM MetaData1");
    QCOMPARE(TestSupport::firstValue(moved, count).toInt(), sampleRows);
}

void MainWindowOpeningTest::acceptedQuestionLeavesAFileThatOpensByThen()
{
    WindowFixture fixture;
    QVERIFY(QDir().mkpath(obstacle(fixture)));
    const TestSupport::MessageRecorder log;
    whenAskedToReinitialise([&fixture](QMessageBox& box) {
        QVERIFY(QDir().rmdir(obstacle(fixture)));
        box.button(QMessageBox::Yes)->click();
    });

    fixture.build();

    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    QVERIFY(!hasBackupFolder(fixture));
}

void MainWindowOpeningTest::quittingAfterTheAnswerMovesNothing()
{
    WindowFixture fixture;
    TestSupport::writeFile(fixture.databaseFile(), "damaged");
    const TestSupport::MessageRecorder log;
    // At once: the store's answer may be there before a later event.
    whenAskedToReinitialise([](QMessageBox& box) {
        QCoreApplication::quit();
        box.button(QMessageBox::Yes)->click();
    });

    const MainWindow& window = fixture.build();
    // Takes the quitting back.
    QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit, Qt::QueuedConnection);
    QApplication::exec();

    QVERIFY(!window.isDatabaseOpened());
    QVERIFY(QFileInfo::exists(fixture.databaseFile()));
    QVERIFY(!hasBackupFolder(fixture));
}

void MainWindowOpeningTest::lockedDatabaseIsOpenedOnceItIsFree()
{
    WindowFixture fixture;
    auto lock = std::make_unique<SideLock>(fixture.databaseFile(), SideLock::Kind::Exclusive);
    const TestSupport::MessageRecorder log;
    QStringList texts;
    whenToldOfALock([&lock, &texts](QMessageBox& box) {
        texts = QStringList({ box.windowTitle(), box.text(), box.informativeText(), box.defaultButton()->text() });
        QCOMPARE(box.icon(), QMessageBox::Critical);
        QCOMPARE(box.textFormat(), Qt::PlainText);
        lock.reset();
        box.button(QMessageBox::Retry)->click();
    });

    fixture.build();

    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    QVERIFY(!hasBackupFolder(fixture));
    QCOMPARE(texts.value(0), QStringLiteral("Database Error"));
    QCOMPARE(texts.value(1), QStringLiteral("The database is in use by another program."));
    QVERIFY2(texts.value(2).startsWith(QStringLiteral("Can't open database: database is locked")),
        qPrintable(texts.value(2)));
    QVERIFY2(texts.value(3).contains(QStringLiteral("Retry")), qPrintable(texts.value(3)));
    QCOMPARE(log.messages(QtCriticalMsg).size(), 1);
}

void MainWindowOpeningTest::lockedDatabaseThatIsGivenUpStaysWhereItIs()
{
    WindowFixture fixture;
    const QByteArray before = TestSupport::contents(fixture.databaseFile());
    auto lock = std::make_unique<SideLock>(fixture.databaseFile(), SideLock::Kind::Exclusive);
    const TestSupport::MessageRecorder log;
    whenToldOfALock([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });

    const MainWindow& window = fixture.build();

    QVERIFY(!window.isDatabaseOpened());
    lock.reset();
    QCOMPARE(TestSupport::contents(fixture.databaseFile()), before);
    QVERIFY(!hasBackupFolder(fixture));
}

void MainWindowOpeningTest::databaseLockedDuringTheQuestionIsNotMovedAway()
{
    WindowFixture fixture;
    QVERIFY(QDir().mkpath(obstacle(fixture)));
    std::unique_ptr<SideLock> lock;
    const TestSupport::MessageRecorder log;
    whenAskedToReinitialise([&fixture, &lock](QMessageBox& box) {
        QVERIFY(QDir().rmdir(obstacle(fixture)));
        lock = std::make_unique<SideLock>(fixture.databaseFile(), SideLock::Kind::Exclusive);
        box.button(QMessageBox::Yes)->click();
    });
    whenToldOfALock([&lock](QMessageBox& box) {
        lock.reset();
        box.button(QMessageBox::Retry)->click();
    });

    fixture.build();

    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    QVERIFY(!hasBackupFolder(fixture));
}

QTEST_MAIN(MainWindowOpeningTest)

#include "tst_mainwindowopening.moc"
