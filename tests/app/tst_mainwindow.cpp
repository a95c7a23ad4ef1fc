// SPDX-License-Identifier: GPL-3.0-or-later
// What the main window does by itself: views, lookup, counters, tables, its state, its start and its end.
#include "tests/app/windowfixture.h"

#include "browse/metadatamodel.h"
#include "store/database.h"
#include "store/operationreply.h"
#include "tests/support/messagerecorder.h"
#include "tests/support/testsupport.h"
#include "ui/pixmapwidget.h"
#include "ui/settings.h"
#include "ui/warrantydisclaimerdialog.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QWindow>
#include <QtTest>

namespace {

QString found(int rows)
{
    return QStringLiteral("Found Records: %1").arg(rows);
}

QVariant storedValue(const WindowFixture& fixture, const char* key)
{
    const QSettings settings(fixture.dataFile(QStringLiteral("Settings.ini")), QSettings::IniFormat);
    return settings.value(QLatin1String("MainWindow/") + QLatin1String(key));
}

// Changes the catalogue from outside.
void execute(const WindowFixture& fixture, const QString& statement)
{
    const QString name = QStringLiteral("Outside");
    {
        QSqlDatabase connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        connection.setDatabaseName(fixture.databaseFile());
        QVERIFY(connection.open());
        QVERIFY(QSqlQuery(connection).exec(statement));
    }
    QSqlDatabase::removeDatabase(name);
}

QAction* tableAction(WindowFixture& fixture, int tableId)
{
    return fixture.child<QAction>("openTableAction")->menu()->actions().at(tableId - 1);
}

void selectRows(MetaDataView& view, int count)
{
    const QItemSelection rows(view.model()->index(0, 0), view.model()->index(count - 1, 0));
    view.selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

} // namespace

class MainWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void countersAreEmptyUntilTheCountIsKnown();
    void countersShowRowsAndSelection();
    void viewButtonsChooseTheRows();
    void typedLookupIsAppliedAfterAPause();
    void returnAppliesTheLookupAtOnce();
    void lookupThatCannotBeAnsweredIsToldBesideTheRows();
    void filePathLookupFindsFolders();
    void requeryShowsWhatChanged();
    void laterRequeryFollowsSoon();
    void openingATableShowsItsRowsAndRemembersIt();
    void titleAndMenuShowTableNames();
    void titleShowsEverySignOfAName();
    void hintIsShownOverAnEmptyTableOnly();
    void busySpriteFollowsProcessing();
    void rowThatWasLookedUpBecomesCurrentAndVisible();
    void failedRowLookupSelectsNothing();
    void closingEndsTheStore();
    void closingDuringAQueryEndsTheStore();
    void destroyingWithoutClosingEndsTheStore();
    void acceptedDisclaimerIsRemembered();
    void rejectedDisclaimerQuits();
    void windowThatEndsAtOnceAsksNothing_data();
    void windowThatEndsAtOnceAsksNothing();
};

void MainWindowTest::countersAreEmptyUntilTheCountIsKnown()
{
    WindowFixture fixture;

    fixture.build();

    QCOMPARE(fixture.counters(), QString());
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
}

void MainWindowTest::countersShowRowsAndSelection()
{
    WindowFixture fixture;
    fixture.start();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));

    selectRows(fixture.view(), 3);
    QCOMPARE(fixture.counters(), found(sampleRows) + QStringLiteral(" (3 selected)"));

    selectRows(fixture.view(), sampleRows);
    QCOMPARE(fixture.counters(), found(sampleRows));

    fixture.view().clearSelection();
    QCOMPARE(fixture.counters(), found(sampleRows));
}

void MainWindowTest::viewButtonsChooseTheRows()
{
    WindowFixture fixture;
    fixture.start();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));

    QTest::mouseClick(fixture.child<QPushButton>("viewLastScannedButton"), Qt::LeftButton);
    QTRY_COMPARE(fixture.counters(), found(lastScannedSampleRows));

    QTest::mouseClick(fixture.child<QPushButton>("viewPlaylistButton"), Qt::LeftButton);
    QTRY_COMPARE(fixture.counters(), found(playlistSampleRows));

    QTest::mouseClick(fixture.child<QPushButton>("viewAllButton"), Qt::LeftButton);
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
}

