// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/windowfixture.h"

#include "browse/metadatamodel.h"
#include "store/operationreply.h"
#include "tests/scan/soundfiles.h"
#include "tests/support/messagerecorder.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"
#include "ui/operationdialog.h"
#include "ui/settings.h"
#include "ui/warrantydisclaimerdialog.h"

#include <QCheckBox>
#include <QDir>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QUrl>
#include <QtTest>

namespace {

const QString optionKey = QStringLiteral("showLastScannedOnly");
const QString folderKey = QStringLiteral("lookupDirectory");

QString found(int rows)
{
    return QStringLiteral("Found Records: %1").arg(rows);
}

// A folder with this many real sounds; its path.
QString makeSounds(WindowFixture& fixture, int count, const QString& name = QStringLiteral("sounds"))
{
    QString folder = fixture.folder().filePath(name);
    for (int number = 0; number < count; ++number)
        TestSupport::writeFile(QStringLiteral("%1/take %2.wav").arg(folder).arg(number), SoundFiles::wave());
    return folder;
}

QPushButton& button(OperationDialog& dialog)
{
    return *dialog.findChild<QPushButton*>();
}

bool isFinished(OperationDialog& dialog)
{
    return button(dialog).text() == QLatin1String("Finish");
}

QString status(const OperationDialog& dialog)
{
    return dialog.findChild<QLabel*>(QStringLiteral("statusLabel"))->text();
}

QCheckBox& option(OperationDialog& dialog)
{
    return *dialog.findChild<QCheckBox*>();
}

// Presses "Finish" once the scan is done, with the option as wished.
void finishScan(WindowFixture& fixture, bool showLastScannedOnly)
{
    const auto finish = [showLastScannedOnly](OperationDialog& dialog) {
        option(dialog).setChecked(showLastScannedOnly);
        QTest::mouseClick(&button(dialog), Qt::LeftButton);
    };
    whenModal<OperationDialog>(&fixture.window(), finish, isFinished);
}

void drop(MetaDataView& view, const QList<QUrl>& urls)
{
    QMimeData data;
    data.setUrls(urls);
    const QPoint point(40, 40);
    QDragEnterEvent enterEvent(point, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.viewport(), &enterEvent);
    QVERIFY(enterEvent.isAccepted());
    QDropEvent event(point, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.viewport(), &event);
}

Settings scanSettings()
{
    return Settings(QStringLiteral("ScanDialog"));
}

} // namespace

class ScanCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void chooserAsksForAFolder();
    void chosenFolderIsScannedAndItsParentRemembered();
    void abandonedChooserScansNothing();
    void dialogStaysOpenAtTheEnd();
    void onlyLastScannedFilesAreShownIfWished();
    void allFilesAreShownIfWished();
    void secondScanRefreshesTheLastScannedView();
    void scanGoesIntoTheCurrentTableOnly();
    void folderWithoutSoundsClosesByItself();
    void canceledScanLeavesTheTable();
    void damagedFilesAreReported();
    void rulesOfTheDataFolderAreUsed();
    void rulesOfTheResourcesAreUsedOtherwise();
    void droppedFilesAreScanned();
    void scanDuringAScanIsIgnored();
    void dropBelowTheDisclaimerIsIgnored();
    void dropBeforeClosingIsIgnored();
    void quittingDuringAScanLeavesTheTable();
};

void ScanCommandTest::chooserAsksForAFolder()
{
    WindowFixture fixture;
    fixture.start();
    scanSettings().setValue(folderKey, fixture.folder().path());
    QString title;
    whenModal<QFileDialog>(&fixture.window(), [&fixture, &title](QFileDialog& chooser) {
        title = chooser.windowTitle();
        QCOMPARE(chooser.fileMode(), QFileDialog::Directory);
        QVERIFY(chooser.testOption(QFileDialog::ShowDirsOnly));
        QVERIFY(chooser.testOption(QFileDialog::ReadOnly));
        QCOMPARE(chooser.directory().path(), fixture.folder().path());
        chooser.reject();
    });

    QTest::mouseClick(fixture.child<QPushButton>("scanFilesButton"), Qt::LeftButton);

    QCOMPARE(title, QStringLiteral("Scan Media Files"));
}

