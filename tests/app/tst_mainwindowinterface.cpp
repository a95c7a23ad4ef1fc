// SPDX-License-Identifier: GPL-3.0-or-later
// What the main window shows: every menu, command, button, slider and label, and where they stand.
#include "tests/app/windowfixture.h"

#include <QContextMenuEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QSlider>
#include <QtTest>

namespace {

constexpr int smallWidth = 1020; // device-independent pixels

// As shown: without the marks of the keys that choose an entry.
QString shownText(QString text)
{
    text.replace(QLatin1String("&&"), QLatin1String("\x01"));
    return text.remove(QLatin1Char('&')).replace(QLatin1Char('\x01'), QLatin1Char('&'));
}

QStringList shownTexts(const QList<QAction*>& actions)
{
    QStringList texts;
    for (const QAction* action : actions)
        texts.append(action->isSeparator() ? QStringLiteral("-") : shownText(action->text()));
    return texts;
}

} // namespace

class MainWindowInterfaceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void tableHasTheFocusAtFirst();
    void actionIsThere_data();
    void actionIsThere();
    void buttonIsThere_data();
    void buttonIsThere();
    void widgetIsThere_data();
    void widgetIsThere();
    void menuHoldsItsEntries_data();
    void menuHoldsItsEntries();
    void subMenusAreAttached();
    void lookupEditHasItsHintAndClearButton();
    void viewButtonsExcludeEachOther();
    void contextMenuHoldsTheRecordCommands();
    void everyEntryOfAMenuHasAKeyOfItsOwn_data();
    void everyEntryOfAMenuHasAKeyOfItsOwn();
    void firstSizeIsThatOfTheLayout();
    void lookupEditIsTheWidestOfItsRow();
    void nothingIsClippedOrOverlaps_data();
    void nothingIsClippedOrOverlaps();
    void countIsWholeInTheSmallestWindow();
    void selectedCountIsWholeInTheFirstWindow();
    void narrowWindowKeepsTheButtonsAndGoesWithoutTheWordMark();
    void longCountersDoNotWidenTheWindow();
    void tabWalksFromTheTableThroughTheRowsAndBack();
    // The last: it takes their commands from the actions.
    void shortcutsWorkFromTheSearchField_data();
    void shortcutsWorkFromTheSearchField();

private:
    std::unique_ptr<WindowFixture> m_fixture;
};

void MainWindowInterfaceTest::initTestCase()
{
    m_fixture = std::make_unique<WindowFixture>();
    m_fixture->start();
    QTRY_COMPARE(m_fixture->counters(), QStringLiteral("Found Records: %1").arg(sampleRows));
}

void MainWindowInterfaceTest::cleanupTestCase()
{
    m_fixture.reset();
}

void MainWindowInterfaceTest::tableHasTheFocusAtFirst()
{
    QTRY_VERIFY(QApplication::focusWidget());
    QCOMPARE(QApplication::focusWidget()->objectName(), QStringLiteral("metaDataView"));
}

void MainWindowInterfaceTest::actionIsThere_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("toolTip");
    QTest::addColumn<QString>("shortcut");
    const auto add = [](const char* name, const char* text, const char* shortcut = "", const char* toolTip = nullptr) {
        QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(toolTip ? toolTip : text)
                            << QString::fromUtf8(shortcut);
    };
    add("openTableAction", "Open Table");
    add("quitAction", "Quit Vellumcast", "Ctrl+Q", "Quit");
    add("scanFilesAction", "Scan Files…");
    add("tableDisplayNamesAction", "Set Table Names…");
    add("deleteAllAction", "Delete All");
    add("backupDatabaseAction", "Backup Database…");
    add("restoreDatabaseAction", "Restore Database…");
    add("workFolderAction", "Choose Work Folder…");
    add("printReportAction", "Print Report…", "Ctrl+P");
    add("exportAction", "Export Records…", "Ctrl+E");
    add("aboutAction", "About Vellumcast");
    add("filePathLookupAction", "Search in File Path");
    add("searchAndReplaceAction", "Search and Replace…");
    add("libraryEvaluationRulesAction", "Set Library Evaluation Rules…");
    add("rebuildDatabaseAction", "Rebuild Database");
    add("columnsAction", "Columns");
    add("evaluateLibrariesAction", "(Re)Evaluate Libraries");
}

