// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/application.h"

#include "app/screenscale.h"
#include "tests/app/program.h"
#include "tests/scan/sidelock.h"
#include "tests/scan/soundfiles.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QScreen>
#include <QSettings>
#include <QtTest>

#include <csignal>

using TestSupport::contents;

namespace {

const QString mainTitle = QStringLiteral("Vellumcast - Table1");
const QString questionTitle = QStringLiteral("Database Error");
const QByteArray damage = "this is no database";

QString databaseFile(const UserFolders& user)
{
    return user.dataFile(QStringLiteral("VellumcastDB.dat"));
}

void sendSignal(Program& program, int signal)
{
    ::kill(pid_t(program.process().processId()), signal);
}

} // namespace

class ApplicationTest : public QObject
{
    Q_OBJECT

private slots:
    void fontIsRaisedToTenPoints_data();
    void fontIsRaisedToTenPoints();
    void linksAreReadableOnADarkPalette();
    void screenWithoutAWholeFactorIsDrawnWithOne();
    void endsWithZeroWhenItsWindowIsClosed();
    void endsWithZeroOnTerminationSignals_data();
    void endsWithZeroOnTerminationSignals();
    void ignoresItsArguments();
    void writesItsSettingsBesideItsDatabase();
    void writesNothingToTheSettingsAfterTheEnd();
    void brokenSettingsFileGivesDefaults();
    void secondStartIsRefused();
    void secondStartIsRefusedDuringTheDatabaseQuestion();
    void startsAgainAfterACrash();
    void blockedInstanceNameEndsTheStart();
    void hundredAndFirstStartIsRefused();
    void acceptedDisclaimerIsNotShownAgain();
    void rejectedDisclaimerEndsTheProgram();
    void terminationDuringTheDatabaseQuestionLeavesTheFile();
    void terminationDuringAScanLeavesTheTable();
    void declinedReinitialisationLeavesTheFile();
    void acceptedReinitialisationKeepsTheOldFile_data();
    void acceptedReinitialisationKeepsTheOldFile();
    void unmovableFileEndsTheQuestions();
    void lockedDatabaseIsOpenedOnceItIsFree();
    void lockedDatabaseThatIsGivenUpEndsTheProgram();
    void newDatabaseInAReadOnlyFolderIsAskedAbout();
    void databaseInAReadOnlyFolderIsShown();
};

void ApplicationTest::fontIsRaisedToTenPoints_data()
{
    QTest::addColumn<double>("before");
    QTest::addColumn<double>("after");
    QTest::newRow("small") << 8.0 << 10.0;
    QTest::newRow("just right") << 10.0 << 10.0;
    QTest::newRow("fraction") << 10.5 << 10.5;
    QTest::newRow("large") << 12.0 << 12.0;
}

void ApplicationTest::fontIsRaisedToTenPoints()
{
    QFETCH(double, before);
    QFETCH(double, after);
    QFont font = QApplication::font();
    font.setPointSizeF(before);
    QApplication::setFont(font);

    raiseFontToReadableSize();

    QCOMPARE(QApplication::font().pointSizeF(), after);
}

void ApplicationTest::linksAreReadableOnADarkPalette()
{
    const QPalette before = QApplication::palette();
    QPalette dark(QColor(45, 45, 45));
    dark.setColor(QPalette::Link, Qt::blue);
    QApplication::setPalette(dark);

    lightenLinksOnDarkPalette();

    QVERIFY(QApplication::palette().color(QPalette::Link).lightness() > 128);
    QApplication::setPalette(before);
    lightenLinksOnDarkPalette();
    QCOMPARE(QApplication::palette().color(QPalette::Link), before.color(QPalette::Link));
}

