// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/pixmapwidget.h"

#include <QImage>
#include <QPainter>
#include <QtTest>

namespace {

// Frames of one colour each, laid out row by row; the sizes are in device-independent pixels.
QPixmap coloredSheet(const QVector<QColor>& colors, int framesPerRow, int frameSize, int ratio = 1)
{
    const int rows = (colors.size() + framesPerRow - 1) / framesPerRow;
    QPixmap sheet(framesPerRow * frameSize * ratio, rows * frameSize * ratio);
    sheet.fill(Qt::transparent);
    QPainter painter(&sheet);
    for (int index = 0; index < colors.size(); ++index) {
        const QPoint cell(index % framesPerRow, index / framesPerRow);
        painter.fillRect(QRect(cell * frameSize * ratio, QSize(frameSize, frameSize) * ratio), colors.at(index));
    }
    painter.end();
    sheet.setDevicePixelRatio(ratio);
    return sheet;
}

QColor centerColor(QWidget& widget)
{
    const QImage image = widget.grab().toImage();
    return image.pixelColor(image.rect().center());
}

// A shown widget on a white ground, so that "nothing painted" has a colour.
void showOnWhite(PixmapWidget& widget)
{
    QPalette palette;
    palette.setColor(QPalette::Window, Qt::white);
    widget.setPalette(palette);
    widget.setAutoFillBackground(true);
    widget.resize(20, 20);
    widget.show();
}

} // namespace

class PixmapWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void frameRateIsClamped_data();
    void frameRateIsClamped();
    void frameSizeIsClampedToTheSheet_data();
    void frameSizeIsClampedToTheSheet();
    void framesFollowTheClock_data();
    void framesFollowTheClock();
    void framesLieRowByRow_data();
    void framesLieRowByRow();
    void stillPictureIsPaintedWhole();
    void nothingIsPaintedUntilAskedFor();
    void nothingIsPaintedWithoutAPicture();
    void animationShowsEveryFrameInTurn();
    void sharpSheetIsMeasuredInWidgetPixels();
    void animationRunsOnlyWhileVisible();
    void stillPictureDoesNotAnimate();
    void delayedRequestIsNotAppliedAtOnce();
    void delayedShowAndHideAreApplied();
    void lastDelayedRequestWins();
    void immediateRequestCancelsADelayedOne();
    void sizeHintIsOneFrame();
};

void PixmapWidgetTest::frameRateIsClamped_data()
{
    QTest::addColumn<int>("given");
    QTest::addColumn<int>("used");

    QTest::newRow("negative") << -3 << 1;
    QTest::newRow("zero") << 0 << 1;
    QTest::newRow("within") << 12 << 12;
    QTest::newRow("largest") << 60 << 60;
    QTest::newRow("too fast") << 100 << 60;
}

void PixmapWidgetTest::frameRateIsClamped()
{
    QFETCH(int, given);
    PixmapWidget widget;

    widget.setAnimatedPixmap(coloredSheet({ Qt::red, Qt::blue }, 2, 20), 20, 20, given);

    QTEST(widget.frameRate(), "used");
}

void PixmapWidgetTest::frameSizeIsClampedToTheSheet_data()
{
    QTest::addColumn<QSize>("given");
    QTest::addColumn<QSize>("used");

    QTest::newRow("within") << QSize(20, 10) << QSize(20, 10);
    QTest::newRow("too wide") << QSize(41, 20) << QSize(40, 20);
    QTest::newRow("too high") << QSize(20, 1000) << QSize(20, 20);
    QTest::newRow("zero") << QSize(0, 0) << QSize(1, 1);
    QTest::newRow("negative") << QSize(-5, -5) << QSize(1, 1);
}

void PixmapWidgetTest::frameSizeIsClampedToTheSheet()
{
    QFETCH(QSize, given);
    PixmapWidget widget;

    widget.setAnimatedPixmap(coloredSheet({ Qt::red, Qt::blue }, 2, 20), given.width(), given.height(), 10);

    QTEST(widget.frameSize(), "used");
}

