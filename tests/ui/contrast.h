// SPDX-License-Identifier: GPL-3.0-or-later
// How readable a colour is on another, as the web's accessibility guidelines count it.
#pragma once

#include <QColor>

#include <algorithm>
#include <cmath>

namespace TestSupport {

inline double luminanceOf(const QColor& colour)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

/// From 1, no contrast at all, to 21, black on white.
inline double contrastOf(const QColor& one, const QColor& other)
{
    const double first = luminanceOf(one) + 0.05;
    const double second = luminanceOf(other) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

} // namespace TestSupport
