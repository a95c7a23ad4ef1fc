// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/whiteslider.h"

#include "tests/ui/controltest.h"

#include <QWindow>
#include <QtTest>

using namespace TestSupport;

namespace {

constexpr int width = 200;
constexpr int height = 30;
constexpr int middle = height / 2;

} // namespace

class WhiteSliderTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void grooveIsFilledUpToTheHandle_data();
    void grooveIsFilledUpToTheHandle();
    void mirroredGrooveIsFilledFromTheRight();
    void handleIsRoundAndInside_data();
    void handleIsRoundAndInside();
    void grooveIsThin();
    void handleGrowsUnderThePointer();
    void focusIsSeen();
    void pressedHandleIsDarker();
    void disabledSliderIsTakenBackButSeen_data();
    void disabledSliderIsTakenBackButSeen();
    void clickMovesTheHandleThere_data();
    void clickMovesTheHandleThere();
    void handleCanBeDragged();
    void arrowKeysMoveTheHandle();
    void emptyRangeIsPainted();
    void verticalSliderIsTheApplications();

private:
    Picture picture() const { return Picture(*m_slider); }
    QColor highlight() const { return m_slider->palette().color(QPalette::Highlight); }
    // The handle's middle for the value.
    int handleAt(int value) const { return 9 + value * (width - 18) / 100; }

    std::unique_ptr<QWidget> m_window;
    WhiteSlider* m_slider = nullptr;
};

void WhiteSliderTest::initTestCase()
{
    useFixedFont();
}

void WhiteSliderTest::init()
{
    m_window = std::make_unique<QWidget>();
    // A ground that the handle cannot be mistaken for.
    QPalette palette = controlPalette(false);
    palette.setColor(QPalette::Window, QColor(200, 204, 208));
    m_window->setPalette(palette);
    m_window->resize(width + 40, height + 40);
    m_slider = new WhiteSlider(m_window.get());
    m_slider->setGeometry(20, 20, width, height);
    m_slider->setRange(0, 100);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    m_slider->clearFocus();
}

void WhiteSliderTest::cleanup()
{
    m_window.reset();
}

void WhiteSliderTest::grooveIsFilledUpToTheHandle_data()
{
    addPalettes();
}

void WhiteSliderTest::grooveIsFilledUpToTheHandle()
{
    QFETCH(bool, isDark);
    m_window->setPalette(controlPalette(isDark));
    m_slider->setValue(60);

    const Picture seen = picture();

    QVERIFY(Picture::isNear(seen.at(handleAt(20), middle), highlight(), 2));
    const QColor rest = seen.at(handleAt(90), middle);
    QVERIFY(!Picture::isNear(rest, highlight(), 40));
    QVERIFY(contrastOf(rest, m_slider->palette().color(QPalette::Window)) > 1.3);
}

void WhiteSliderTest::mirroredGrooveIsFilledFromTheRight()
{
    m_slider->setLayoutDirection(Qt::RightToLeft);
    m_slider->setValue(30);

    const Picture seen = picture();

    QVERIFY(Picture::isNear(seen.at(width - 20, middle), highlight(), 2));
    QVERIFY(!Picture::isNear(seen.at(20, middle), highlight(), 40));
}

void WhiteSliderTest::handleIsRoundAndInside_data()
{
    QTest::addColumn<int>("value");

    QTest::newRow("at the start") << 0;
    QTest::newRow("in the middle") << 50;
    QTest::newRow("at the end") << 100;
}

void WhiteSliderTest::handleIsRoundAndInside()
{
    QFETCH(int, value);
    m_slider->setValue(value);
    const QColor face = lighter(m_slider->palette().color(QPalette::Button), 105);

    const QRect handle = picture().extentOf(face, m_slider->rect(), 3);

    QVERIFY(qAbs(handle.width() - handle.height()) <= 1);
    QVERIFY(handle.width() >= 8 && handle.width() <= 12);
    QVERIFY(qAbs(handle.center().x() - handleAt(value)) <= 1);
    QVERIFY(handle.left() > 0 && handle.right() < width - 1);
}

void WhiteSliderTest::grooveIsThin()
{
    m_slider->setValue(100);

    const QRect filled = picture().extentOf(highlight(), QRect(20, 0, 100, height), 20);

    QVERIFY(filled.height() >= 3 && filled.height() <= 5);
}