void MainWindowInterfaceTest::actionIsThere()
{
    QFETCH(QString, text);
    QFETCH(QString, toolTip);
    QFETCH(QString, shortcut);

    const auto* action = m_fixture->child<QAction>(QTest::currentDataTag());

    QVERIFY(action);
    QCOMPARE(shownText(action->text()), text);
    // A tool tip that was not set loses a trailing ellipsis.
    QVERIFY2(action->toolTip() == toolTip || action->toolTip() + QStringLiteral("…") == toolTip,
        qPrintable(action->toolTip()));
    QCOMPARE(action->shortcut().toString(), shortcut);
    QVERIFY(action->isEnabled());
    QCOMPARE(action->isCheckable(), action->objectName() == QLatin1String("filePathLookupAction"));
}

void MainWindowInterfaceTest::buttonIsThere_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("parentName");
    QTest::addColumn<bool>("isCheckable");
    const auto add = [](const char* name, const char* text, const char* parentName, bool isCheckable) {
        QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(parentName) << isCheckable;
    };
    add("scanFilesButton", "Scan Files…", "upperWidget", false);
    add("viewAllButton", "All", "viewButtonsWidget", true);
    add("viewLastScannedButton", "Last Scanned", "viewButtonsWidget", true);
    add("viewPlaylistButton", "Playlist", "viewButtonsWidget", true);
    add("autoPlayButton", "Auto", "playButtonsWidget", true);
    add("playbackButton", "Play", "playButtonsWidget", false);
    add("workFolderButton", "Choose Work Folder…", "upperWidget", false);
    add("showInfoButton", "Show Info…", "lowerWidget", false);
    add("revealInSystemFileManager", "Reveal in File Manager", "lowerWidget", false);
    add("copyToWorkFolderButton", "Copy to Work Folder", "lowerWidget", false);
    add("addToPlaylistButton", "Add to Playlist", "lowerWidget", false);
    add("removeFromPlaylistButton", "Remove from Playlist", "lowerWidget", false);
}

void MainWindowInterfaceTest::buttonIsThere()
{
    QFETCH(QString, text);
    QFETCH(QString, parentName);
    QFETCH(bool, isCheckable);

    const auto* button = m_fixture->child<QAbstractButton>(QTest::currentDataTag());

    QVERIFY(button);
    QCOMPARE(button->text(), text);
    QCOMPARE(button->parentWidget()->objectName(), parentName);
    QCOMPARE(button->isCheckable(), isCheckable);
    QVERIFY(button->isEnabled());
    QVERIFY(button->isVisible());
}

void MainWindowInterfaceTest::widgetIsThere_data()
{
    QTest::addColumn<QByteArray>("className");
    QTest::addColumn<QString>("parentName");
    const auto add = [](const char* name, const char* className, const char* parentName) {
        QTest::newRow(name) << QByteArray(className) << QString::fromUtf8(parentName);
    };
    add("menuBar", "QMenuBar", "MainWindow");
    add("fileMenu", "QMenu", "menuBar");
    add("editMenu", "QMenu", "menuBar");
    add("viewMenu", "QMenu", "menuBar");
    add("helpMenu", "QMenu", "menuBar");
    add("centralWidget", "QWidget", "MainWindow");
    add("topPanel", "QWidget", "centralWidget");
    add("upperWidget", "QWidget", "topPanel");
    add("lowerWidget", "QWidget", "topPanel");
    add("viewLabel", "QLabel", "upperWidget");
    add("viewButtonsWidget", "QWidget", "upperWidget");
    add("progressIconWidget", "PixmapWidget", "upperWidget");
    add("playButtonsWidget", "QWidget", "upperWidget");
    add("playbackSlider", "QSlider", "upperWidget");
    add("playbackVolumeLabel", "QLabel", "upperWidget");
    add("playbackVolumeSlider", "QSlider", "upperWidget");
    add("lookupEdit", "QLineEdit", "lowerWidget");
    add("rowCountersLabel", "QLabel", "lowerWidget");
    add("logoWidget", "LogoWidget", "lowerWidget");
    add("metaDataView", "MetaDataView", "centralWidget");
}