void ApplicationTest::screenWithoutAWholeFactorIsDrawnWithOne()
{
    // This program does not scale, and sees the resolution as it is.
    constexpr double usualResolution = 96; // dots an inch
    QVERIFY(ScreenScale::isAlmostWhole(QGuiApplication::primaryScreen()->logicalDotsPerInchX() / usualResolution));
    const UserFolders user;
    user.acceptDisclaimer();
    Program program(user, { QStringLiteral("one"), QStringLiteral("two words") });
    QVERIFY(program.waitForWindow(mainTitle));

    const QString processFolder = QStringLiteral("/proc/%1/").arg(program.process().processId());
    QVERIFY(contents(processFolder + QLatin1String("environ")).contains("QT_SCALE_FACTOR_ROUNDING_POLICY=Round"));
    QVERIFY(contents(processFolder + QLatin1String("cmdline")).endsWith(QByteArray("one\0two words\0", 14)));

    program.press(QStringLiteral("ctrl+q"));
    QVERIFY(program.waitForEnd());
    QCOMPARE(program.exitCode(), 0);
}

void ApplicationTest::endsWithZeroWhenItsWindowIsClosed()
{
    const UserFolders user;
    user.acceptDisclaimer();
    Program program(user);
    QVERIFY(program.waitForWindow(mainTitle));

    program.press(QStringLiteral("ctrl+q"));

    QVERIFY(program.waitForEnd());
    QCOMPARE(program.process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    QCOMPARE(program.log(), QString());
}

void ApplicationTest::endsWithZeroOnTerminationSignals_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("terminate") << SIGTERM;
    QTest::newRow("interrupt") << SIGINT;
    QTest::newRow("hang up") << SIGHUP;
}

