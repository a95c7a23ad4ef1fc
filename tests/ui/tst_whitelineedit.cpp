// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/whitelineedit.h"

#include "resources/resources.h"
#include "tests/ui/controltest.h"
#include "ui/whitebutton.h"

#include <QAction>
#include <QToolButton>
#include <QtTest>

using namespace TestSupport;

class WhiteLineEditTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void faceAndBorderAreThePalettes_data();
    void faceAndBorderAreThePalettes();
    void focusIsARing_data();
    void focusIsARing();
    void disabledEditIsTakenBack_data();
    void disabledEditIsTakenBack();
    void pointerChangesTheBorder();
    void cornersAreRound();
    void heightIsThatOfAButton_data();
    void heightIsThatOfAButton();
    void iconStandsBeforeTheText();
    void iconCanBeChangedAndTakenAway();
    void clickOnTheIconTakesTheFocusToTheEdit();
    void clearButtonClears();
    void shortcutsOfTheWindowWorkInTheEdit_data();
    void shortcutsOfTheWindowWorkInTheEdit();

private:
    std::unique_ptr<WhiteLineEdit> makeEdit(bool isDark = false) const;
};

void WhiteLineEditTest::initTestCase()
{
    initialiseResources();
    useFixedFont();
}

std::unique_ptr<WhiteLineEdit> WhiteLineEditTest::makeEdit(bool isDark) const
{
    auto edit = std::make_unique<WhiteLineEdit>();
    edit->setPalette(controlPalette(isDark));
    edit->resize(200, 30);
    return edit;
}

void WhiteLineEditTest::faceAndBorderAreThePalettes_data()
{
    addPalettes();
}

void WhiteLineEditTest::faceAndBorderAreThePalettes()
{
    QFETCH(bool, isDark);
    const auto edit = makeEdit(isDark);
    edit->setText(blockText);

    const Picture seen(*edit);

    const QPalette palette = controlPalette(isDark);
    QVERIFY(Picture::isNear(seen.at(100, 15), palette.color(QPalette::Base), 1));
    for (const QPoint& place : { QPoint(0, 15), QPoint(199, 15), QPoint(100, 0), QPoint(100, 29) })
        QVERIFY(Picture::isNear(seen.at(place), darker(palette.color(QPalette::Button), 130), 1));
    QVERIFY(seen.has(palette.color(QPalette::Text), QRect(4, 4, 40, 22), 2));
}

void WhiteLineEditTest::focusIsARing_data()
{
    addPalettes();
}

void WhiteLineEditTest::focusIsARing()
{
    QFETCH(bool, isDark);
    const auto edit = makeEdit(isDark);
    edit->show();
    edit->activateWindow();
    edit->setFocus();
    QTRY_VERIFY(edit->hasFocus());

    const Picture seen(*edit);

    for (const QPoint& place : { QPoint(0, 15), QPoint(1, 15), QPoint(100, 0), QPoint(100, 28), QPoint(100, 29) })
        QVERIFY(Picture::isNear(seen.at(place), controlPalette(isDark).color(QPalette::Highlight), 1));
}

void WhiteLineEditTest::disabledEditIsTakenBack_data()
{
    addPalettes();
}

void WhiteLineEditTest::disabledEditIsTakenBack()
{
    QFETCH(bool, isDark);
    const auto edit = makeEdit(isDark);
    const QColor ground = edit->palette().color(QPalette::Window);
    const Picture enabled(*edit);

    edit->setEnabled(false);
    const Picture disabled(*edit);

    QVERIFY(disabled.at(100, 15) != enabled.at(100, 15));
    QVERIFY(contrastOf(disabled.at(0, 15), ground) < contrastOf(enabled.at(0, 15), ground));
}

