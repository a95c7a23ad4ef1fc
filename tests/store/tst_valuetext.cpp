// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/valuetext.h"

#include <QtTest>

#include <limits>

class ValueTextTest : public QObject
{
    Q_OBJECT

private slots:
    void durationIsMinutesAndSecondsRoundedUp_data();
    void durationIsMinutesAndSecondsRoundedUp();
    void byteSizeStepsBy1024_data();
    void byteSizeStepsBy1024();
    void textsDoNotFollowTheLocale();
};

void ValueTextTest::durationIsMinutesAndSecondsRoundedUp_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");

    QTest::newRow("nothing") << 0.0 << "00:00";
    QTest::newRow("a moment") << 0.001 << "00:01";
    QTest::newRow("whole") << 59.0 << "00:59";
    QTest::newRow("carries into minutes") << 59.5 << "01:00";
    QTest::newRow("fraction") << 125.2 << "02:06";
    QTest::newRow("over an hour") << 3725.0 << "62:05";
    QTest::newRow("three digits of minutes") << 6000.0 << "100:00";
    QTest::newRow("negative") << -3.5 << "00:00";
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << "00:00";
    QTest::newRow("endless") << std::numeric_limits<double>::infinity() << "16666666666666:40";
}

void ValueTextTest::durationIsMinutesAndSecondsRoundedUp()
{
    QFETCH(double, seconds);
    QFETCH(QString, text);

    QCOMPARE(durationText(seconds), text);
}

void ValueTextTest::byteSizeStepsBy1024_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<QString>("text");

    QTest::newRow("zero") << qint64(0) << 2 << "0 B";
    QTest::newRow("negative") << qint64(-5000) << 2 << "-5000 B";
    QTest::newRow("last of bytes") << qint64(1023) << 2 << "1023 B";
    QTest::newRow("first of kilobytes") << qint64(1024) << 2 << "1.00 KB";
    QTest::newRow("kilobytes") << qint64(1500) << 2 << "1.46 KB";
    QTest::newRow("no decimals") << qint64(1500) << 0 << "1 KB";
    QTest::newRow("last of kilobytes") << qint64(1048575) << 1 << "1024.0 KB";
    QTest::newRow("first of megabytes") << qint64(1048576) << 1 << "1.0 MB";
    QTest::newRow("first of gigabytes") << qint64(1073741824) << 2 << "1.00 GB";
    QTest::newRow("last of gigabytes") << Q_INT64_C(1099511627775) << 0 << "1024 GB";
    QTest::newRow("greater unit, same label") << Q_INT64_C(2199023255552) << 0 << "2 GB";
}

void ValueTextTest::byteSizeStepsBy1024()
{
    QFETCH(qint64, bytes);
    QFETCH(int, decimals);
    QFETCH(QString, text);

    QCOMPARE(byteSizeText(bytes, decimals), text);
}

void ValueTextTest::textsDoNotFollowTheLocale()
{
    const QLocale previousLocale;
    QLocale::setDefault(QLocale(QLocale::German));

    const QString text = byteSizeText(1500, 2);

    QLocale::setDefault(previousLocale);
    QCOMPARE(text, QStringLiteral("1.46 KB"));
}

QTEST_GUILESS_MAIN(ValueTextTest)

#include "tst_valuetext.moc"
