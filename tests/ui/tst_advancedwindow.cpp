// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/advancedwindow.h"
#include "ui/settings.h"

#include <QApplication>
#include <QGuiApplication>
#include <QLabel>
#include <QMenuBar>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const char group[] = "WindowUnderTest";

class SampleWindow : public AdvancedWindow
{
    Q_OBJECT

public:
    explicit SampleWindow(const QString& settingsGroup = group)
        : AdvancedWindow(settingsGroup)
        , m_content(new QLabel("Content"))
    {
        setPreparedCentralWidget(m_content);
    }

    QLabel* content() const { return m_content; }

protected:
    QSize preferredSize() const override { return { 640, 360 }; }

private:
    QLabel* m_content;
};

// The key of this screen size.
QString key(const char* name)
{
    const QSize size = QGuiApplication::primaryScreen()->size();
    return QString("%1%2x%3").arg(name, QString::number(size.width()), QString::number(size.height()));
}

bool appear(SampleWindow& window)
{
    const QSignalSpy shown(&window, &AdvancedWindow::showed);
    window.showWindow();
    return QTest::qWaitFor([&] { return shown.count() == 1; }) && QTest::qWaitForWindowExposed(&window);
}

} // namespace

class AdvancedWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void restoreWithoutKeysReportsFailure();
    void firstStartUsesThePreferredGeometry();
    void windowAppearsOnTheScreenWithItsContent();
    void showedIsEmittedOnceAndLater();
    void secondRequestOnlyRaises();
    void preparingDoesNotEndTheProgram();
    void resizeIsSavedByItself();
    void moveAloneIsSavedOnClosing();
    void sizeAndPositionAreRestored();
    void geometryStaysTheSameOverManyStarts();
    void halfOfTheKeysIsNoGeometry_data();
    void halfOfTheKeysIsNoGeometry();
    void maximizedStateIsSavedAlone();
    void maximizedStateIsRestored();
    void otherScreenSizesKeepTheirOwnGeometry();
    void positionOffEveryScreenIsMovedBack();
    void titleAndMenuAreBroughtOntoTheScreen_data();
    void titleAndMenuAreBroughtOntoTheScreen();
    void keptSizeIsNoLargerThanTheScreen();
    void windowLargerThanTheScreenBeginsOnIt();
    void emptyGroupKeepsNothing();

private:
    QTemporaryDir m_folder;
};

void AdvancedWindowTest::init()
{
    Settings::setFileName(m_folder.filePath("Settings.ini"));
    Settings(group).remove(QString());
}

void AdvancedWindowTest::cleanup()
{
    Settings::setFileName(QString());
    QFile::remove(m_folder.filePath("Settings.ini"));
}

void AdvancedWindowTest::restoreWithoutKeysReportsFailure()
{
    SampleWindow window;

    QVERIFY(!window.restoreGeometry());
}

void AdvancedWindowTest::firstStartUsesThePreferredGeometry()
{
    SampleWindow window;

    QVERIFY(appear(window));

    QCOMPARE(window.size(), QSize(640, 360));
    const QPoint middle = QGuiApplication::primaryScreen()->availableGeometry().center();
    QTRY_VERIFY((window.frameGeometry().center() - middle).manhattanLength() <= 40);
}

void AdvancedWindowTest::windowAppearsOnTheScreenWithItsContent()
{
    SampleWindow window;

    QVERIFY(appear(window));

    QVERIFY(!window.testAttribute(Qt::WA_DontShowOnScreen));
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QCOMPARE(window.centralWidget(), window.content());
    QVERIFY(window.content()->isVisible());
}

void AdvancedWindowTest::showedIsEmittedOnceAndLater()
{
    SampleWindow window;
    const QSignalSpy shown(&window, &AdvancedWindow::showed);

    window.showWindow();
    window.showWindow();

    QCOMPARE(shown.count(), 0);
    QVERIFY(!window.isVisible());
    QTRY_COMPARE(shown.count(), 1);
    window.hide();
    window.showWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QTRY_VERIFY(window.isVisible());
    QCOMPARE(shown.count(), 1);
}