void ScanCommandTest::chosenFolderIsScannedAndItsParentRemembered()
{
    WindowFixture fixture;
    fixture.start();
    const QString folder = makeSounds(fixture, 3);
    whenModal<QFileDialog>(&fixture.window(), [&folder](QFileDialog& chooser) {
        chooser.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(folder);
        QMetaObject::invokeMethod(&chooser, "accept");
    });
    finishScan(fixture, true);

    fixture.child<QAction>("scanFilesAction")->trigger();

    QTRY_COMPARE(fixture.counters(), found(3));
    QCOMPARE(scanSettings().value(folderKey).toString(), fixture.folder().path());
}

void ScanCommandTest::abandonedChooserScansNothing()
{
    WindowFixture fixture;
    fixture.start();
    whenModal<QFileDialog>(&fixture.window(), [](QFileDialog& chooser) { QTest::keyClick(&chooser, Qt::Key_Escape); });

    fixture.child<QAction>("scanFilesAction")->trigger();

    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(!scanSettings().contains(folderKey));
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
}

void ScanCommandTest::dialogStaysOpenAtTheEnd()
{
    WindowFixture fixture;
    fixture.start();
    const QString folder = makeSounds(fixture, 3);
    QString title;
    const auto look = [&title](OperationDialog& dialog) {
        title = dialog.windowTitle();
        QCOMPARE(option(dialog).text(), QStringLiteral("Show only last scanned files after completion"));
        QVERIFY(option(dialog).isVisible());
        QVERIFY(option(dialog).isChecked());
        QCOMPARE(status(dialog), QStringLiteral("Files scanned: 3 of 3"));
        QTest::keyClick(&dialog, Qt::Key_Escape);
    };
    whenModal<OperationDialog>(&fixture.window(), look, isFinished);

    fixture.window().scan({ folder });

    QCOMPARE(title, QStringLiteral("Scanning Media Files"));
}

void ScanCommandTest::onlyLastScannedFilesAreShownIfWished()
{
    WindowFixture fixture;
    fixture.start();
    const QString folder = makeSounds(fixture, 3);
    finishScan(fixture, true);

    fixture.window().scan({ folder });

    QVERIFY(fixture.child<QPushButton>("viewLastScannedButton")->isChecked());
    QVERIFY(!fixture.child<QPushButton>("viewAllButton")->isChecked());
    QTRY_COMPARE(fixture.counters(), found(3));
    QVERIFY(scanSettings().value(optionKey).toBool());
}

void ScanCommandTest::allFilesAreShownIfWished()
{
    WindowFixture fixture;
    fixture.start();
    const QString folder = makeSounds(fixture, 3);
    finishScan(fixture, false);

    fixture.window().scan({ folder });

    QVERIFY(fixture.child<QPushButton>("viewAllButton")->isChecked());
    QTRY_COMPARE(fixture.counters(), found(sampleRows + 3));
    QVERIFY(scanSettings().contains(optionKey));
    QVERIFY(!scanSettings().value(optionKey).toBool());
}

void ScanCommandTest::secondScanRefreshesTheLastScannedView()
{
    WindowFixture fixture;
    fixture.start();
    finishScan(fixture, true);
    fixture.window().scan({ makeSounds(fixture, 3) });
    QTRY_COMPARE(fixture.counters(), found(3));
    finishScan(fixture, true);

    fixture.window().scan({ makeSounds(fixture, 2, QStringLiteral("others")) });

    QTRY_COMPARE(fixture.counters(), found(2));
}

void ScanCommandTest::scanGoesIntoTheCurrentTableOnly()
{
    WindowFixture fixture;
    fixture.start();
    fixture.view().setTableId(4);
    finishScan(fixture, false);

    fixture.window().scan({ makeSounds(fixture, 3) });

    QTRY_COMPARE(fixture.counters(), found(3));
    const QString count = QStringLiteral("SELECT COUNT(*) FROM MetaData%1");
    QCOMPARE(TestSupport::firstValue(fixture.databaseFile(), count.arg(1)).toInt(), sampleRows);
    QCOMPARE(TestSupport::firstValue(fixture.databaseFile(), count.arg(4)).toInt(), 3);
}