void WhiteSliderTest::handleGrowsUnderThePointer()
{
    m_slider->setValue(50);
    const QColor face = lighter(m_slider->palette().color(QPalette::Button), 105);
    QTest::mouseMove(m_window->windowHandle(), QPoint(5, 5));
    QTRY_VERIFY(!m_slider->underMouse());
    const QRect resting = picture().extentOf(face, m_slider->rect(), 3);

    QTest::mouseMove(m_window->windowHandle(), QPoint(20 + handleAt(50), 20 + middle));
    QTRY_VERIFY(m_slider->underMouse());

    QTRY_VERIFY(picture().extentOf(face, m_slider->rect(), 3).width() >= resting.width() + 3);
}

void WhiteSliderTest::focusIsSeen()
{
    m_slider->setValue(0);
    const QRect handle(0, 0, 20, height);
    QVERIFY(!picture().has(highlight(), handle, 20));

    m_window->activateWindow();
    m_slider->setFocus();
    QTRY_VERIFY(m_slider->hasFocus());

    QVERIFY(picture().has(highlight(), handle, 20));
}

void WhiteSliderTest::pressedHandleIsDarker()
{
    m_slider->setValue(50);
    const QColor resting = picture().at(handleAt(50), middle);

    QTest::mousePress(m_slider, Qt::LeftButton, Qt::NoModifier, QPoint(handleAt(50), middle));
    const QColor pressed = picture().at(handleAt(50), middle);
    QTest::mouseRelease(m_slider, Qt::LeftButton, Qt::NoModifier, QPoint(handleAt(50), middle));

    QVERIFY(pressed.lightness() < resting.lightness());
}

void WhiteSliderTest::disabledSliderIsTakenBackButSeen_data()
{
    addPalettes();
}

void WhiteSliderTest::disabledSliderIsTakenBackButSeen()
{
    QFETCH(bool, isDark);
    m_window->setPalette(controlPalette(isDark));
    m_slider->setValue(50);
    const QColor ground = m_slider->palette().color(QPalette::Window);
    const Picture enabled = picture();

    m_slider->setEnabled(false);
    const Picture disabled = picture();

    for (const int x : { handleAt(20), handleAt(80) }) {
        QVERIFY(contrastOf(disabled.at(x, middle), ground) < contrastOf(enabled.at(x, middle), ground));
        QVERIFY(contrastOf(disabled.at(x, middle), ground) > 1.1);
    }
}

void WhiteSliderTest::clickMovesTheHandleThere_data()
{
    QTest::addColumn<int>("value");

    QTest::newRow("start") << 0;
    QTest::newRow("a quarter") << 25;
    QTest::newRow("end") << 100;
}

void WhiteSliderTest::clickMovesTheHandleThere()
{
    QFETCH(int, value);
    m_slider->setValue(60);

    QTest::mouseClick(m_slider, Qt::LeftButton, Qt::NoModifier, QPoint(handleAt(value), middle));

    QVERIFY2(qAbs(m_slider->value() - value) <= 1, qPrintable(QString::number(m_slider->value())));
}

void WhiteSliderTest::handleCanBeDragged()
{
    m_slider->setValue(20);
    QSignalSpy moved(m_slider, &QSlider::sliderMoved);

    const QPoint corner(20, 20);
    QWindow* window = m_window->windowHandle();
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, corner + QPoint(handleAt(20), middle));
    QTest::mouseMove(window, corner + QPoint(handleAt(70), middle));
    QTRY_VERIFY(m_slider->isSliderDown());
    QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, corner + QPoint(handleAt(70), middle));

    QVERIFY(!moved.isEmpty());
    QVERIFY(qAbs(m_slider->value() - 70) <= 1);
}

void WhiteSliderTest::arrowKeysMoveTheHandle()
{
    m_slider->setValue(20);

    QTest::keyClick(m_slider, Qt::Key_Right);

    QCOMPARE(m_slider->value(), 21);
}

void WhiteSliderTest::emptyRangeIsPainted()
{
    m_slider->setRange(0, 0);

    const QColor face = lighter(m_slider->palette().color(QPalette::Button), 105);

    QVERIFY(picture().extentOf(face, m_slider->rect(), 3).center().x() < 20);
}

void WhiteSliderTest::verticalSliderIsTheApplications()
{
    QSlider expected(Qt::Vertical, m_window.get());
    WhiteSlider slider(m_window.get());
    slider.setOrientation(Qt::Vertical);
    for (QSlider* one : std::initializer_list<QSlider*>{ &expected, &slider })
        one->resize(30, 100);

    QCOMPARE(slider.sizeHint(), expected.sizeHint());
    QCOMPARE(Picture(slider).image(), Picture(expected).image());
}

QTEST_MAIN(WhiteSliderTest)

#include "tst_whiteslider.moc"
