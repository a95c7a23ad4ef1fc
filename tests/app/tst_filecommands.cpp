// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/cataloguefiles.h"
#include "tests/app/commandhelpers.h"
#include "tests/app/windowfixture.h"

#include "app/metadataexporterdialog.h"
#include "app/metadataprinterdialog.h"
#include "browse/metadatamodel.h"
#include "store/database.h"
#include "tests/app/copyfixture.h"
#include "tests/app/desktop.h"
#include "tests/support/testsupport.h"
#include "ui/operationdialog.h"
#include "ui/settings.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPrintDialog>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QtTest>

// The commands that write and read files, in the window, with the files and the database read beside it.

using namespace CommandHelpers;

namespace {

void chooseWorkFolderInSettings(const QString& folder)
{
    Settings(QStringLiteral("MainWindow")).setValue(QStringLiteral("workFolderPath"), folder);
}

// Presses "Finish" of the next progress dialog that has ended, and notes its warnings and its last status.
void finish(WindowFixture& fixture, QString* text)
{
    whenModal<OperationDialog>(
        &fixture.window(),
        [text](OperationDialog& dialog) {
            const QList<QPlainTextEdit*> consoles = dialog.findChildren<QPlainTextEdit*>();
            for (const QPlainTextEdit* console : consoles)
                *text += console->toPlainText();
            *text += dialog.findChild<QLabel*>(QStringLiteral("statusLabel"))->text();
            dialog.findChild<QPushButton*>()->click();
        },
        [](OperationDialog& dialog) { return dialog.findChild<QPushButton*>()->text() == QLatin1String("Finish"); });
}

} // namespace

class FileCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void exportWritesTheRecordsOfTheView();
    void failedExportTellsNoSuccess();
    void chosenExportFieldsAreKept();
    void printAsksForTitleAndPrinter();
    void printWritesTheViewsRecords();
    void rangeOfTheDialogIsPrinted();
    void selectedFilesAreCopiedToTheWorkFolder();
    void copyOfOtherFilesThanSeenIsRefused();
    void optionOpensTheWorkFolderAndIsKept_data();
    void optionOpensTheWorkFolderAndIsKept();
    void workFolderIsAskedForWhenThereIsNone();
    void existingCopyIsAWarning();
    void backupIsTheDatabase();
    void backupOntoTheDatabaseIsRefused();
    void damagedDatabaseIsToldWithTheBackup();
    void canceledChooserBacksNothingUp();
    void restoreBringsTheBackupBack();
    void restoreOfAStrangeFileKeepsTheDatabase();

private:
    void start();
    QString file(const QString& name) const { return m_fixture->folder().filePath(name); }

    std::unique_ptr<WindowFixture> m_fixture;
};

void FileCommandsTest::init()
{
    m_fixture = std::make_unique<WindowFixture>();
}

void FileCommandsTest::cleanup()
{
    m_fixture.reset();
}

void FileCommandsTest::start()
{
    m_fixture->start();
    QTRY_VERIFY(isIdle(*m_fixture));
}

void FileCommandsTest::exportWritesTheRecordsOfTheView()
{
    start();
    // Typed, but the table has not followed yet.
    m_fixture->child<QLineEdit>("lookupEdit")->setText(QStringLiteral("bell"));
    whenModal<MetaDataExporterDialog>(&m_fixture->window(), [this](MetaDataExporterDialog& dialog) {
        dialog.setCheckedFields({ QStringLiteral("fileName"), QStringLiteral("description") });
        dialog.findChild<QLineEdit*>()->setText(file(QStringLiteral("records.txt")));
        accept(dialog);
    });
    Message outcome;
    answer(*m_fixture, QMessageBox::Information, QMessageBox::Ok, &outcome);

    m_fixture->child<QAction>("exportAction")->trigger();

    QCOMPARE(outcome.title, QStringLiteral("Export Meta Data"));
    QCOMPARE(outcome.text, QStringLiteral("Records successfully exported"));
    QStringList expected{ QStringLiteral("fileName\tdescription") };
    const QVariantList rows = column(*m_fixture,
        QStringLiteral("SELECT fileName || char(9) || description FROM MetaData1 WHERE description LIKE '%bell%' "
                       "ORDER BY filePath"));
    for (const QVariant& row : rows)
        expected.append(row.toString());
    QCOMPARE(QString::fromUtf8(contents(file(QStringLiteral("records.txt")))),
        expected.join(QLatin1Char('\n')) + QLatin1Char('\n'));
}

