// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/valuetext.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace {

constexpr qint64 kibibyte = Q_INT64_C(1) << 10;
constexpr qint64 mebibyte = Q_INT64_C(1) << 20;
constexpr qint64 gibibyte = Q_INT64_C(1) << 30;
constexpr qint64 tebibyte = Q_INT64_C(1) << 40;

// Larger than any real duration, small enough for the conversion to an integer.
constexpr double greatestSeconds = 1e15;

QString unitText(const char* pattern, qint64 bytes, qint64 unit, int decimals)
{
    const double count = static_cast<double>(bytes) / static_cast<double>(unit);
    return QCoreApplication::translate("ValueText", pattern).arg(QString::number(count, 'f', decimals));
}

} // namespace

QString durationText(double seconds)
{
    // Not a number compares false and becomes 0 like everything below it.
    const double bounded = seconds > 0.0 ? std::min(seconds, greatestSeconds) : 0.0;
    const auto wholeSeconds = static_cast<qint64>(std::ceil(bounded));
    return QStringLiteral("%1:%2").arg(QString::number(wholeSeconds / 60).rightJustified(2, QLatin1Char('0')),
        QString::number(wholeSeconds % 60).rightJustified(2, QLatin1Char('0')));
}

QString byteSizeText(qint64 bytes, int decimals)
{
    if (bytes < kibibyte)
        return QCoreApplication::translate("ValueText", "%1 B").arg(QString::number(bytes));
    if (bytes < mebibyte)
        return unitText(QT_TRANSLATE_NOOP("ValueText", "%1 KB"), bytes, kibibyte, decimals);
    if (bytes < gibibyte)
        return unitText(QT_TRANSLATE_NOOP("ValueText", "%1 MB"), bytes, mebibyte, decimals);
    return unitText(QT_TRANSLATE_NOOP("ValueText", "%1 GB"), bytes, bytes < tebibyte ? gibibyte : tebibyte, decimals);
}