void MainWindowTest::typedLookupIsAppliedAfterAPause()
{
    WindowFixture fixture;
    fixture.start();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));

    QTest::keyClicks(fixture.child<QLineEdit>("lookupEdit"), QStringLiteral("bell"));

    QVERIFY(!fixture.view().metaDataModel()->isProcessing());
    QTRY_COMPARE(fixture.counters(), found(sampleRows / 3));
    fixture.child<QLineEdit>("lookupEdit")->clear();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
}

void MainWindowTest::returnAppliesTheLookupAtOnce()
{
    WindowFixture fixture;
    fixture.start();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    auto* edit = fixture.child<QLineEdit>("lookupEdit");
    QTest::keyClicks(edit, QStringLiteral("bell"));

    QTest::keyClick(edit, Qt::Key_Return);

    QVERIFY(fixture.view().metaDataModel()->isProcessing());
    QTRY_COMPARE(fixture.counters(), found(sampleRows / 3));
}

void MainWindowTest::lookupThatCannotBeAnsweredIsToldBesideTheRows()
{
    WindowFixture fixture;
    fixture.start();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    const TestSupport::MessageRecorder log;
    auto* edit = fixture.child<QLineEdit>("lookupEdit");
    const QString failure = QStringLiteral("Lookup failed: unexpected double quote in the lookup");

    edit->setText(QStringLiteral("12\""));
    QTRY_COMPARE(fixture.counters(), failure);
    QCOMPARE(fixture.child<QLabel>("rowCountersLabel")->toolTip(), failure);
    QCOMPARE(fixture.view().model()->rowCount(), sampleRows);
    selectRows(fixture.view(), 2);
    QCOMPARE(fixture.counters(), failure + QStringLiteral(" (2 selected)"));

    edit->clear();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    QCOMPARE(log.messages(QtCriticalMsg).size(), 1);
}

void MainWindowTest::filePathLookupFindsFolders()
{
    WindowFixture fixture;
    fixture.start();
    QTest::keyClicks(fixture.child<QLineEdit>("lookupEdit"), QStringLiteral("harbour"));
    QTRY_COMPARE(fixture.counters(), found(0));

    fixture.child<QAction>("filePathLookupAction")->trigger();

    QTRY_COMPARE(fixture.counters(), found(sampleRows / 2));
}

void MainWindowTest::requeryShowsWhatChanged()
{
    WindowFixture fixture;
    fixture.start();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    execute(fixture, QStringLiteral("DELETE FROM MetaData1 WHERE playlist=1"));

    fixture.window().requery();

    QTRY_COMPARE(fixture.counters(), found(sampleRows - playlistSampleRows));
}

void MainWindowTest::laterRequeryFollowsSoon()
{
    WindowFixture fixture;
    fixture.start();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    QSignalSpy requeried(&fixture.view(), &MetaDataView::requeried);

    fixture.window().requeryLater();
    fixture.window().requeryLater();

    QCOMPARE(requeried.count(), 0);
    QVERIFY(requeried.wait());
    QTRY_VERIFY(!fixture.view().metaDataModel()->isProcessing());
    QCOMPARE(requeried.count(), 1);
}

void MainWindowTest::openingATableShowsItsRowsAndRemembersIt()
{
    WindowFixture fixture;
    fixture.start();
    QCOMPARE(fixture.window().windowTitle(), QStringLiteral("Vellumcast - Table1"));

    tableAction(fixture, 3)->trigger();

    QCOMPARE(fixture.window().windowTitle(), QStringLiteral("Vellumcast - Table3"));
    QTRY_COMPARE(fixture.counters(), found(rowsOfTable3));
    fixture.close();
    QCOMPARE(storedValue(fixture, "tableId").toInt(), 3);
}

void MainWindowTest::titleAndMenuShowTableNames()
{
    WindowFixture fixture;
    execute(fixture,
        QStringLiteral("INSERT INTO Settings (key, value) "
                       "VALUES ('tableDisplayNames', CAST('Doors & <b>Bells</b>;;Gamma' AS BLOB))"));

    fixture.start();

    QTRY_COMPARE(fixture.window().windowTitle(), QStringLiteral("Vellumcast - Doors & <b>Bells</b>"));
    QCOMPARE(tableAction(fixture, 1)->text(), QStringLiteral("Doors && <b>Bells</b>"));
    QCOMPARE(tableAction(fixture, 2)->text(), QStringLiteral("Table2"));
    QCOMPARE(tableAction(fixture, 3)->text(), QStringLiteral("Gamma"));
    QCOMPARE(tableAction(fixture, 15)->text(), QStringLiteral("Table15"));
}

