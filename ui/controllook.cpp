// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controllook.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

#include <cmath>

namespace {

constexpr double heightInFontHeights = 1.9;
constexpr qreal outerRadius = 4;
constexpr qreal innerRadius = 3;
constexpr int borderDarkness = 130; // per cent
constexpr qreal fading = 0.45;

// A rectangle with rounded corners on its free sides.
QPainterPath outline(const QRectF& area, qreal radius, const ControlLook::Shape& shape)
{
    const qreal left = shape.isLeftJoined ? 0 : radius;
    const qreal right = shape.isRightJoined ? 0 : radius;
    QPainterPath path;
    path.moveTo(area.left() + left, area.top());
    path.lineTo(area.right() - right, area.top());
    path.arcTo(QRectF(area.right() - 2 * right, area.top(), 2 * right, 2 * right), 90, -90);
    path.lineTo(area.right(), area.bottom() - right);
    path.arcTo(QRectF(area.right() - 2 * right, area.bottom() - 2 * right, 2 * right, 2 * right), 0, -90);
    path.lineTo(area.left() + left, area.bottom());
    path.arcTo(QRectF(area.left(), area.bottom() - 2 * left, 2 * left, 2 * left), 270, -90);
    path.lineTo(area.left(), area.top() + left);
    path.arcTo(QRectF(area.left(), area.top(), 2 * left, 2 * left), 180, -90);
    path.closeSubpath();
    return path;
}

// The area without its frame of this width; a side joined on the left has none.
QRectF withoutFrame(const QRectF& area, qreal width, bool isLeftFramed)
{
    return area.adjusted(isLeftFramed ? width : 0, width, -width, -width);
}

} // namespace

int ControlLook::controlHeight(const QFontMetrics& metrics)
{
    return int(std::lround(metrics.height() * heightInFontHeights));
}

QColor ControlLook::mixed(const QColor& first, const QColor& second, qreal part)
{
    return QColor::fromRgbF(first.redF() + (second.redF() - first.redF()) * part,
        first.greenF() + (second.greenF() - first.greenF()) * part,
        first.blueF() + (second.blueF() - first.blueF()) * part);
}

QColor ControlLook::border(const QPalette& palette)
{
    return palette.color(QPalette::Button).darker(borderDarkness);
}

QColor ControlLook::hoveredBorder(const QPalette& palette)
{
    return mixed(border(palette), palette.color(QPalette::Highlight), 0.5);
}

QColor ControlLook::faded(const QColor& colour, const QColor& ground)
{
    return mixed(colour, ground, fading);
}

void ControlLook::drawFrame(QPainter& painter, const Shape& shape, const Colours& colours)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area(shape.area);
    const bool isFocused = colours.focusRing.isValid();
    painter.fillPath(outline(area, outerRadius, shape), isFocused ? colours.focusRing : colours.border);
    QRectF inside = withoutFrame(area, isFocused ? 2 : 1, isFocused || !shape.isLeftJoined);
    if (colours.innerFocusRing.isValid()) {
        painter.fillPath(outline(inside, innerRadius, shape), colours.innerFocusRing);
        inside = withoutFrame(inside, 1, true);
    }
    painter.fillPath(outline(inside, innerRadius, shape), colours.topEdge);
    painter.fillPath(outline(inside.adjusted(0, 1, 0, 0), innerRadius, shape), colours.face);
    painter.restore();
}
