// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/logowidget.h"

#include "resources/resources.h"

#include <QImage>
#include <QPixmap>
#include <QSignalSpy>
#include <QtTest>

class LogoWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void widthFollowsTheHeight_data();
    void widthFollowsTheHeight();
    void productPictureIsPainted();
    void releaseInsideIsAClick();
    void releaseOutsideIsNoClick();
    void otherButtonsDoNotClick();
    void keyboardDoesNotReachIt();
};

void LogoWidgetTest::initTestCase()
{
    initialiseResources();
}

void LogoWidgetTest::widthFollowsTheHeight_data()
{
    QTest::addColumn<int>("height");

    QTest::newRow("small") << 12;
    QTest::newRow("usual") << 24;
    QTest::newRow("large") << 80;
}

void LogoWidgetTest::widthFollowsTheHeight()
{
    QFETCH(int, height);
    const QPixmap picture(":/Resources/Vellumcast.png");
    LogoWidget widget;
    widget.show();

    widget.resize(widget.width(), height);

    const double expected = double(height) * picture.width() / picture.height();
    QVERIFY2(qAbs(widget.width() - expected) <= 1.0, qPrintable(QString::number(widget.width())));
    QCOMPARE(widget.minimumWidth(), widget.width());
    QCOMPARE(widget.maximumWidth(), widget.width());
}

void LogoWidgetTest::productPictureIsPainted()
{
    LogoWidget widget;
    widget.show();
    widget.resize(widget.width(), 24);

    const QImage image = widget.grab().toImage();

    int marked = 0;
    const QColor ground = widget.palette().color(QPalette::Window);
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y)
            marked += image.pixelColor(x, y) != ground ? 1 : 0;
    }
    QVERIFY2(marked > image.width() * image.height() / 20, qPrintable(QString::number(marked)));
}

void LogoWidgetTest::releaseInsideIsAClick()
{
    LogoWidget widget;
    widget.show();
    const QSignalSpy clicks(&widget, &LogoWidget::clicked);

    QTest::mousePress(&widget, Qt::LeftButton);
    QCOMPARE(clicks.count(), 0);
    QTest::mouseRelease(&widget, Qt::LeftButton);

    QCOMPARE(clicks.count(), 1);
}

void LogoWidgetTest::releaseOutsideIsNoClick()
{
    LogoWidget widget;
    widget.show();
    const QSignalSpy clicks(&widget, &LogoWidget::clicked);

    QTest::mousePress(&widget, Qt::LeftButton);
    QTest::mouseRelease(&widget, Qt::LeftButton, Qt::NoModifier, QPoint(widget.width() + 10, 5));

    QCOMPARE(clicks.count(), 0);
}

void LogoWidgetTest::otherButtonsDoNotClick()
{
    LogoWidget widget;
    widget.show();
    const QSignalSpy clicks(&widget, &LogoWidget::clicked);

    QTest::mouseClick(&widget, Qt::RightButton);
    QTest::mouseClick(&widget, Qt::MiddleButton);

    QCOMPARE(clicks.count(), 0);
}

void LogoWidgetTest::keyboardDoesNotReachIt()
{
    const LogoWidget widget;

    QCOMPARE(widget.focusPolicy(), Qt::NoFocus);
}

QTEST_MAIN(LogoWidgetTest)
#include "tst_logowidget.moc"