// "[*]" in a window's title means whether something is unsaved.
void MainWindowTest::titleShowsEverySignOfAName()
{
    WindowFixture fixture;
    execute(fixture,
        QStringLiteral(
            "INSERT INTO Settings (key, value) VALUES ('tableDisplayNames', CAST('[*] a [*][*]%1' AS BLOB))"));

    fixture.start();

    QTRY_COMPARE(fixture.window().windowHandle()->title(), QStringLiteral("Vellumcast - [*] a [*][*]%1"));
    QCOMPARE(tableAction(fixture, 1)->text(), QStringLiteral("[*] a [*][*]%1"));
}

void MainWindowTest::hintIsShownOverAnEmptyTableOnly()
{
    WindowFixture fixture;
    fixture.start();
    auto* hint = fixture.child<QLabel>("emptyTableHint");
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    QVERIFY(!hint->isVisible());

    // Rows there are, only none of these.
    fixture.view().setTableId(3);
    QTest::mouseClick(fixture.child<QPushButton>("viewPlaylistButton"), Qt::LeftButton);
    QTRY_COMPARE(fixture.counters(), found(rowsOfTable3));
    QTest::keyClicks(fixture.child<QLineEdit>("lookupEdit"), QStringLiteral("nowhere"));
    QTRY_COMPARE(fixture.counters(), found(0));
    QVERIFY(!hint->isVisible());

    fixture.child<QLineEdit>("lookupEdit")->clear();
    QTest::mouseClick(fixture.child<QPushButton>("viewAllButton"), Qt::LeftButton);
    fixture.view().setTableId(4);
    QTRY_VERIFY(hint->isVisible());
    // The table gets the mouse and what is dropped.
    QWidget* viewport = fixture.view().viewport();
    QVERIFY(!viewport->childAt(viewport->rect().center()));
    const QImage withHint = viewport->grab().toImage();
    hint->hide();
    QVERIFY(viewport->grab().toImage() != withHint);
}

void MainWindowTest::busySpriteFollowsProcessing()
{
    WindowFixture fixture;
    fixture.start();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    const auto* sprite = fixture.child<PixmapWidget>("progressIconWidget");
    QTRY_VERIFY(!sprite->isPictureVisible());
    QCOMPARE(sprite->frameSize(), QSize(20, 20));

    emit fixture.view().processingStarted();
    QVERIFY(!sprite->isPictureVisible());
    QTRY_VERIFY(sprite->isPictureVisible());

    emit fixture.view().processingFinished();
    QTRY_VERIFY(!sprite->isPictureVisible());
}

void MainWindowTest::rowThatWasLookedUpBecomesCurrentAndVisible()
{
    WindowFixture fixture;
    fixture.start();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    const int row = sampleRows - 2;
    const QString statement = QStringLiteral("SELECT id FROM MetaData1 ORDER BY filePath LIMIT 1 OFFSET %1");
    const auto id = TestSupport::firstValue(fixture.databaseFile(), statement.arg(row)).toLongLong();
    QVERIFY(!fixture.view().viewport()->rect().intersects(
        fixture.view().visualRect(fixture.view().model()->index(row, 0))));

    OperationReply* reply = fixture.view().metaDataModel()->lookupRow(id);
    connect(reply, &OperationReply::finished, &fixture.window(), &MainWindow::finalizeRowLookup);

    QTRY_COMPARE(fixture.view().currentIndex().row(), row);
    QVERIFY(fixture.view().viewport()->rect().intersects(fixture.view().visualRect(fixture.view().currentIndex())));
}

void MainWindowTest::failedRowLookupSelectsNothing()
{
    WindowFixture fixture;
    fixture.start();
    QTRY_COMPARE(fixture.counters(), found(sampleRows));
    OperationReply* reply = fixture.view().metaDataModel()->lookupRow(123456789);
    QSignalSpy destroyed(reply, &QObject::destroyed);

    connect(reply, &OperationReply::finished, &fixture.window(), &MainWindow::finalizeRowLookup);

    QVERIFY(destroyed.wait());
    QCOMPARE(fixture.view().selectedRowsCount(), 0);
}