void AdvancedWindowTest::secondRequestOnlyRaises()
{
    SampleWindow window;
    QVERIFY(appear(window));
    QVERIFY(QTest::qWaitForWindowActive(&window));
    window.resize(700, 400);
    QWidget other;
    other.show();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    const QSignalSpy shown(&window, &AdvancedWindow::showed);

    window.showWindow();

    QVERIFY(QTest::qWaitForWindowActive(&window));
    QCOMPARE(window.size(), QSize(700, 400));
    QCOMPARE(shown.count(), 0);
}

void AdvancedWindowTest::preparingDoesNotEndTheProgram()
{
    constexpr int patience = 10000; // milliseconds
    SampleWindow window;
    const QSignalSpy shown(&window, &AdvancedWindow::showed);
    connect(&window, &AdvancedWindow::showed, &window, &QWidget::close);
    QTimer::singleShot(patience, &window, [] { QCoreApplication::exit(1); });

    window.showWindow();
    const int code = QCoreApplication::exec();

    // The loop ended with the close of the last window, and not before.
    QCOMPARE(shown.count(), 1);
    QCOMPARE(code, 0);
}

void AdvancedWindowTest::resizeIsSavedByItself()
{
    SampleWindow window;
    QVERIFY(appear(window));
    const Settings settings(group);

    window.resize(710, 410);

    QTRY_COMPARE(settings.value(key("size")).toSize(), QSize(710, 410));
    QVERIFY(settings.contains(key("position")));
    QVERIFY(!settings.contains(key("maximized")));
}

void AdvancedWindowTest::moveAloneIsSavedOnClosing()
{
    SampleWindow window;
    QVERIFY(appear(window));
    const Settings settings(group);
    window.resize(710, 410);
    QTRY_VERIFY(settings.contains(key("position")));
    const QPoint before = settings.value(key("position")).toPoint();

    window.move(123, 145);
    QTRY_COMPARE(window.pos(), QPoint(123, 145));
    QCOMPARE(settings.value(key("position")).toPoint(), before);
    window.close();

    QCOMPARE(settings.value(key("position")).toPoint(), QPoint(123, 145));
}

void AdvancedWindowTest::sizeAndPositionAreRestored()
{
    Settings settings(group);
    settings.setValue(key("size"), QSize(720, 420));
    settings.setValue(key("position"), QPoint(210, 130));
    SampleWindow window;

    QVERIFY(appear(window));

    QCOMPARE(window.size(), QSize(720, 420));
    QTRY_COMPARE(window.pos(), QPoint(210, 130));
}

void AdvancedWindowTest::geometryStaysTheSameOverManyStarts()
{
    Settings settings(group);
    settings.setValue(key("size"), QSize(720, 420));
    settings.setValue(key("position"), QPoint(210, 130));

    for (int start = 0; start < 3; ++start) {
        SampleWindow window;
        QVERIFY(appear(window));
        QTRY_COMPARE(window.pos(), QPoint(210, 130));
        window.close();
    }

    QCOMPARE(settings.value(key("size")).toSize(), QSize(720, 420));
    QCOMPARE(settings.value(key("position")).toPoint(), QPoint(210, 130));
}

void AdvancedWindowTest::halfOfTheKeysIsNoGeometry_data()
{
    QTest::addColumn<QString>("missing");

    QTest::newRow("no size") << "size";
    QTest::newRow("no position") << "position";
}

void AdvancedWindowTest::halfOfTheKeysIsNoGeometry()
{
    QFETCH(QString, missing);
    Settings settings(group);
    settings.setValue(key("size"), QSize(720, 420));
    settings.setValue(key("position"), QPoint(210, 130));
    settings.remove(key(qPrintable(missing)));
    SampleWindow window;

    QVERIFY(!window.restoreGeometry());
    QVERIFY(appear(window));
    QCOMPARE(window.size(), QSize(640, 360));
}

void AdvancedWindowTest::maximizedStateIsSavedAlone()
{
    SampleWindow window;
    QVERIFY(appear(window));
    const Settings settings(group);
    window.resize(710, 410);
    QTRY_VERIFY(settings.contains(key("size")));

    window.showMaximized();
    QTRY_VERIFY(settings.value(key("maximized")).toBool());
    QVERIFY(!settings.contains(key("size")));
    QVERIFY(!settings.contains(key("position")));

    window.showNormal();
    QTRY_VERIFY(settings.contains(key("size")));
    QVERIFY(!settings.contains(key("maximized")));
}

