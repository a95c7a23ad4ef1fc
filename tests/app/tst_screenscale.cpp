// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/screenscale.h"

#include <QtTest>

class ScreenScaleTest : public QObject
{
    Q_OBJECT

private slots:
    void errorsOfMeasurementAreAlmostWhole_data();
    void errorsOfMeasurementAreAlmostWhole();
};

void ScreenScaleTest::errorsOfMeasurementAreAlmostWhole_data()
{
    QTest::addColumn<double>("factor");
    QTest::addColumn<bool>("isAlmostWhole");
    QTest::newRow("96 dots an inch") << 1.0 << false;
    QTest::newRow("192 dots an inch") << 2.0 << false;
    QTest::newRow("1400 dots on 370 mm") << 1.00113 << true;
    QTest::newRow("1280 dots on 339 mm") << 0.99899 << true;
    QTest::newRow("100 dots an inch") << 100 / 96.0 << true;
    QTest::newRow("twice that of 1400 dots on 370 mm") << 2.00225 << true;
    QTest::newRow("a quarter larger") << 1.25 << false;
    QTest::newRow("half as large again") << 1.5 << false;
    QTest::newRow("three quarters larger") << 1.75 << false;
}

void ScreenScaleTest::errorsOfMeasurementAreAlmostWhole()
{
    QFETCH(double, factor);
    QFETCH(bool, isAlmostWhole);

    QCOMPARE(ScreenScale::isAlmostWhole(factor), isAlmostWhole);
}

QTEST_GUILESS_MAIN(ScreenScaleTest)
#include "tst_screenscale.moc"