void ScanCommandTest::folderWithoutSoundsClosesByItself()
{
    WindowFixture fixture;
    fixture.start();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    QDir(fixture.folder().path()).mkdir(QStringLiteral("empty"));
    QSignalSpy requeried(&fixture.view(), &MetaDataView::requeried);

    // Nobody presses a button here.
    fixture.window().scan({ fixture.folder().filePath(QStringLiteral("empty")) });

    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(requeried.count() > 0 || requeried.wait());
    QCOMPARE(fixture.counters(), found(sampleRows));
    QVERIFY(!scanSettings().contains(optionKey));
}

void ScanCommandTest::canceledScanLeavesTheTable()
{
    WindowFixture fixture;
    fixture.start();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    const QString folder = makeSounds(fixture, 1500);
    whenModal<OperationDialog>(
        &fixture.window(), [](OperationDialog& dialog) { QTest::mouseClick(&button(dialog), Qt::LeftButton); },
        [](OperationDialog& dialog) {
            return status(dialog).startsWith(QLatin1String("Files scanned: ")) && !isFinished(dialog);
        });

    fixture.window().scan({ folder });

    QVERIFY(fixture.child<QPushButton>("viewAllButton")->isChecked());
    const QString count = QStringLiteral("SELECT COUNT(*) FROM MetaData1");
    QCOMPARE(TestSupport::firstValue(fixture.databaseFile(), count).toInt(), sampleRows);
    QVERIFY(!scanSettings().contains(optionKey));
}

void ScanCommandTest::damagedFilesAreReported()
{
    WindowFixture fixture;
    fixture.start();
    const QString folder = makeSounds(fixture, 3);
    TestSupport::writeFile(folder + QStringLiteral("/broken.wav"), "no sound");
    QString console;
    QString line;
    const auto look = [&console, &line](OperationDialog& dialog) {
        console = dialog.findChild<QPlainTextEdit*>(QStringLiteral("warningsConsole"))->toPlainText();
        line = status(dialog);
        dialog.reject();
    };
    whenModal<OperationDialog>(&fixture.window(), look, isFinished);

    fixture.window().scan({ folder });

    QCOMPARE(console, QStringLiteral("Unable to open input: %1/broken.wav").arg(folder));
    QVERIFY2(line.startsWith(QStringLiteral("Files scanned: 4 of 4")), qPrintable(line));
    QTRY_COMPARE(fixture.counters(), found(3));
}

void ScanCommandTest::rulesOfTheDataFolderAreUsed()
{
    WindowFixture fixture;
    fixture.start();
    TestSupport::writeFile(
        fixture.dataFile(QStringLiteral("LibraryEvaluationRules.txt")), "\xEF\xBB\xBFHarbour Tapes: ^take\n");
    finishScan(fixture, true);

    fixture.window().scan({ makeSounds(fixture, 2) });

    const QString statement = QStringLiteral("SELECT library FROM MetaData1 WHERE scanTimestamp > 2000");
    const QVariantList libraries = TestSupport::firstColumn(fixture.databaseFile(), statement);
    QCOMPARE(libraries, QVariantList({ QStringLiteral("Harbour Tapes"), QStringLiteral("Harbour Tapes") }));
}

void ScanCommandTest::rulesOfTheResourcesAreUsedOtherwise()
{
    WindowFixture fixture;
    fixture.start();
    const TestSupport::MessageRecorder log;
    // One of the names that the rules which come with the program know.
    const QString file = fixture.folder().filePath(QStringLiteral("ZR123 surf.wav"));
    TestSupport::writeFile(file, SoundFiles::wave());
    finishScan(fixture, true);

    fixture.window().scan({ file });

    const QString statement = QStringLiteral("SELECT library FROM MetaData1 WHERE scanTimestamp > 2000");
    QCOMPARE(TestSupport::firstValue(fixture.databaseFile(), statement).toString(), QStringLiteral("Cinder Tides"));
    QCOMPARE(log.messages(QtCriticalMsg), QStringList());
}