void WhiteLineEditTest::pointerChangesTheBorder()
{
    QWidget window;
    WhiteLineEdit edit(&window);
    edit.setGeometry(20, 20, 150, 30);
    QWidget other(&window);
    other.setFocusPolicy(Qt::StrongFocus);
    other.setFocus();
    window.resize(200, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QColor resting = Picture(edit).at(0, 15);

    QTest::mouseMove(window.windowHandle(), QPoint(5, 5));
    QTest::mouseMove(window.windowHandle(), QPoint(60, 35));

    QTRY_VERIFY(edit.underMouse());
    QVERIFY(Picture(edit).at(0, 15) != resting);
}

void WhiteLineEditTest::cornersAreRound()
{
    const auto edit = makeEdit();

    const Picture seen(*edit);

    for (const QPoint& corner : { QPoint(0, 0), QPoint(199, 0), QPoint(0, 29), QPoint(199, 29) })
        QVERIFY(Picture::isNear(seen.at(corner), controlPalette(false).color(QPalette::Window), 20));
}

void WhiteLineEditTest::heightIsThatOfAButton_data()
{
    QTest::addColumn<int>("pixelSize");

    QTest::newRow("small") << 9;
    QTest::newRow("usual") << 13;
    QTest::newRow("large") << 30;
}

void WhiteLineEditTest::heightIsThatOfAButton()
{
    QFETCH(int, pixelSize);
    QFont font = QApplication::font();
    font.setPixelSize(pixelSize);
    WhiteLineEdit edit;
    WhiteButton button;
    edit.setFont(font);
    button.setFont(font);

    QCOMPARE(edit.sizeHint().height(), button.sizeHint().height());
}

void WhiteLineEditTest::iconStandsBeforeTheText()
{
    const auto edit = makeEdit();
    edit->setText(blockText);
    const int without = Picture(*edit).extentOf(edit->palette().color(QPalette::Text), edit->rect(), 10).left();

    edit->setLeadingIcon(QIcon(":/Resources/Search.png"));
    edit->grab();
    const Picture seen(*edit);

    const QColor ink(128, 140, 153);
    const QRect icon = seen.extentOf(ink, QRect(3, 3, 30, 24), 30);
    QVERIFY(icon.width() >= 10 && icon.height() >= 10);
    QVERIFY(qAbs(icon.center().y() - 15) <= 2);
    const int with = seen.extentOf(edit->palette().color(QPalette::Text), edit->rect(), 10).left();
    QVERIFY(with > icon.right());
    QVERIFY(with > without);
}

void WhiteLineEditTest::iconCanBeChangedAndTakenAway()
{
    const auto edit = makeEdit();
    QVERIFY(edit->leadingIcon().isNull());

    edit->setLeadingIcon(QIcon(":/Resources/Search.png"));
    edit->setLeadingIcon(QIcon(":/Resources/Preloader.png"));
    QCOMPARE(edit->actions().size(), 1);
    QVERIFY(!edit->leadingIcon().isNull());

    edit->setLeadingIcon(QIcon());
    QVERIFY(edit->actions().isEmpty());
    QVERIFY(edit->leadingIcon().isNull());
}

void WhiteLineEditTest::clickOnTheIconTakesTheFocusToTheEdit()
{
    QWidget window;
    WhiteLineEdit edit(&window);
    edit.setLeadingIcon(QIcon(":/Resources/Search.png"));
    WhiteButton other(&window);
    window.show();
    window.activateWindow();
    other.setFocus();
    QTRY_VERIFY(other.hasFocus());

    edit.actions().constFirst()->trigger();

    QVERIFY(edit.hasFocus());
}

void WhiteLineEditTest::clearButtonClears()
{
    const auto edit = makeEdit();
    edit->setClearButtonEnabled(true);
    edit->show();
    edit->setText("text");
    auto* button = edit->findChild<QToolButton*>();
    QVERIFY(button);
    QVERIFY(edit->rect().contains(button->geometry()));
    // It fades in and out.
    QTRY_COMPARE(button->property("opacity").toReal(), 1.0);

    QTest::mouseClick(button, Qt::LeftButton);

    QCOMPARE(edit->text(), QString());
    QTRY_COMPARE(button->property("opacity").toReal(), 0.0);
    // The animations go by themselves, but not after the last event loop.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void WhiteLineEditTest::shortcutsOfTheWindowWorkInTheEdit_data()
{
    QTest::addColumn<QKeySequence>("shortcut");
    QTest::addColumn<bool>("isOfTheWindow");

    for (const char* keys : { "Ctrl+E", "Ctrl+K", "Ctrl+P", "Ctrl+Q", "Ctrl+U", "F5" })
        QTest::newRow(keys) << QKeySequence(QLatin1String(keys)) << true;
    for (const char* keys : { "Ctrl+A", "Ctrl+C", "Ctrl+V", "Ctrl+X", "Ctrl+Z", "Ctrl+Shift+Z", "Del" })
        QTest::newRow(keys) << QKeySequence(QLatin1String(keys)) << false;
}

void WhiteLineEditTest::shortcutsOfTheWindowWorkInTheEdit()
{
    QFETCH(QKeySequence, shortcut);
    QFETCH(bool, isOfTheWindow);
    QWidget window;
    WhiteLineEdit edit(&window);
    edit.setText("some text");
    QAction action(&window);
    action.setShortcut(shortcut);
    window.addAction(&action);
    QSignalSpy triggered(&action, &QAction::triggered);
    window.show();
    window.activateWindow();
    edit.setFocus();
    QTRY_VERIFY(edit.hasFocus());

    QTest::keySequence(&edit, shortcut);

    QCOMPARE(triggered.count(), isOfTheWindow ? 1 : 0);
}

QTEST_MAIN(WhiteLineEditTest)

#include "tst_whitelineedit.moc"
