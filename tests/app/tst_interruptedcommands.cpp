// SPDX-License-Identifier: GPL-3.0-or-later
// A command is canceled, or the application quits as at the end of a desktop session, while it is at work.
#include "tests/app/commandhelpers.h"
#include "tests/app/windowfixture.h"

#include "app/metadataexporterdialog.h"
#include "tests/support/testsupport.h"
#include "ui/operationdialog.h"
#include "ui/searchandreplacedialog.h"
#include "ui/settings.h"

#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QtTest>

#include <algorithm>

using namespace CommandHelpers;

using TestSupport::contents;

namespace {

constexpr int recordsCount = 8000;
constexpr int filesCount = 40;
constexpr int fileSize = 1000000; // bytes

using Prepare = void (*)(WindowFixture& fixture);
// What a command makes of a record, as `recordTexts()` tells it; empty when it deletes records.
using Change = QString (*)(const QString& record);

QString unchanged(const QString& record)
{
    return record;
}

QString deleted(const QString& /*record*/)
{
    return {};
}

QString evaluated(const QString& record)
{
    return QString(record).replace(
        QRegularExpression(QStringLiteral("library=[^|]*")), QStringLiteral("library=Rings"));
}

QString replaced(const QString& record)
{
    return QString(record).replace(QStringLiteral("zz"), QStringLiteral("Ringing"));
}

QString path(WindowFixture& fixture, const char* name)
{
    return fixture.folder().filePath(QLatin1String(name));
}

void answerYes(WindowFixture& fixture)
{
    answer(fixture, QMessageBox::Warning, QMessageBox::Yes);
}

void selectAll(WindowFixture& fixture)
{
    fixture.view().selectAll();
}

void selectAllAndAnswerYes(WindowFixture& fixture)
{
    selectAll(fixture);
    answerYes(fixture);
}

void chooseReplacement(WindowFixture& fixture)
{
    whenModal<SearchAndReplaceDialog>(&fixture.window(), [](SearchAndReplaceDialog& dialog) {
        dialog.setSearchText(QStringLiteral("zz"));
        dialog.setReplaceText(QStringLiteral("Ringing"));
        accept(dialog);
    });
}

void chooseExportFile(WindowFixture& fixture)
{
    whenModal<MetaDataExporterDialog>(&fixture.window(), [&fixture](MetaDataExporterDialog& dialog) {
        dialog.setCheckedFields({ QStringLiteral("filePath") });
        dialog.findChild<QLineEdit*>()->setText(path(fixture, "records.txt"));
        accept(dialog);
    });
}

void chooseBackupFile(WindowFixture& fixture)
{
    choosePath(fixture, path(fixture, "new.dat"));
}

void chooseBackup(WindowFixture& fixture)
{
    choosePath(fixture, path(fixture, "backup.dat"));
}

QStringList recordTexts(const QString& databaseFile)
{
    const QVariantList rows = TestSupport::firstColumn(databaseFile,
        QStringLiteral("SELECT id || '|' || filePath || '|library=' || library || '|' || description || '|' || rating "
                       "FROM MetaData1 ORDER BY id"));
    QStringList texts;
    for (const QVariant& row : rows)
        texts.append(row.toString());
    return texts;
}

// True when every record is as it was or as the command leaves it.
bool isEachWhole(const QStringList& before, const QStringList& after, Change change)
{
    auto record = after.begin();
    for (const QString& earlier : before) {
        const QString later = change(earlier);
        if (record != after.end() && (*record == earlier || *record == later))
            ++record;
        else if (!later.isEmpty())
            return false;
    }
    return record == after.end();
}

bool isUnderWay(OperationDialog& dialog)
{
    return dialog.findChild<QProgressBar*>()->value() > 0
        || dialog.findChild<QPushButton*>()->text() == QLatin1String("Finish");
}

} // namespace

Q_DECLARE_METATYPE(Prepare)
Q_DECLARE_METATYPE(Change)

class InterruptedCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void cancelLeavesEveryRecordAndFileWhole_data();
    void cancelLeavesEveryRecordAndFileWhole();
    void quittingLeavesEveryRecordAndFileWhole_data();
    void quittingLeavesEveryRecordAndFileWhole();

private:
    void addCommands();
    void makeFiles();
    void startPrepared();
    void quitDuring(const QString& action);
    void checkFiles();

    std::unique_ptr<WindowFixture> m_fixture;
};

void InterruptedCommandsTest::init()
{
    m_fixture = std::make_unique<WindowFixture>();
    addRecords(*m_fixture, recordsCount);
    makeFiles();
    QVERIFY(QFile::copy(m_fixture->databaseFile(), path(*m_fixture, "backup.dat")));
    TestSupport::writeFile(m_fixture->dataFile(QStringLiteral("LibraryEvaluationRules.txt")), "Rings: .*");
}

void InterruptedCommandsTest::cleanup()
{
    m_fixture.reset();
}

void InterruptedCommandsTest::makeFiles()
{
    QDir().mkpath(path(*m_fixture, "work"));
    Settings(QStringLiteral("MainWindow")).setValue(QStringLiteral("workFolderPath"), path(*m_fixture, "work"));
    for (int number = 1; number <= filesCount; ++number) {
        const QString file = path(*m_fixture, "sounds/%1.wav").arg(number);
        TestSupport::writeFile(file, QByteArray(fileSize, 's'));
        column(*m_fixture, QStringLiteral("UPDATE MetaData1 SET filePath='%1' WHERE id=%2").arg(file).arg(number));
    }
}

