// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/advanceddialog.h"

#include <QCursor>
#include <QGuiApplication>
#include <QLineEdit>
#include <QProcess>
#include <QScreen>
#include <QVBoxLayout>
#include <QtTest>

namespace {

// The window manager's frame and whole pixels leave the middle a little uncertain.
constexpr int tolerance = 40; // pixels

bool isNear(const QPoint& one, const QPoint& other)
{
    return (one - other).manhattanLength() <= tolerance;
}

QPoint center(const QWidget& widget)
{
    return widget.mapToGlobal(widget.rect().center());
}

void showAt(QWidget& window, const QRect& area)
{
    window.setGeometry(area);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
}

// As somebody else than the program does it.
void moveFromOutside(const QWidget& window, const QPoint& place)
{
    const QStringList arguments{ "windowmove", "--sync", QString::number(window.winId()), QString::number(place.x()),
        QString::number(place.y()) };
    QCOMPARE(QProcess::execute("xdotool", arguments), 0);
}

} // namespace

class AdvancedDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void hasNoContextHelpButton();
    void opensCenteredOnItsParent_data();
    void opensCenteredOnItsParent();
    void opensCenteredOnAnEmbeddedParent();
    void opensCenteredOnTheScreenUnderTheMouseWithoutAParent();
    void isActiveAndHasTheFocus();
    void chosenControlKeepsTheFocus();
    void opensCenteredAgainAfterTheParentMoved();
    void returnsToItsPlaceWhenMovedAwayWhileItOpens();
    void growsAtItsPlaceWhenMovedAwayWhileItOpens();
    void staysWhereItIsMovedOnceItIsOpen();
    void leavesTheLastWordToTheWindowManager();
    void staysOnTheScreenOverALowParent_data();
    void staysOnTheScreenOverALowParent();
};

void AdvancedDialogTest::hasNoContextHelpButton()
{
    const AdvancedDialog dialog;

    QVERIFY(!dialog.windowFlags().testFlag(Qt::WindowContextHelpButtonHint));
    QVERIFY(dialog.windowFlags().testFlag(Qt::WindowCloseButtonHint));
    QVERIFY(dialog.windowFlags().testFlag(Qt::Dialog));
}

void AdvancedDialogTest::opensCenteredOnItsParent_data()
{
    QTest::addColumn<QRect>("parentArea");

    QTest::newRow("middle of the screen") << QRect(400, 300, 700, 500);
    QTest::newRow("left") << QRect(60, 200, 500, 400);
    QTest::newRow("lower right") << QRect(900, 600, 600, 500);
}

void AdvancedDialogTest::opensCenteredOnItsParent()
{
    QFETCH(QRect, parentArea);
    QWidget parent;
    showAt(parent, parentArea);
    AdvancedDialog dialog(&parent);
    dialog.setFixedSize(300, 150);

    dialog.show();

    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTRY_VERIFY(isNear(center(dialog), center(parent)));
}

void AdvancedDialogTest::opensCenteredOnAnEmbeddedParent()
{
    QWidget window;
    window.setGeometry(300, 200, 900, 700);
    QWidget panel(&window);
    panel.setGeometry(500, 300, 400, 400);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    AdvancedDialog dialog(&panel);
    dialog.setFixedSize(300, 150);

    dialog.show();

    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTRY_VERIFY(isNear(center(dialog), center(panel)));
}

void AdvancedDialogTest::opensCenteredOnTheScreenUnderTheMouseWithoutAParent()
{
    const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    QVERIFY(screen);
    AdvancedDialog dialog;
    dialog.setFixedSize(300, 150);

    dialog.show();

    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QTRY_VERIFY(isNear(center(dialog), screen->geometry().center()));
}

void AdvancedDialogTest::isActiveAndHasTheFocus()
{
    QWidget parent;
    parent.show();
    QVERIFY(QTest::qWaitForWindowActive(&parent));
    AdvancedDialog dialog(&parent);

    dialog.show();

    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTRY_VERIFY(dialog.hasFocus());
}

void AdvancedDialogTest::chosenControlKeepsTheFocus()
{
    AdvancedDialog dialog;
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(new QLineEdit);
    auto* chosen = new QLineEdit;
    layout->addWidget(chosen);
    chosen->setFocus();

    dialog.show();

    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTRY_VERIFY(chosen->hasFocus());
}