void PixmapWidgetTest::framesFollowTheClock_data()
{
    QTest::addColumn<qint64>("time");
    QTest::addColumn<int>("frame");

    QTest::newRow("start") << qint64(0) << 0;
    QTest::newRow("just before the second frame") << qint64(83) << 0;
    QTest::newRow("second frame") << qint64(84) << 1;
    QTest::newRow("one round") << qint64(500) << 0;
    QTest::newRow("a day of today") << qint64(1700000000250) << 3;
}

void PixmapWidgetTest::framesFollowTheClock()
{
    QFETCH(qint64, time);
    PixmapWidget widget;
    widget.setAnimatedPixmap(QPixmap(60, 40), 20, 20, 12);

    QTEST(widget.frameAt(time), "frame");
}

void PixmapWidgetTest::framesLieRowByRow_data()
{
    QTest::addColumn<int>("frame");
    QTest::addColumn<QRect>("area");

    QTest::newRow("first") << 0 << QRect(0, 0, 20, 10);
    QTest::newRow("end of the first row") << 2 << QRect(40, 0, 20, 10);
    QTest::newRow("begin of the second row") << 3 << QRect(0, 10, 20, 10);
    QTest::newRow("last") << 5 << QRect(40, 10, 20, 10);
}

void PixmapWidgetTest::framesLieRowByRow()
{
    QFETCH(int, frame);
    PixmapWidget widget;
    // A strip too narrow for a frame is left over at the right.
    widget.setAnimatedPixmap(QPixmap(65, 20), 20, 10, 12);

    QTEST(widget.frameArea(frame), "area");
}

void PixmapWidgetTest::stillPictureIsPaintedWhole()
{
    PixmapWidget widget;
    widget.setPixmap(coloredSheet({ Qt::red, Qt::blue }, 2, 10));
    showOnWhite(widget);

    widget.setPictureVisible(true);

    const QImage image = widget.grab().toImage();
    QCOMPARE(image.pixelColor(5, 10), QColor(Qt::red));
    QCOMPARE(image.pixelColor(15, 10), QColor(Qt::blue));
    QCOMPARE(image.pixelColor(10, 1), QColor(Qt::white));
    QCOMPARE(widget.frameRate(), 0);
}

void PixmapWidgetTest::nothingIsPaintedUntilAskedFor()
{
    PixmapWidget widget;
    widget.setPixmap(coloredSheet({ Qt::red }, 1, 20));
    showOnWhite(widget);

    QVERIFY(!widget.isPictureVisible());
    QCOMPARE(centerColor(widget), QColor(Qt::white));
    widget.setPictureVisible(true);
    QCOMPARE(centerColor(widget), QColor(Qt::red));
    widget.setPictureVisible(false);
    QCOMPARE(centerColor(widget), QColor(Qt::white));
}

void PixmapWidgetTest::nothingIsPaintedWithoutAPicture()
{
    PixmapWidget widget;
    showOnWhite(widget);
    widget.setPictureVisible(true);
    QCOMPARE(centerColor(widget), QColor(Qt::white));

    widget.setAnimatedPixmap(QPixmap(), 20, 20, 12);

    QCOMPARE(centerColor(widget), QColor(Qt::white));
}

void PixmapWidgetTest::animationShowsEveryFrameInTurn()
{
    PixmapWidget widget;
    widget.setAnimatedPixmap(coloredSheet({ Qt::red, Qt::green, Qt::blue, Qt::black }, 2, 20), 20, 20, 30);
    showOnWhite(widget);
    widget.setPictureVisible(true);

    QTRY_COMPARE(centerColor(widget), QColor(Qt::red));
    QTRY_COMPARE(centerColor(widget), QColor(Qt::green));
    QTRY_COMPARE(centerColor(widget), QColor(Qt::blue));
    QTRY_COMPARE(centerColor(widget), QColor(Qt::black));
}