void InterruptedCommandsTest::startPrepared()
{
    QFETCH(Prepare, prepare);
    m_fixture->start();
    QTRY_VERIFY(isIdle(*m_fixture));
    prepare(*m_fixture);
    // The command may end before it is interrupted, and say so.
    answer(*m_fixture, QMessageBox::Information, QMessageBox::Ok);
}

void InterruptedCommandsTest::addCommands()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<Prepare>("prepare");
    QTest::addColumn<Change>("change");

    const auto add = [](const char* action, Prepare prepare, Change change) {
        QTest::newRow(action) << QString::fromUtf8(action) << prepare << change;
    };
    add("Delete Selected", selectAllAndAnswerYes, deleted);
    add("Add to Playlist", selectAll, unchanged);
    add("Remove from Playlist", selectAll, unchanged);
    add("(Re)Evaluate Libraries", answerYes, evaluated);
    add("Search and Replace…", chooseReplacement, replaced);
    add("Export Records…", chooseExportFile, unchanged);
    add("Copy To Work Folder", selectAll, unchanged);
    add("Backup Database…", chooseBackupFile, unchanged);
    add("Restore Database…", chooseBackup, unchanged);
}

void InterruptedCommandsTest::cancelLeavesEveryRecordAndFileWhole_data()
{
    addCommands();
}

void InterruptedCommandsTest::cancelLeavesEveryRecordAndFileWhole()
{
    QFETCH(QString, action);
    QFETCH(Change, change);
    const QStringList before = recordTexts(m_fixture->databaseFile());
    startPrepared();
    whenModal<OperationDialog>(
        &m_fixture->window(), [](OperationDialog& dialog) { dialog.reject(); }, isUnderWay);

    trigger(*m_fixture, action);

    QTRY_VERIFY(isIdle(*m_fixture));
    const int count = value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt();
    QCOMPARE(m_fixture->view().model()->rowCount(), count);
    QVERIFY(isEachWhole(before, recordTexts(m_fixture->databaseFile()), change));
    checkFiles();
}

void InterruptedCommandsTest::quittingLeavesEveryRecordAndFileWhole_data()
{
    addCommands();
    QTest::newRow("Delete All") << QStringLiteral("Delete All") << Prepare(answerYes) << Change(deleted);
    QTest::newRow("Rebuild Database") << QStringLiteral("Rebuild Database") << Prepare(answerYes) << Change(unchanged);
}

void InterruptedCommandsTest::quittingLeavesEveryRecordAndFileWhole()
{
    QFETCH(QString, action);
    QFETCH(Change, change);
    const QStringList before = recordTexts(m_fixture->databaseFile());
    startPrepared();

    quitDuring(action);

    QCOMPARE(value(*m_fixture, QStringLiteral("PRAGMA integrity_check")).toString(), QStringLiteral("ok"));
    QVERIFY(isEachWhole(before, recordTexts(m_fixture->databaseFile()), change));
    checkFiles();
}

// As `main` does it: the event loop ends, then the window goes.
void InterruptedCommandsTest::quitDuring(const QString& action)
{
    bool isDialogSeen = false;
    whenModal<OperationDialog>(
        &m_fixture->window(),
        [&isDialogSeen](OperationDialog&) {
            isDialogSeen = true;
            QCoreApplication::quit();
        },
        isUnderWay);
    QTimer::singleShot(0, &m_fixture->window(), [this, action] {
        trigger(*m_fixture, action);
        // It took no time at all, or its outcome was answered.
        QCoreApplication::quit();
    });
    QApplication::exec();
    m_fixture->close();
    qInfo("%s", isDialogSeen ? "in its middle" : "at its end");
}

void InterruptedCommandsTest::checkFiles()
{
    // Nothing half-written stays; what a copying thread has begun it takes away soon.
    const QDir folder(m_fixture->folder().path());
    const QStringList known{ QStringLiteral("backup.dat"), QStringLiteral("new.dat"), QStringLiteral("records.txt") };
    const auto isEachKnown = [&folder, &known] {
        const QStringList names = folder.entryList(QDir::Files | QDir::Hidden);
        return std::all_of(names.begin(), names.end(), [&known](const QString& name) { return known.contains(name); });
    };
    QTRY_VERIFY2(isEachKnown(), qPrintable(folder.entryList(QDir::Files | QDir::Hidden).join(QLatin1Char(' '))));
    const QDir dataFolder = QFileInfo(m_fixture->databaseFile()).dir();
    QTRY_COMPARE(dataFolder.entryList({ QStringLiteral("*Database*"), QStringLiteral("*DB*") }, QDir::Files),
        QStringList(QStringLiteral("VellumcastDB.dat")));

    const QString backup = path(*m_fixture, "new.dat");
    QVERIFY(!QFile::exists(backup) || contents(backup) == contents(m_fixture->databaseFile()));
    const QString records = path(*m_fixture, "records.txt");
    QVERIFY(!QFile::exists(records) || contents(records).count('\n') == recordsCount + sampleRows + 1);
    const QFileInfoList copies = QDir(path(*m_fixture, "work")).entryInfoList(QDir::Files | QDir::Hidden);
    for (const QFileInfo& copy : copies)
        QCOMPARE(copy.size(), qint64(fileSize));
}

QTEST_MAIN(InterruptedCommandsTest)
#include "tst_interruptedcommands.moc"
