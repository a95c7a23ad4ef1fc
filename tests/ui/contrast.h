// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QPalette>

#include <algorithm>
#include <cmath>

inline QPalette darkPalette()
{
    QPalette palette(QColor(45, 45, 45));
    palette.setColor(QPalette::Base, QColor(30, 30, 30));
    palette.setColor(QPalette::Text, QColor(230, 230, 230));
    return palette;
}

// How far two colours stand apart in brightness, from 1 to 21, as the web's accessibility guidelines count it.
inline double contrast(const QColor& one, const QColor& other)
{
    const auto luminance = [](const QColor& color) {
        const auto linear = [](double part) {
            return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
    };
    const auto sorted = std::minmax({ luminance(one), luminance(other) });
    return (sorted.second + 0.05) / (sorted.first + 0.05);
}