void AdvancedWindowTest::maximizedStateIsRestored()
{
    Settings(group).setValue(key("maximized"), true);
    SampleWindow window;

    QVERIFY(appear(window));

    QTRY_VERIFY(window.isMaximized());
    QTRY_VERIFY(window.width() > QGuiApplication::primaryScreen()->size().width() - 20);
}

void AdvancedWindowTest::otherScreenSizesKeepTheirOwnGeometry()
{
    Settings settings(group);
    settings.setValue("maximized4000x3000", true);
    SampleWindow window;
    QVERIFY(!window.restoreGeometry());
    QVERIFY(appear(window));

    window.close();

    QVERIFY(!window.isMaximized());
    QCOMPARE(settings.value("maximized4000x3000").toBool(), true);
    QCOMPARE(settings.value(key("size")).toSize(), QSize(640, 360));
}

void AdvancedWindowTest::positionOffEveryScreenIsMovedBack()
{
    Settings settings(group);
    settings.setValue(key("size"), QSize(720, 420));
    settings.setValue(key("position"), QPoint(9000, 7000));
    SampleWindow window;

    QVERIFY(appear(window));

    QTRY_VERIFY(QGuiApplication::primaryScreen()->geometry().contains(window.geometry()));
    QCOMPARE(window.size(), QSize(720, 420));
}

void AdvancedWindowTest::titleAndMenuAreBroughtOntoTheScreen_data()
{
    QTest::addColumn<QPoint>("kept");
    QTest::addColumn<QPoint>("expected");
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const auto at = [&screen](int x, int y) {
        return screen.topLeft() + QPoint(x, y);
    };

    QTest::newRow("beyond the left edge") << at(-187, 100) << at(0, 100);
    QTest::newRow("just beyond it") << at(-1, 100) << at(0, 100);
    QTest::newRow("above the top") << at(100, -15) << at(100, 0);
    QTest::newRow("a pixel in a corner") << at(1 - 720, 1 - 420) << at(0, 0);
    QTest::newRow("a pixel at the right") << at(screen.width() - 1, 100) << at(0, 100);
    QTest::newRow("a pixel at the bottom") << at(100, screen.height() - 1) << at(100, 0);
    QTest::newRow("half beyond the right edge") << at(screen.width() - 360, 100) << at(screen.width() - 360, 100);
    QTest::newRow("half below the bottom") << at(100, screen.height() - 210) << at(100, screen.height() - 210);
}

void AdvancedWindowTest::titleAndMenuAreBroughtOntoTheScreen()
{
    QFETCH(QPoint, kept);
    QFETCH(QPoint, expected);
    Settings settings(group);
    settings.setValue(key("size"), QSize(720, 420));
    settings.setValue(key("position"), kept);
    SampleWindow window;
    window.menuBar()->addMenu(QStringLiteral("File"));

    QVERIFY(appear(window));

    QTRY_COMPARE(window.pos(), expected);
    QCOMPARE(window.size(), QSize(720, 420));
}

void AdvancedWindowTest::keptSizeIsNoLargerThanTheScreen()
{
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    Settings settings(group);
    settings.setValue(key("size"), screen.size() + QSize(300, 200));
    settings.setValue(key("position"), screen.topLeft() - QPoint(150, 100));
    SampleWindow window;

    QVERIFY(appear(window));

    QCOMPARE(window.size(), window.size().boundedTo(screen.size()));
    QTRY_COMPARE(window.pos(), screen.topLeft());
}

void AdvancedWindowTest::windowLargerThanTheScreenBeginsOnIt()
{
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    SampleWindow window;
    window.setMinimumSize(screen.size() + QSize(300, 200));

    QVERIFY(appear(window));

    QTRY_COMPARE(window.pos(), screen.topLeft());
}

void AdvancedWindowTest::emptyGroupKeepsNothing()
{
    SampleWindow window{ QString() };
    QVERIFY(appear(window));

    window.resize(710, 410);
    window.saveGeometry();
    window.close();
    Settings::setFileName(QString());

    QVERIFY(!QFile::exists(m_folder.filePath("Settings.ini")));
}

QTEST_MAIN(AdvancedWindowTest)
#include "tst_advancedwindow.moc"