void AdvancedDialogTest::opensCenteredAgainAfterTheParentMoved()
{
    QWidget parent;
    showAt(parent, { 100, 100, 500, 400 });
    AdvancedDialog dialog(&parent);
    dialog.setFixedSize(300, 150);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    dialog.hide();
    parent.move(700, 500);
    QTRY_VERIFY(parent.geometry().left() >= 690);

    dialog.show();

    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTRY_VERIFY(isNear(center(dialog), center(parent)));
}

void AdvancedDialogTest::returnsToItsPlaceWhenMovedAwayWhileItOpens()
{
    QWidget parent;
    showAt(parent, { 300, 200, 900, 700 });
    AdvancedDialog dialog(&parent);
    dialog.setFixedSize(300, 150);
    dialog.show();

    dialog.move(0, 0);

    QVERIFY(isNear(center(dialog), center(parent)));
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTRY_VERIFY(isNear(center(dialog), center(parent)));
}

void AdvancedDialogTest::growsAtItsPlaceWhenMovedAwayWhileItOpens()
{
    QWidget parent;
    showAt(parent, { 300, 200, 900, 700 });
    AdvancedDialog dialog(&parent);
    dialog.setFixedSize(300, 150);
    dialog.show();

    dialog.move(0, 0);
    dialog.setFixedSize(300, 152);

    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTRY_COMPARE(dialog.height(), 152);
    QVERIFY(isNear(center(dialog), center(parent)));
}

void AdvancedDialogTest::staysWhereItIsMovedOnceItIsOpen()
{
    QWidget parent;
    showAt(parent, { 300, 200, 900, 700 });
    AdvancedDialog dialog(&parent);
    dialog.setFixedSize(300, 150);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    const QPoint place(40, 50);

    // The first moves may come while it still opens.
    const auto moveAndLook = [&] {
        moveFromOutside(dialog, place);
        QCoreApplication::processEvents();
        return isNear(dialog.pos(), place);
    };
    QTRY_VERIFY(moveAndLook());

    // Its next change of size does not bring it back.
    dialog.setFixedSize(320, 160);
    QTRY_COMPARE(dialog.height(), 160);
    QVERIFY(isNear(dialog.pos(), place));
}

void AdvancedDialogTest::leavesTheLastWordToTheWindowManager()
{
    QWidget parent;
    showAt(parent, { 300, 200, 900, 700 });
    AdvancedDialog dialog(&parent);
    dialog.setFixedSize(300, 150);
    dialog.show();

    for (int move = 0; move < 4; ++move)
        dialog.move(0, 0);

    QCOMPARE(dialog.pos(), QPoint(0, 0));
}

void AdvancedDialogTest::staysOnTheScreenOverALowParent_data()
{
    QTest::addColumn<QRect>("parentArea");
    QTest::addColumn<QSize>("size");
    const QSize screen = QGuiApplication::primaryScreen()->availableSize();
    QTest::newRow("at the top") << QRect(300, 10, 700, 100) << QSize(300, 600);
    QTest::newRow("at the bottom") << QRect(300, screen.height() - 120, 700, 100) << QSize(300, 600);
    QTest::newRow("at the left") << QRect(10, 300, 100, 300) << QSize(600, 150);
    QTest::newRow("larger than the screen") << QRect(300, 300, 700, 100) << QSize(300, screen.height() + 200);
}

void AdvancedDialogTest::staysOnTheScreenOverALowParent()
{
    QFETCH(QRect, parentArea);
    QFETCH(QSize, size);
    QWidget parent;
    showAt(parent, parentArea);
    AdvancedDialog dialog(&parent);
    dialog.setFixedSize(size);

    dialog.show();

    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    const QRect available = dialog.screen()->availableGeometry();
    QTRY_VERIFY(dialog.frameGeometry().top() >= available.top() && dialog.frameGeometry().left() >= available.left());
    const bool isTooHigh = size.height() > available.height();
    QVERIFY(isTooHigh || dialog.geometry().bottom() <= available.bottom() + tolerance);
}

QTEST_MAIN(AdvancedDialogTest)
#include "tst_advanceddialog.moc"