void MainWindowInterfaceTest::widgetIsThere()
{
    QFETCH(QByteArray, className);
    QFETCH(QString, parentName);

    const auto* widget = m_fixture->child<QWidget>(QTest::currentDataTag());

    QVERIFY(widget);
    QVERIFY2(widget->inherits(className.constData()), widget->metaObject()->className());
    QCOMPARE(widget->parentWidget()->objectName(), parentName);
    QVERIFY(widget->isEnabled());
}

void MainWindowInterfaceTest::menuHoldsItsEntries_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("entries");
    QTest::newRow("fileMenu") << QStringLiteral("File")
                              << QStringList({ QStringLiteral("Open Table"), QStringLiteral("Scan Files…"),
                                     QStringLiteral("Export Records…"), QStringLiteral("Print Report…"),
                                     QStringLiteral("Backup Database…"), QStringLiteral("Restore Database…"),
                                     QStringLiteral("Choose Work Folder…"), QStringLiteral("-"),
                                     QStringLiteral("Quit Vellumcast") });
    QTest::newRow("editMenu") << QStringLiteral("Edit")
                              << QStringList(
                                     { QStringLiteral("Search and Replace…"), QStringLiteral("Set Table Names…"),
                                         QStringLiteral("Set Library Evaluation Rules…"),
                                         QStringLiteral("(Re)Evaluate Libraries"), QStringLiteral("Rebuild Database"),
                                         QStringLiteral("Delete All") });
    QTest::newRow("viewMenu") << QStringLiteral("View")
                              << QStringList({ QStringLiteral("Columns"), QStringLiteral("Search in File Path") });
    QTest::newRow("helpMenu") << QStringLiteral("Help") << QStringList({ QStringLiteral("About Vellumcast") });
}

void MainWindowInterfaceTest::menuHoldsItsEntries()
{
    QFETCH(QString, title);
    QFETCH(QStringList, entries);

    const auto* menu = m_fixture->child<QMenu>(QTest::currentDataTag());

    QCOMPARE(shownText(menu->title()), title);
    QCOMPARE(shownTexts(menu->actions()), entries);
}

void MainWindowInterfaceTest::subMenusAreAttached()
{
    const QMenu* columns = m_fixture->child<QAction>("columnsAction")->menu();
    const QMenu* tables = m_fixture->child<QAction>("openTableAction")->menu();

    QCOMPARE(columns, m_fixture->view().columnsMenu());
    QVERIFY(tables);
    QCOMPARE(tables->actions().size(), 15);
}

void MainWindowInterfaceTest::lookupEditHasItsHintAndClearButton()
{
    const auto* edit = m_fixture->child<QLineEdit>("lookupEdit");

    QCOMPARE(edit->placeholderText(), QStringLiteral("Search Keywords"));
    QVERIFY(edit->isClearButtonEnabled());
    QCOMPARE(m_fixture->child<QLabel>("viewLabel")->text(), QStringLiteral("View:"));
    QCOMPARE(m_fixture->child<QLabel>("playbackVolumeLabel")->text(), QStringLiteral("Volume:"));
}

void MainWindowInterfaceTest::viewButtonsExcludeEachOther()
{
    auto* all = m_fixture->child<QPushButton>("viewAllButton");
    auto* playlist = m_fixture->child<QPushButton>("viewPlaylistButton");
    QVERIFY(all->isChecked());

    QTest::mouseClick(playlist, Qt::LeftButton);

    QVERIFY(playlist->isChecked());
    QVERIFY(!all->isChecked());
    QTest::mouseClick(all, Qt::LeftButton);
    QVERIFY(all->isChecked());
    QVERIFY(!playlist->isChecked());
}