void MainWindowTest::closingEndsTheStore()
{
    WindowFixture fixture;
    MainWindow& window = fixture.start();
    QVERIFY(window.isDatabaseOpened());
    const TestSupport::MessageRecorder log;

    QVERIFY(window.close());

    QVERIFY(!window.isDatabaseOpened());
    QVERIFY(!window.isVisible());
    QCOMPARE(QSqlDatabase::connectionNames(), QStringList());
    QCOMPARE(log.messages(), QStringList());
}

void MainWindowTest::closingDuringAQueryEndsTheStore()
{
    WindowFixture fixture;
    MainWindow& window = fixture.start();
    const TestSupport::MessageRecorder log;
    fixture.view().setLookup(QStringLiteral("bell"), true);
    tableAction(fixture, 3)->trigger();

    QVERIFY(window.close());

    QVERIFY(!window.isDatabaseOpened());
    QCOMPARE(log.messages(QtCriticalMsg), QStringList());
}

void MainWindowTest::destroyingWithoutClosingEndsTheStore()
{
    Settings::setFileName(QString());
    {
        WindowFixture fixture;
        const TestSupport::MessageRecorder log;
        {
            const MainWindow window;
            QVERIFY(window.isDatabaseOpened());
        }
        QStringList messages = log.messages();
        // The test machine has no sound.
        messages.removeAll(QStringLiteral("Raw audio format not supported by backend, cannot play audio"));
        QCOMPARE(messages, QStringList());
    }
    QCOMPARE(QSqlDatabase::connectionNames(), QStringList());
}

void MainWindowTest::acceptedDisclaimerIsRemembered()
{
    WindowFixture fixture;
    Settings settings(QStringLiteral("WarrantyDisclaimer"));
    settings.setValue(QStringLiteral("accepted"), false);
    fixture.build();
    int shown = 0;
    whenModal<WarrantyDisclaimerDialog>(&fixture.window(), [&shown](WarrantyDisclaimerDialog& dialog) {
        ++shown;
        dialog.accept();
    });

    fixture.window().showWarrantyDisclaimerDialog();

    QCOMPARE(shown, 1);
    QVERIFY(settings.value(QStringLiteral("accepted")).toBool());
    // A second dialog would wait for an answer that nobody gives.
    fixture.window().showWarrantyDisclaimerDialog();
}

void MainWindowTest::rejectedDisclaimerQuits()
{
    WindowFixture fixture;
    Settings settings(QStringLiteral("WarrantyDisclaimer"));
    settings.setValue(QStringLiteral("accepted"), false);
    MainWindow& window = fixture.build();
    whenModal<WarrantyDisclaimerDialog>(
        &window, [](WarrantyDisclaimerDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    window.showWindow();

    QCOMPARE(QApplication::exec(), 0);

    QVERIFY(!settings.value(QStringLiteral("accepted")).toBool());
}

void MainWindowTest::windowThatEndsAtOnceAsksNothing_data()
{
    QTest::addColumn<bool>("isClosedFirst");
    QTest::newRow("closed by the user") << true;
    QTest::newRow("destroyed when the application quits") << false;
}

void MainWindowTest::windowThatEndsAtOnceAsksNothing()
{
    QFETCH(bool, isClosedFirst);
    WindowFixture fixture;
    Settings(QStringLiteral("WarrantyDisclaimer")).setValue(QStringLiteral("accepted"), false);
    auto window = std::make_unique<MainWindow>();
    bool isAsked = false;
    QObject context;
    whenModal<WarrantyDisclaimerDialog>(&context, [&isAsked](WarrantyDisclaimerDialog& dialog) {
        isAsked = true;
        dialog.accept();
    });
    // It is on its way when the end begins; the store's closing delivers it.
    QMetaObject::invokeMethod(window.get(), &AdvancedWindow::showed, Qt::QueuedConnection);

    if (isClosedFirst)
        window->close();
    window.reset();

    QVERIFY(!isAsked);
}

QTEST_MAIN(MainWindowTest)

#include "tst_mainwindow.moc"
