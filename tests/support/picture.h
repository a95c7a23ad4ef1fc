// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QImage>
#include <QRect>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace TestSupport {

/// The colour made lighter by this per cent, as a picture shows it.
inline QColor lighter(const QColor& colour, int factor)
{
    return colour.lighter(factor).rgb();
}

/// What a widget looks like, asked by its own coordinates whatever the scale of the screen.
///
/// Owner and thread: one test.
class Picture final
{
public:
    explicit Picture(QWidget& widget)
        : Picture(widget.grab().toImage())
    {
    }

    explicit Picture(const QImage& image)
        : m_image(image.convertToFormat(QImage::Format_ARGB32_Premultiplied))
    {
    }

    const QImage& image() const { return m_image; }

    /// The colour in the middle of this pixel.
    QColor at(const QPoint& point) const
    {
        const qreal ratio = m_image.devicePixelRatio();
        return m_image.pixelColor(int((point.x() + 0.5) * ratio), int((point.y() + 0.5) * ratio));
    }

    QColor at(int x, int y) const { return at(QPoint(x, y)); }

    /// True when this is the colour of any part of the pixel: on a fractional scale a line is thinner than a pixel.
    bool isTouchedBy(const QColor& colour, const QPoint& point) const
    {
        const qreal ratio = m_image.devicePixelRatio();
        for (int y = int(point.y() * ratio); y < (point.y() + 1) * ratio; ++y) {
            for (int x = int(point.x() * ratio); x < (point.x() + 1) * ratio; ++x) {
                if (m_image.valid(x, y) && m_image.pixelColor(x, y) == colour)
                    return true;
            }
        }
        return false;
    }

    /// The smallest rectangle around all that is about of this colour, within an area; empty when nothing is.
    QRect extentOf(const QColor& colour, const QRect& area, int tolerance = 40) const
    {
        QRect found;
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x) {
                if (isNear(at(x, y), colour, tolerance))
                    found = found.united(QRect(x, y, 1, 1));
            }
        }
        return found;
    }

    bool has(const QColor& colour, const QRect& area, int tolerance = 40) const
    {
        return !extentOf(colour, area, tolerance).isEmpty();
    }

    static bool isNear(const QColor& colour, const QColor& other, int tolerance)
    {
        return std::max({ std::abs(colour.red() - other.red()), std::abs(colour.green() - other.green()),
                   std::abs(colour.blue() - other.blue()) })
            <= tolerance;
    }

private:
    QImage m_image;
};

} // namespace TestSupport