void PixmapWidgetTest::sharpSheetIsMeasuredInWidgetPixels()
{
    PixmapWidget widget;
    widget.setAnimatedPixmap(coloredSheet({ Qt::red, Qt::red, Qt::red, Qt::red }, 2, 20, 2), 20, 20, 10);
    showOnWhite(widget);
    widget.setPictureVisible(true);

    QCOMPARE(widget.frameSize(), QSize(20, 20));
    QCOMPARE(widget.frameArea(3), QRect(20, 20, 20, 20));
    const QImage image = widget.grab().toImage();
    QCOMPARE(image.pixelColor(1, 1), QColor(Qt::red));
    QCOMPARE(image.pixelColor(18, 18), QColor(Qt::red));
}

void PixmapWidgetTest::animationRunsOnlyWhileVisible()
{
    PixmapWidget widget;
    widget.setAnimatedPixmap(coloredSheet({ Qt::red, Qt::blue }, 2, 20), 20, 20, 10);
    widget.setPictureVisible(true);
    QVERIFY(!widget.isAnimating());

    widget.show();
    QVERIFY(widget.isAnimating());
    widget.setPictureVisible(false);
    QVERIFY(!widget.isAnimating());
    widget.setPictureVisible(true);
    QVERIFY(widget.isAnimating());
    widget.hide();
    QVERIFY(!widget.isAnimating());
}

void PixmapWidgetTest::stillPictureDoesNotAnimate()
{
    PixmapWidget widget;
    widget.setAnimatedPixmap(coloredSheet({ Qt::red, Qt::blue }, 2, 20), 20, 20, 10);
    widget.show();
    widget.setPictureVisible(true);

    widget.setPixmap(coloredSheet({ Qt::red }, 1, 20));

    QVERIFY(!widget.isAnimating());
    QCOMPARE(widget.frameAt(1700000000250), 0);
}

void PixmapWidgetTest::delayedRequestIsNotAppliedAtOnce()
{
    PixmapWidget widget;

    widget.showPictureDelayed();

    QVERIFY(!widget.isPictureVisible());
    widget.applyDelayedVisibility();
    QVERIFY(widget.isPictureVisible());
}

void PixmapWidgetTest::delayedShowAndHideAreApplied()
{
    PixmapWidget widget;
    widget.showPictureDelayed();
    QTRY_VERIFY(widget.isPictureVisible());

    widget.hidePictureDelayed();
    QVERIFY(widget.isPictureVisible());
    QTRY_VERIFY(!widget.isPictureVisible());
}

void PixmapWidgetTest::lastDelayedRequestWins()
{
    PixmapWidget widget;
    PixmapWidget later;

    widget.showPictureDelayed();
    widget.hidePictureDelayed();
    later.showPictureDelayed();

    // By then the first widget's delay is over as well.
    QTRY_VERIFY(later.isPictureVisible());
    QVERIFY(!widget.isPictureVisible());
}

void PixmapWidgetTest::immediateRequestCancelsADelayedOne()
{
    PixmapWidget widget;
    PixmapWidget later;

    widget.showPictureDelayed();
    widget.setPictureVisible(false);
    later.showPictureDelayed();

    QTRY_VERIFY(later.isPictureVisible());
    QVERIFY(!widget.isPictureVisible());
}

void PixmapWidgetTest::sizeHintIsOneFrame()
{
    PixmapWidget widget;
    QVERIFY(!widget.sizeHint().isValid());

    widget.setAnimatedPixmap(QPixmap(240, 20), 20, 20, 10);
    QCOMPARE(widget.sizeHint(), QSize(20, 20));
    widget.setPixmap(QPixmap(64, 32));
    QCOMPARE(widget.sizeHint(), QSize(64, 32));
}

QTEST_MAIN(PixmapWidgetTest)
#include "tst_pixmapwidget.moc"