void MainWindowInterfaceTest::contextMenuHoldsTheRecordCommands()
{
    QWidget* viewport = m_fixture->view().viewport();
    const QPoint point(40, 30);
    QContextMenuEvent event(QContextMenuEvent::Mouse, point, viewport->mapToGlobal(point));

    QApplication::sendEvent(viewport, &event);

    QTRY_VERIFY(QApplication::activePopupWidget());
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    QCOMPARE(shownTexts(menu->actions()),
        QStringList({ QStringLiteral("Show Info…"), QStringLiteral("Reveal In Explorer"),
            QStringLiteral("Copy To Work Folder"), QStringLiteral("Add to Playlist"),
            QStringLiteral("Remove from Playlist"), QStringLiteral("-"), QStringLiteral("Delete Selected") }));
    QCOMPARE(menu->actions().at(2)->shortcut().toString(), QStringLiteral("Shift+C"));
    for (const QAction* action : menu->actions())
        QVERIFY2(action->isEnabled(), qPrintable(action->text()));
    QCOMPARE(menu->pos(), viewport->mapToGlobal(point));
    menu->close();
}

void MainWindowInterfaceTest::everyEntryOfAMenuHasAKeyOfItsOwn_data()
{
    QTest::addColumn<QString>("menuName");
    for (const auto* name : { "fileMenu", "editMenu", "viewMenu", "helpMenu", "menuBar" })
        QTest::newRow(name) << QString::fromUtf8(name);
}

void MainWindowInterfaceTest::everyEntryOfAMenuHasAKeyOfItsOwn()
{
    QFETCH(QString, menuName);
    const auto* menu = m_fixture->window().findChild<QWidget*>(menuName);
    QStringList keys;

    for (const QAction* action : menu->actions()) {
        if (!action->isSeparator())
            keys.append(QKeySequence::mnemonic(action->text()).toString());
    }

    QVERIFY(!keys.contains(QString()));
    QCOMPARE(keys.removeDuplicates(), 0);
}

void MainWindowInterfaceTest::firstSizeIsThatOfTheLayout()
{
    QCOMPARE(m_fixture->window().size(), QSize(1263, 444));
}

