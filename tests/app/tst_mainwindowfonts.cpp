// SPDX-License-Identifier: GPL-3.0-or-later
// The main window with larger fonts: all of it stays on the screen and in order.
#include "tests/app/windowfixture.h"

#include "ui/settings.h"

#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QtTest>

namespace {

QRect available()
{
    return QGuiApplication::primaryScreen()->availableGeometry();
}

} // namespace

class MainWindowFontsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void windowFitsTheScreen_data();
    void windowFitsTheScreen();
    void cutOffTextsAreInTheToolTips();
    void geometryOfALargeFontLeavesTheMenuOnTheScreen();

private:
    MainWindow& startWithFont(int points);

    QFont m_font;
    std::unique_ptr<WindowFixture> m_fixture;
};

void MainWindowFontsTest::initTestCase()
{
    m_font = QApplication::font();
}

void MainWindowFontsTest::init()
{
    m_fixture = std::make_unique<WindowFixture>();
}

void MainWindowFontsTest::cleanup()
{
    m_fixture.reset();
    QApplication::setFont(m_font);
}

MainWindow& MainWindowFontsTest::startWithFont(int points)
{
    QFont font(m_font);
    font.setPointSize(points);
    QApplication::setFont(font);
    return m_fixture->start();
}

void MainWindowFontsTest::windowFitsTheScreen_data()
{
    QTest::addColumn<int>("points");
    for (const int points : { 9, 14, 18, 24 })
        QTest::addRow("%d points", points) << points;
}

void MainWindowFontsTest::windowFitsTheScreen()
{
    QFETCH(int, points);

    MainWindow& window = startWithFont(points);

    QVERIFY(window.width() <= available().width());
    QTRY_VERIFY(window.frameGeometry().left() >= available().left());
    QTRY_VERIFY(window.frameGeometry().top() >= available().top());
    QTRY_COMPARE(m_fixture->clippedOrOverlapping(), QString());
    window.resize(window.minimumSize());
    QTRY_COMPARE(window.width(), window.minimumWidth());
    QTRY_COMPARE(m_fixture->clippedOrOverlapping(), QString());
}

void MainWindowFontsTest::cutOffTextsAreInTheToolTips()
{
    startWithFont(24);
    const auto* button = m_fixture->child<QPushButton>("removeFromPlaylistButton");

    QTRY_VERIFY(button->width() < button->fontMetrics().horizontalAdvance(button->text()));

    QCOMPARE(button->toolTip(), QStringLiteral("Remove from Playlist"));
}

// As it was kept when the window was wider than the screen.
void MainWindowFontsTest::geometryOfALargeFontLeavesTheMenuOnTheScreen()
{
    const QSize screen = QGuiApplication::primaryScreen()->size();
    const QString suffix
        = QStringLiteral("%1x%2").arg(QString::number(screen.width()), QString::number(screen.height()));
    Settings settings(QStringLiteral("MainWindow"));
    settings.setValue(QStringLiteral("size") + suffix, QSize(screen.width() + 374, 444));
    settings.setValue(QStringLiteral("position") + suffix, QPoint(-187, 300));

    MainWindow& window = startWithFont(m_font.pointSize());

    const QMenuBar* menu = window.menuBar();
    QTRY_VERIFY(available().contains(QRect(menu->mapToGlobal(QPoint()), menu->sizeHint())));
    QVERIFY(window.width() <= available().width());
}

QTEST_MAIN(MainWindowFontsTest)
#include "tst_mainwindowfonts.moc"