void ApplicationTest::endsWithZeroOnTerminationSignals()
{
    QFETCH(int, signal);
    const UserFolders user;
    user.acceptDisclaimer();
    Program program(user);
    QVERIFY(program.waitForWindow(mainTitle));

    sendSignal(program, signal);

    QVERIFY(program.waitForEnd());
    QCOMPARE(program.process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    const QSettings settings(user.dataFile(QStringLiteral("Settings.ini")), QSettings::IniFormat);
    QCOMPARE(settings.value(QStringLiteral("MainWindow/tableId")).toInt(), 1);
}

void ApplicationTest::ignoresItsArguments()
{
    const UserFolders user;
    user.acceptDisclaimer();
    Program program(user, { QStringLiteral("--unknown"), QStringLiteral("/no/such/file.wav") });

    QVERIFY(program.waitForWindow(mainTitle));
}

void ApplicationTest::writesItsSettingsBesideItsDatabase()
{
    const UserFolders user;
    user.acceptDisclaimer();
    Program program(user);
    QVERIFY(program.waitForWindow(mainTitle));
    program.press(QStringLiteral("ctrl+q"));
    QVERIFY(program.waitForEnd());

    const QSettings settings(user.dataFile(QStringLiteral("Settings.ini")), QSettings::IniFormat);

    QVERIFY(QFile::exists(databaseFile(user)));
    QCOMPARE(settings.value(QStringLiteral("MainWindow/tableId")).toString(), QStringLiteral("1"));
    QCOMPARE(settings.value(QStringLiteral("MainWindow/autoPlaybackEnabled")).toString(), QStringLiteral("false"));
    QCOMPARE(settings.value(QStringLiteral("MainWindow/playbackVolume")).toString(), QStringLiteral("1"));
    QCOMPARE(settings.value(QStringLiteral("MainWindow/filePathLookupEnabled")).toString(), QStringLiteral("false"));
    QVERIFY(settings.contains(QStringLiteral("MainWindow/workFolderPath")));
    QVERIFY(!settings.value(QStringLiteral("MainWindow/metaDataViewHeaderState")).toByteArray().isEmpty());
}

void ApplicationTest::writesNothingToTheSettingsAfterTheEnd()
{
    const UserFolders user;
    user.acceptDisclaimer();
    Program program(user);
    QVERIFY(program.waitForWindow(mainTitle));

    sendSignal(program, SIGTERM);

    QVERIFY(program.waitForEnd());
    // The window goes after the file was closed: neither a lock nor a half-written copy may be left.
    const QStringList files = QDir(user.dataFolder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    QCOMPARE(files, QStringList({ QStringLiteral("Settings.ini"), QStringLiteral("VellumcastDB.dat") }));
}

void ApplicationTest::brokenSettingsFileGivesDefaults()
{
    const UserFolders user;
    TestSupport::writeFile(user.dataFile(QStringLiteral("Settings.ini")), QByteArray("\x00\xff]][=\n;;[\n\x01", 12));
    Program program(user);

    // The main window is the disclaimer's parent and shows table 1.
    QVERIFY(program.waitForWindow(QStringLiteral("Warranty Disclaimer")));
    program.press(QStringLiteral("Return"));
    QVERIFY(program.waitForWindow(mainTitle));
}

void ApplicationTest::secondStartIsRefused()
{
    const UserFolders user;
    user.acceptDisclaimer();
    Program first(user);
    QVERIFY(first.waitForWindow(mainTitle));

    Program second(user);

    QVERIFY(second.waitForEnd());
    QCOMPARE(second.exitCode(), 1);
    QCOMPARE(second.log(), QStringLiteral("Application is already started\n"));
    first.press(QStringLiteral("ctrl+q"));
    QVERIFY(first.waitForEnd());
    QCOMPARE(first.exitCode(), 0);
    QCOMPARE(first.log(), QString());
}

void ApplicationTest::secondStartIsRefusedDuringTheDatabaseQuestion()
{
    const UserFolders user;
    TestSupport::writeFile(databaseFile(user), damage);
    Program first(user);
    QVERIFY(first.waitForWindow(questionTitle));

    Program second(user);

    QVERIFY(second.waitForEnd());
    QCOMPARE(second.exitCode(), 1);
    QCOMPARE(second.log(), QStringLiteral("Application is already started\n"));
}

void ApplicationTest::startsAgainAfterACrash()
{
    const UserFolders user;
    user.acceptDisclaimer();
    Program crashed(user);
    QVERIFY(crashed.waitForWindow(mainTitle));
    sendSignal(crashed, SIGKILL);
    QVERIFY(crashed.waitForEnd());
    QVERIFY(QDir(user.temporaryFolder()).exists(QStringLiteral("Vellumcast")));

    Program next(user);

    QVERIFY(next.waitForWindow(mainTitle));
}

void ApplicationTest::blockedInstanceNameEndsTheStart()
{
    const UserFolders user;
    QVERIFY(QDir(user.temporaryFolder()).mkdir(QStringLiteral("Vellumcast")));

    Program program(user);

    QVERIFY(program.waitForEnd());
    QCOMPARE(program.exitCode(), 1);
    QCOMPARE(program.log(), QStringLiteral("Unable to start single instance server\n"));
    QVERIFY(!QFile::exists(databaseFile(user)));
}

void ApplicationTest::hundredAndFirstStartIsRefused()
{
    const UserFolders user;
    user.acceptDisclaimer();
    Program first(user);
    QVERIFY(first.waitForWindow(mainTitle));

    for (int attempt = 1; attempt <= 101; ++attempt) {
        Program late(user);
        QVERIFY(late.waitForEnd());
        QVERIFY2(late.exitCode() == 1, qPrintable(QString::number(attempt)));
    }
}

void ApplicationTest::acceptedDisclaimerIsNotShownAgain()
{
    const UserFolders user;
    Program first(user);
    QVERIFY(first.waitForWindow(QStringLiteral("Warranty Disclaimer")));
    first.press(QStringLiteral("Return"));
    QVERIFY(first.waitForWindow(mainTitle));
    sendSignal(first, SIGTERM);
    QVERIFY(first.waitForEnd());
    QCOMPARE(first.exitCode(), 0);

    const QSettings settings(user.dataFile(QStringLiteral("Settings.ini")), QSettings::IniFormat);

    QCOMPARE(settings.value(QStringLiteral("WarrantyDisclaimer/accepted")).toString(), QStringLiteral("true"));
}

void ApplicationTest::rejectedDisclaimerEndsTheProgram()
{
    const UserFolders user;
    Program program(user);
    QVERIFY(program.waitForWindow(QStringLiteral("Warranty Disclaimer")));

    program.press(QStringLiteral("Escape"));

    QVERIFY(program.waitForEnd());
    QCOMPARE(program.exitCode(), 0);
    const QSettings settings(user.dataFile(QStringLiteral("Settings.ini")), QSettings::IniFormat);
    QVERIFY(!settings.value(QStringLiteral("WarrantyDisclaimer/accepted")).toBool());
}

void ApplicationTest::terminationDuringTheDatabaseQuestionLeavesTheFile()
{
    const UserFolders user;
    TestSupport::writeFile(databaseFile(user), damage);
    Program program(user);
    QVERIFY(program.waitForWindow(questionTitle));

    sendSignal(program, SIGTERM);

    QVERIFY(program.waitForEnd());
    QCOMPARE(program.process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 1);
    QCOMPARE(contents(databaseFile(user)), damage);
}

void ApplicationTest::terminationDuringAScanLeavesTheTable()
{
    const UserFolders user;
    user.acceptDisclaimer();
    const QString folder = QDir(user.temporaryFolder()).filePath(QStringLiteral("sounds"));
    for (int number = 0; number < 2000; ++number)
        TestSupport::writeFile(QStringLiteral("%1/take%2.wav").arg(folder).arg(number), SoundFiles::wave());
    Program program(user);
    QVERIFY(program.waitForWindow(mainTitle));
    program.press(QStringLiteral("alt+f"));
    program.press(QStringLiteral("s"));
    QVERIFY(program.waitForWindow(QStringLiteral("Scan Media Files")));
    program.type(folder);
    program.press(QStringLiteral("Return"));
    QVERIFY(program.waitForWindow(QStringLiteral("Scanning Media Files")));

    sendSignal(program, SIGTERM);

    QVERIFY(program.waitForEnd());
    QCOMPARE(program.process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    const int rows
        = TestSupport::firstValue(databaseFile(user), QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt();
    // All or nothing: the scan may have been done before the signal came.
    QVERIFY2(rows == 0 || rows == 2000, qPrintable(QString::number(rows)));
    QVERIFY(!QFile::exists(databaseFile(user) + QStringLiteral("-journal")));
}

void ApplicationTest::declinedReinitialisationLeavesTheFile()
{
    const UserFolders user;
    TestSupport::writeFile(databaseFile(user), damage);
    Program program(user);
    QVERIFY(program.waitForWindow(questionTitle));

    // The button that Return presses unless another is chosen: no.
    program.press(QStringLiteral("Return"));

    QVERIFY(program.waitForEnd());
    QCOMPARE(program.exitCode(), 1);
    QCOMPARE(contents(databaseFile(user)), damage);
    QVERIFY(!QDir(user.dataFolder()).exists(QStringLiteral("Backup")));
    QVERIFY(!program.log().trimmed().isEmpty());
}

void ApplicationTest::acceptedReinitialisationKeepsTheOldFile_data()
{
    QTest::addColumn<bool>("isDirectory");
    QTest::newRow("a text file") << false;
    QTest::newRow("a directory") << true;
}

void ApplicationTest::acceptedReinitialisationKeepsTheOldFile()
{
    QFETCH(bool, isDirectory);
    const UserFolders user;
    user.acceptDisclaimer();
    if (isDirectory)
        QVERIFY(QDir().mkpath(databaseFile(user)));
    else
        TestSupport::writeFile(databaseFile(user), damage);
    Program program(user);
    QVERIFY(program.waitForWindow(questionTitle));

    program.press(QStringLiteral("alt+y"));

    QVERIFY(program.waitForWindow(mainTitle));
    const QDir backup(user.dataFile(QStringLiteral("Backup")));
    const QStringList folders = backup.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QCOMPARE(folders.size(), 1);
    static const QRegularExpression time(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d-\\d\\d-\\d\\d-\\d\\d-\\d{3}$"));
    QVERIFY2(time.match(folders.first()).hasMatch(), qPrintable(folders.first()));
    const QString moved = backup.filePath(folders.first() + QStringLiteral("/VellumcastDB.dat"));
    QCOMPARE(QFileInfo(moved).isDir(), isDirectory);
    if (!isDirectory)
        QCOMPARE(contents(moved), damage);
    QCOMPARE(TestSupport::firstValue(databaseFile(user), QStringLiteral("SELECT COUNT(*) FROM MetaData15")).toInt(), 0);
}

void ApplicationTest::unmovableFileEndsTheQuestions()
{
    const UserFolders user;
    TestSupport::writeFile(databaseFile(user), damage);
    // A file where the folder for the old database should be.
    TestSupport::writeFile(user.dataFile(QStringLiteral("Backup")), "in the way");
    Program program(user);
    QVERIFY(program.waitForWindow(questionTitle));

    program.press(QStringLiteral("alt+y"));
    QVERIFY(program.waitForNextWindow(questionTitle));
    program.press(QStringLiteral("Escape"));

    QVERIFY(program.waitForEnd());
    QCOMPARE(program.exitCode(), 1);
    QCOMPARE(contents(databaseFile(user)), damage);
}

void ApplicationTest::lockedDatabaseIsOpenedOnceItIsFree()
{
    const UserFolders user;
    user.acceptDisclaimer();
    TestSupport::makeEmptyDatabase(databaseFile(user));
    auto lock = std::make_unique<SideLock>(databaseFile(user), SideLock::Kind::Exclusive);
    Program program(user);
    QVERIFY(program.waitForWindow(questionTitle));

    lock.reset();
    // The button that Return presses unless another is chosen: once more.
    program.press(QStringLiteral("Return"));

    QVERIFY(program.waitForWindow(mainTitle));
    QVERIFY(!QDir(user.dataFolder()).exists(QStringLiteral("Backup")));
}

void ApplicationTest::lockedDatabaseThatIsGivenUpEndsTheProgram()
{
    const UserFolders user;
    user.acceptDisclaimer();
    TestSupport::makeEmptyDatabase(databaseFile(user));
    const QByteArray before = contents(databaseFile(user));
    auto lock = std::make_unique<SideLock>(databaseFile(user), SideLock::Kind::Exclusive);
    Program program(user);
    QVERIFY(program.waitForWindow(questionTitle));

    program.press(QStringLiteral("Escape"));

    QVERIFY(program.waitForEnd());
    QCOMPARE(program.exitCode(), 1);
    lock.reset();
    QCOMPARE(contents(databaseFile(user)), before);
    QVERIFY(!QDir(user.dataFolder()).exists(QStringLiteral("Backup")));
    QVERIFY2(
        program.log().startsWith(QLatin1String("Can't open database: database is locked")), qPrintable(program.log()));
}

void ApplicationTest::newDatabaseInAReadOnlyFolderIsAskedAbout()
{
    const UserFolders user;
    QVERIFY(QDir().mkpath(user.dataFolder()));
    QVERIFY(QFile::setPermissions(user.dataFolder(), QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    Program program(user);
    QVERIFY(program.waitForWindow(questionTitle));

    program.press(QStringLiteral("Return"));

    QVERIFY(program.waitForEnd());
    QCOMPARE(program.exitCode(), 1);
    QVERIFY2(program.log().startsWith(QLatin1String("Can't open database: ")), qPrintable(program.log()));
    QVERIFY(QDir(user.dataFolder()).isEmpty());
    QVERIFY(QFile::setPermissions(user.dataFolder(), QFileDevice::Permissions(0x7000)));
}

void ApplicationTest::databaseInAReadOnlyFolderIsShown()
{
    const UserFolders user;
    user.acceptDisclaimer();
    TestSupport::makeEmptyDatabase(databaseFile(user));
    const QByteArray before = contents(databaseFile(user));
    QVERIFY(QFile::setPermissions(databaseFile(user), QFileDevice::ReadOwner));
    QVERIFY(QFile::setPermissions(user.dataFolder(), QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    Program program(user);
    QVERIFY(program.waitForWindow(mainTitle));

    program.press(QStringLiteral("ctrl+q"));

    QVERIFY(program.waitForEnd());
    QCOMPARE(program.exitCode(), 0);
    QCOMPARE(contents(databaseFile(user)), before);
    QVERIFY(QFile::setPermissions(user.dataFolder(), QFileDevice::Permissions(0x7000)));
}

QTEST_MAIN(ApplicationTest)

#include "tst_application.moc"