void FileCommandsTest::failedExportTellsNoSuccess()
{
    start();
    whenModal<MetaDataExporterDialog>(&m_fixture->window(), [](MetaDataExporterDialog& dialog) {
        dialog.findChild<QLineEdit*>()->setText(QStringLiteral("relative.txt"));
        accept(dialog);
    });
    QString text;
    finish(*m_fixture, &text);

    // A success box would wait for an answer that never comes.
    m_fixture->child<QAction>("exportAction")->trigger();

    QVERIFY2(text.contains(QLatin1String("Invalid file name: relative.txt")), qPrintable(text));
}

void FileCommandsTest::chosenExportFieldsAreKept()
{
    start();
    const QStringList fields{ QStringLiteral("filePath"), QStringLiteral("year") };
    whenModal<MetaDataExporterDialog>(&m_fixture->window(), [this, fields](MetaDataExporterDialog& dialog) {
        dialog.setCheckedFields(fields);
        dialog.findChild<QLineEdit*>()->setText(file(QStringLiteral("records.txt")));
        accept(dialog);
    });
    answer(*m_fixture, QMessageBox::Information, QMessageBox::Ok);
    m_fixture->child<QAction>("exportAction")->trigger();
    QStringList checked;
    whenModal<MetaDataExporterDialog>(&m_fixture->window(), [&checked](MetaDataExporterDialog& dialog) {
        checked = dialog.checkedFields();
        dialog.reject();
    });

    m_fixture->child<QAction>("exportAction")->trigger();

    QCOMPARE(checked, fields);
}

void FileCommandsTest::printAsksForTitleAndPrinter()
{
    start();
    QString count;
    whenModal<MetaDataPrinterDialog>(&m_fixture->window(), [&count](MetaDataPrinterDialog& dialog) {
        const QList<QLabel*> labels = dialog.findChildren<QLabel*>();
        for (const QLabel* label : labels)
            count += label->text();
        dialog.setReportTitle(QStringLiteral("Harbour"));
        accept(dialog);
    });
    bool isPrinterAsked = false;
    double leftMargin = 0;
    whenModal<QPrintDialog>(&m_fixture->window(), [&isPrinterAsked, &leftMargin](QPrintDialog& dialog) {
        isPrinterAsked = true;
        leftMargin = dialog.printer()->pageLayout().margins(QPageLayout::Millimeter).left();
        dialog.reject();
    });

    m_fixture->child<QAction>("printReportAction")->trigger();

    QVERIFY(isPrinterAsked);
    QCOMPARE(qRound(leftMargin), 20);
    QVERIFY2(count.contains(QString::number(sampleRows)), qPrintable(count));
    QCOMPARE(Settings(QStringLiteral("MainWindow")).value(QStringLiteral("lastReportTitle")).toString(),
        QStringLiteral("Harbour"));
}