void ScanCommandTest::droppedFilesAreScanned()
{
    WindowFixture fixture;
    fixture.start();
    const QString folder = makeSounds(fixture, 3);
    finishScan(fixture, true);

    drop(fixture.view(),
        { QUrl::fromLocalFile(folder + QStringLiteral("/take 0.wav")),
            QUrl::fromLocalFile(folder + QStringLiteral("/take 2.wav")),
            QUrl(QStringLiteral("http://localhost/take.wav")) });

    QTRY_COMPARE(fixture.counters(), found(2));
}

void ScanCommandTest::scanDuringAScanIsIgnored()
{
    WindowFixture fixture;
    fixture.start();
    const QString folder = makeSounds(fixture, 2);
    const QString others = makeSounds(fixture, 5, QStringLiteral("others"));
    const auto scanOthers = [&fixture, &others](OperationDialog& dialog) {
        fixture.window().scan({ others });
        QCOMPARE(fixture.window().findChildren<OperationDialog*>().size(), 1);
        dialog.reject();
    };
    whenModal<OperationDialog>(&fixture.window(), scanOthers, isFinished);

    fixture.window().scan({ folder });

    QTRY_COMPARE(fixture.counters(), found(2));
}

void ScanCommandTest::dropBelowTheDisclaimerIsIgnored()
{
    WindowFixture fixture;
    Settings(QStringLiteral("WarrantyDisclaimer")).setValue(QStringLiteral("accepted"), false);
    fixture.build();
    const QString folder = makeSounds(fixture, 3);
    whenModal<WarrantyDisclaimerDialog>(&fixture.window(), [&fixture, &folder](WarrantyDisclaimerDialog& dialog) {
        fixture.window().scan({ folder });
        QVERIFY(fixture.window().findChildren<OperationDialog*>().isEmpty());
        dialog.accept();
    });

    fixture.window().showWarrantyDisclaimerDialog();

    QTRY_COMPARE(fixture.counters(), found(sampleRows));
}

void ScanCommandTest::dropBeforeClosingIsIgnored()
{
    WindowFixture fixture;
    fixture.start();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    const QString folder = makeSounds(fixture, 3);
    TestSupport::StoreHold hold(*fixture.view().metaDataModel()->database());
    bool isAsked = false;
    // After the window's own connection: by then a scan would have begun.
    connect(&fixture.view(), &MetaDataView::scanRequested, this, [&] {
        isAsked = true;
        hold.release();
    });
    bool isShown = false;
    whenModal<OperationDialog>(&fixture.window(), [&](OperationDialog& dialog) {
        isShown = true;
        hold.release();
        dialog.reject();
    });

    drop(fixture.view(), { QUrl::fromLocalFile(folder) });
    fixture.close();

    QVERIFY(isAsked);
    QVERIFY(!isShown);
    const QString count = QStringLiteral("SELECT COUNT(*) FROM MetaData1");
    QCOMPARE(TestSupport::firstValue(fixture.databaseFile(), count).toInt(), sampleRows);
}

void ScanCommandTest::quittingDuringAScanLeavesTheTable()
{
    WindowFixture fixture;
    MainWindow& window = fixture.start();
    const QString folder = makeSounds(fixture, 400);
    whenModal<OperationDialog>(
        &window, [](OperationDialog&) { QCoreApplication::quit(); },
        [](OperationDialog& dialog) { return status(dialog).startsWith(QLatin1String("Files scanned: ")); });
    QTimer::singleShot(0, &window, [&window, &folder] { window.scan({ folder }); });

    QCOMPARE(QApplication::exec(), 0);
    fixture.close();

    const QString count = QStringLiteral("SELECT COUNT(*) FROM MetaData1");
    QCOMPARE(TestSupport::firstValue(fixture.databaseFile(), count).toInt(), sampleRows);
}

QTEST_MAIN(ScanCommandTest)

#include "tst_scancommand.moc"