void MainWindowInterfaceTest::lookupEditIsTheWidestOfItsRow()
{
    const auto* edit = m_fixture->child<QWidget>("lookupEdit");

    for (const auto* widget : edit->parentWidget()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        QVERIFY2(widget == edit || widget->width() < edit->width(), qPrintable(widget->objectName()));
}

void MainWindowInterfaceTest::nothingIsClippedOrOverlaps_data()
{
    const MainWindow& window = m_fixture->window();
    QTest::addColumn<QSize>("size");
    QTest::newRow("smallest") << QSize(0, 0);
    QTest::newRow("narrow") << QSize(window.minimumWidth() + 50, 444);
    QTest::newRow("first") << QSize(1263, 444);
    QTest::newRow("large") << QSize(1590, 1100);
}

void MainWindowInterfaceTest::nothingIsClippedOrOverlaps()
{
    QFETCH(QSize, size);
    MainWindow& window = m_fixture->window();
    const QSize wanted = size.expandedTo(window.minimumSize());
    window.resize(wanted);
    QTRY_COMPARE(window.size(), wanted);
    const auto* panel = m_fixture->child<QWidget>("topPanel");
    QTRY_COMPARE(panel->width(), wanted.width());

    QTRY_COMPARE(m_fixture->clippedOrOverlapping(), QString());

    window.resize(1263, 444);
    QTRY_COMPARE(window.size(), QSize(1263, 444));
}

void MainWindowInterfaceTest::countIsWholeInTheSmallestWindow()
{
    const auto* label = m_fixture->child<QLabel>("rowCountersLabel");

    const int width = label->fontMetrics().horizontalAdvance(QStringLiteral("Found Records: 1000000"));

    QVERIFY2(label->minimumWidth() >= width, qPrintable(QString::number(label->minimumWidth())));
}

void MainWindowInterfaceTest::selectedCountIsWholeInTheFirstWindow()
{
    auto* label = m_fixture->child<QLabel>("rowCountersLabel");
    const QString text = label->text();

    label->setText(QStringLiteral("Found Records: 1000000 (1 selected)"));

    QTRY_VERIFY(label->width() >= label->fontMetrics().horizontalAdvance(label->text()));
    QVERIFY(m_fixture->child<QWidget>("logoWidget")->isVisible());
    label->setText(text);
}

void MainWindowInterfaceTest::narrowWindowKeepsTheButtonsAndGoesWithoutTheWordMark()
{
    MainWindow& window = m_fixture->window();
    const auto* logo = m_fixture->child<QWidget>("logoWidget");
    const auto* button = m_fixture->child<QWidget>("removeFromPlaylistButton");
    const int buttonWidth = button->width();
    QVERIFY(logo->isVisible());

    window.resize(window.minimumSize());

    QTRY_COMPARE(window.width(), window.minimumWidth());
    QVERIFY(window.minimumWidth() <= smallWidth);
    QVERIFY(!logo->isVisible());
    QTRY_VERIFY(button->width() < buttonWidth);
    QVERIFY(button->isVisible());
    window.resize(1263, 444);
    QTRY_COMPARE(button->width(), buttonWidth);
    QVERIFY(logo->isVisible());
}

void MainWindowInterfaceTest::longCountersDoNotWidenTheWindow()
{
    MainWindow& window = m_fixture->window();
    const QSize before = window.minimumSize();
    auto* label = m_fixture->child<QLabel>("rowCountersLabel");
    const QString text = label->text();

    label->setText(QStringLiteral("Found Records: 1000000 (1000000 selected)"));

    const QSize after = window.minimumSize();
    label->setText(text);
    QCOMPARE(after, before);
}

void MainWindowInterfaceTest::tabWalksFromTheTableThroughTheRowsAndBack()
{
    const QStringList expected{ QStringLiteral("scanFilesButton"), QStringLiteral("viewAllButton"),
        QStringLiteral("autoPlayButton"), QStringLiteral("playbackButton"), QStringLiteral("playbackSlider"),
        QStringLiteral("playbackVolumeSlider"), QStringLiteral("workFolderButton"), QStringLiteral("lookupEdit"),
        QStringLiteral("showInfoButton"), QStringLiteral("revealInSystemFileManager"),
        QStringLiteral("copyToWorkFolderButton"), QStringLiteral("addToPlaylistButton"),
        QStringLiteral("removeFromPlaylistButton"), QStringLiteral("metaDataView") };
    m_fixture->child<QWidget>("metaDataView")->setFocus();
    QStringList names;

    do {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        names.append(QApplication::focusWidget()->objectName());
    } while (names.last() != QLatin1String("metaDataView") && names.size() < expected.size());

    QCOMPARE(names, expected);
}

void MainWindowInterfaceTest::shortcutsWorkFromTheSearchField_data()
{
    QTest::addColumn<QString>("name");
    const QList<QAction*> actions = m_fixture->window().findChildren<QAction*>();
    for (const QAction* action : actions) {
        if (!action->shortcut().isEmpty() && action->shortcutContext() == Qt::WindowShortcut)
            QTest::newRow(qPrintable(action->objectName())) << action->objectName();
    }
}

void MainWindowInterfaceTest::shortcutsWorkFromTheSearchField()
{
    QFETCH(QString, name);
    auto* action = m_fixture->window().findChild<QAction*>(name);
    auto* edit = m_fixture->child<QLineEdit>("lookupEdit");
    m_fixture->window().activateWindow();
    edit->setFocus();
    QTRY_VERIFY(edit->hasFocus());
    // Only whether it is reached counts, not what it does.
    const bool wasConnected = action->disconnect(&m_fixture->window());
    QSignalSpy triggered(action, &QAction::triggered);

    QTest::keySequence(edit, action->shortcut());

    QVERIFY(wasConnected);
    QCOMPARE(triggered.count(), 1);
}

QTEST_MAIN(MainWindowInterfaceTest)

#include "tst_mainwindowinterface.moc"