void FileCommandsTest::printWritesTheViewsRecords()
{
    start();
    // Typed, but the table has not followed yet.
    m_fixture->child<QLineEdit>("lookupEdit")->setText(QStringLiteral("bell"));
    const QString report = file(QStringLiteral("report.pdf"));
    whenModal<MetaDataPrinterDialog>(&m_fixture->window(), [](MetaDataPrinterDialog& dialog) {
        dialog.setReportTitle(QStringLiteral("Bells & <buoys>"));
        accept(dialog);
    });
    whenModal<QPrintDialog>(&m_fixture->window(), [report](QPrintDialog& dialog) {
        dialog.findChild<QLineEdit*>(QStringLiteral("filename"))->setText(report);
        accept(dialog);
    });

    m_fixture->child<QAction>("printReportAction")->trigger();

    QProcess reader;
    reader.start(QStringLiteral("pdftotext"), { QStringLiteral("-layout"), report, QStringLiteral("-") });
    QVERIFY(reader.waitForFinished());
    const QString text = QString::fromUtf8(reader.readAllStandardOutput());
    QVERIFY2(text.contains(QLatin1String("Bells & <buoys>")), qPrintable(text));
    const int records = text.count(QRegularExpression(QStringLiteral("\\b\\d+\\. take_\\d+\\.wav - Bell buoy")));
    QCOMPARE(records,
        value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1 WHERE description LIKE '%bell%'")).toInt());
}

void FileCommandsTest::rangeOfTheDialogIsPrinted()
{
    start();
    whenModal<MetaDataPrinterDialog>(&m_fixture->window(), [](MetaDataPrinterDialog& dialog) { accept(dialog); });
    whenModal<QPrintDialog>(&m_fixture->window(), [this](QPrintDialog& dialog) {
        dialog.findChild<QLineEdit*>(QStringLiteral("filename"))->setText(file(QStringLiteral("report.pdf")));
        dialog.findChild<QRadioButton*>(QStringLiteral("printRange"))->click();
        dialog.findChild<QSpinBox*>(QStringLiteral("to"))->setValue(8);
        dialog.findChild<QSpinBox*>(QStringLiteral("from"))->setValue(7);
        accept(dialog);
    });
    QString text;
    finish(*m_fixture, &text);

    m_fixture->child<QAction>("printReportAction")->trigger();

    QVERIFY2(text.contains(QLatin1String("The report has no such pages")), qPrintable(text));
}

void FileCommandsTest::selectedFilesAreCopiedToTheWorkFolder()
{
    QDir().mkpath(file(QStringLiteral("work")));
    chooseWorkFolderInSettings(file(QStringLiteral("work")));
    const QString sound = file(QStringLiteral("a, b.wav"));
    TestSupport::writeFile(sound, "sound");
    column(*m_fixture, QStringLiteral("UPDATE MetaData1 SET filePath='%1' WHERE id=1").arg(sound));
    start();
    m_fixture->view().setFilePathLookupEnabled(true);
    m_fixture->view().setLookup(QStringLiteral("\"a,\"").remove(QLatin1Char('"')), true);
    QTRY_VERIFY(isIdle(*m_fixture) && m_fixture->view().model()->rowCount() == 1);
    selectRows(*m_fixture, 0, 0);
    const DialogTitles dialogs;

    m_fixture->child<QPushButton>("copyToWorkFolderButton")->click();

    QCOMPARE(dialogs.titles(), QStringList(QStringLiteral("Copying Media Files to Work Folder")));
    QCOMPARE(contents(file(QStringLiteral("work/a, b.wav"))), QByteArray("sound"));
    QCOMPARE(contents(sound), QByteArray("sound"));
}

// In a table sorted by rating, a rating brings other records onto the selected rows.
void FileCommandsTest::copyOfOtherFilesThanSeenIsRefused()
{
    const QString work = file(QStringLiteral("work"));
    QDir().mkpath(work);
    chooseWorkFolderInSettings(work);
    column(*m_fixture, QStringLiteral("UPDATE MetaData1 SET filePath='%1/' || fileName").arg(file("sounds")));
    const QVariantList paths = column(*m_fixture, QStringLiteral("SELECT filePath FROM MetaData1"));
    for (const QVariant& path : paths)
        TestSupport::writeFile(path.toString(), "sound");
    start();
    m_fixture->view().sortByColumn(MetaDataModel::RatingColumn, Qt::DescendingOrder);
    QTRY_VERIFY(isIdle(*m_fixture));
    selectRows(*m_fixture, 30, 33);
    QTest::ignoreMessage(QtWarningMsg, "The selected records have changed meanwhile; nothing was done");

    m_fixture->window().increaseCurrentMetaDataRating();
    m_fixture->window().copySelectedFilesToWorkFolder();

    QVERIFY(QDir(work).isEmpty());
}

void FileCommandsTest::optionOpensTheWorkFolderAndIsKept_data()
{
    QTest::addColumn<bool>("isChecked");
    QTest::addColumn<bool>("isCanceled");
    QTest::newRow("checked") << true << false;
    QTest::newRow("not checked") << false << false;
    QTest::newRow("checked, but canceled") << true << true;
}

void FileCommandsTest::optionOpensTheWorkFolderAndIsKept()
{
    QFETCH(bool, isChecked);
    QFETCH(bool, isCanceled);
    const QString work = file(QStringLiteral("work"));
    QDir().mkpath(work);
    chooseWorkFolderInSettings(work);
    // Nobody but the desktop shows a folder.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/no such bus");
    const Desktop desktop;
    start();
    selectRows(*m_fixture, 0, 2);
    const Settings settings(QStringLiteral("FilesCopyDialog"));
    const QString key = QStringLiteral("openFolderInSystemFileManager");
    // The sample's files do not exist: the copy ends with warnings, and its dialog stays.
    bool wasChecked = true;
    auto hold = isCanceled ? std::make_unique<PoolHold>() : nullptr;
    whenModal<OperationDialog>(
        &m_fixture->window(),
        [&](OperationDialog& dialog) {
            auto* option = dialog.findChild<QCheckBox*>();
            QCOMPARE(option->text(), QStringLiteral("Open work folder when finished"));
            wasChecked = option->isChecked();
            option->setChecked(isChecked);
            dialog.findChild<QPushButton*>()->click();
            hold.reset();
        },
        [isCanceled](OperationDialog& dialog) {
            return isCanceled || dialog.findChild<QPushButton*>()->text() == QLatin1String("Finish");
        });

    m_fixture->window().copySelectedFilesToWorkFolder();

    QVERIFY(!wasChecked);
    QCOMPARE(settings.contains(key), !isCanceled);
    QCOMPARE(settings.value(key, false).toBool(), isChecked && !isCanceled);
    // The folder that it stands in, where it can be seen among others.
    QCOMPARE(desktop.opened(), isChecked && !isCanceled ? QStringList(m_fixture->folder().path()) : QStringList());
}

void FileCommandsTest::workFolderIsAskedForWhenThereIsNone()
{
    start();
    selectRows(*m_fixture, 0, 0);
    QString title;
    whenModal<QFileDialog>(&m_fixture->window(), [&title](QFileDialog& chooser) {
        title = chooser.windowTitle();
        chooser.reject();
    });
    const DialogTitles dialogs;

    m_fixture->window().copySelectedFilesToWorkFolder();

    QCOMPARE(title, QStringLiteral("Choose Work Folder"));
    QVERIFY(dialogs.titles().isEmpty());
}

void FileCommandsTest::existingCopyIsAWarning()
{
    QDir().mkpath(file(QStringLiteral("work")));
    chooseWorkFolderInSettings(file(QStringLiteral("work")));
    const QString sound = file(QStringLiteral("a.wav"));
    TestSupport::writeFile(sound, "new");
    TestSupport::writeFile(file(QStringLiteral("work/a.wav")), "old");
    column(*m_fixture, QStringLiteral("UPDATE MetaData1 SET filePath='%1' WHERE id=1").arg(sound));
    start();
    m_fixture->view().selectAll();
    QString text;
    finish(*m_fixture, &text);

    m_fixture->window().copySelectedFilesToWorkFolder();

    QVERIFY2(text.contains(QLatin1String("Target file with the same name exists: ")), qPrintable(text));
    QVERIFY2(text.contains(QLatin1String("Invalid source file: ")), qPrintable(text));
    QCOMPARE(contents(file(QStringLiteral("work/a.wav"))), QByteArray("old"));
}

void FileCommandsTest::backupIsTheDatabase()
{
    start();
    const QString backup = file(QStringLiteral("backup.dat"));
    TestSupport::writeFile(backup, "an older backup");
    QString title;
    choosePath(*m_fixture, backup, &title);
    // The chooser asks before a file is replaced.
    answer(*m_fixture, QMessageBox::Warning, QMessageBox::Yes);
    Message outcome;
    answer(*m_fixture, QMessageBox::Information, QMessageBox::Ok, &outcome);

    m_fixture->child<QAction>("backupDatabaseAction")->trigger();

    QCOMPARE(title, QStringLiteral("Backup Database File"));
    QCOMPARE(outcome.title, QStringLiteral("Database Backup"));
    QCOMPARE(outcome.text, QStringLiteral("Database backup created successfully"));
    QCOMPARE(contents(backup), contents(m_fixture->databaseFile()));
    QCOMPARE(Settings(QStringLiteral("BackupDatabaseDialog")).value(QStringLiteral("lookupDirectory")).toString(),
        m_fixture->folder().path());
    // The table is open as before.
    QVERIFY(m_fixture->window().isDatabaseOpened());
    m_fixture->view().setLookup(QStringLiteral("bell"), true);
    QTRY_COMPARE(m_fixture->counters(), QStringLiteral("Found Records: 20"));
}

void FileCommandsTest::backupOntoTheDatabaseIsRefused()
{
    start();
    choosePath(*m_fixture, m_fixture->databaseFile());
    answer(*m_fixture, QMessageBox::Warning, QMessageBox::Yes);
    QString text;
    finish(*m_fixture, &text);

    m_fixture->child<QAction>("backupDatabaseAction")->trigger();

    QVERIFY2(text.contains(QLatin1String("The database cannot be its own backup: ")), qPrintable(text));
    QVERIFY(m_fixture->window().isDatabaseOpened());
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows);
}

void FileCommandsTest::damagedDatabaseIsToldWithTheBackup()
{
    start();
    // Of a table that the window does not show, as damage that nobody has met yet.
    damagePagesOf(m_fixture->databaseFile(), { QStringLiteral("MetaData3") });
    const QString backup = file(QStringLiteral("backup.dat"));
    choosePath(*m_fixture, backup);
    Message outcome;
    answer(*m_fixture, QMessageBox::Critical, QMessageBox::Ok, &outcome);

    m_fixture->child<QAction>("backupDatabaseAction")->trigger();

    QCOMPARE(outcome.title, QStringLiteral("Database Backup"));
    QVERIFY2(outcome.text.startsWith(QLatin1String("The database is damaged")), qPrintable(outcome.text));
    QVERIFY(contents(backup) == contents(m_fixture->databaseFile()));
}

void FileCommandsTest::canceledChooserBacksNothingUp()
{
    start();
    whenModal<QFileDialog>(&m_fixture->window(), [](QFileDialog& chooser) { chooser.reject(); });
    const DialogTitles dialogs;

    m_fixture->child<QAction>("backupDatabaseAction")->trigger();

    QVERIFY(dialogs.titles().isEmpty());
    QVERIFY(m_fixture->window().isDatabaseOpened());
}

void FileCommandsTest::restoreBringsTheBackupBack()
{
    const QString backup = file(QStringLiteral("backup.dat"));
    QVERIFY(QFile::copy(m_fixture->databaseFile(), backup));
    column(*m_fixture, QStringLiteral("DELETE FROM MetaData1 WHERE id > 10"));
    Settings(QStringLiteral("MainWindow")).setValue(QStringLiteral("tableId"), 3);
    start();
    QCOMPARE(m_fixture->counters(), QStringLiteral("Found Records: %1").arg(rowsOfTable3));
    QString title;
    choosePath(*m_fixture, backup, &title);
    Message outcome;
    answer(*m_fixture, QMessageBox::Information, QMessageBox::Ok, &outcome);

    m_fixture->child<QAction>("restoreDatabaseAction")->trigger();

    QCOMPARE(title, QStringLiteral("Restore Database File"));
    QCOMPARE(outcome.text, QStringLiteral("Database restored successfully"));
    QTRY_COMPARE(m_fixture->counters(), QStringLiteral("Found Records: %1").arg(sampleRows));
    QCOMPARE(m_fixture->view().tableId(), 1);
    const QStringList files = QFileInfo(m_fixture->databaseFile()).dir().entryList(QDir::Files);
    QVERIFY2(files.filter(QStringLiteral(".backup")).isEmpty(), qPrintable(files.join(QLatin1Char(' '))));
}

void FileCommandsTest::restoreOfAStrangeFileKeepsTheDatabase()
{
    start();
    const QString strange = file(QStringLiteral("strange.dat"));
    TestSupport::writeFile(strange, "this is no database");
    choosePath(*m_fixture, strange);
    Message failure;
    answer(*m_fixture, QMessageBox::Critical, QMessageBox::Ok, &failure);

    m_fixture->child<QAction>("restoreDatabaseAction")->trigger();

    QCOMPARE(failure.title, QStringLiteral("Database Restore"));
    QCOMPARE(failure.text, QStringLiteral("Database restore failed"));
    QVERIFY(!failure.informativeText.isEmpty());
    QVERIFY(m_fixture->window().isDatabaseOpened());
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(), sampleRows);
}

QTEST_MAIN(FileCommandsTest)
#include "tst_filecommands.moc"
