// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/tablelook.h"

#include <QPainter>
#include <QPalette>

#include <algorithm>
#include <cmath>

namespace {

constexpr int shadeOfRows = 106; // per cent of the Base colour's brightness
constexpr int shadeOfHeader = 105;
constexpr int leastDistance = 7; // steps of a colour; six and fewer can hardly be seen
constexpr int longestText = 5000; // characters; laying out a whole book for one cell would stop the program

// Thickness of a line on this device.
qreal lineWidth(const QPainter& painter)
{
    const qreal scale = std::abs(painter.deviceTransform().m11());
    return scale > 1 ? std::floor(scale) / scale : 1.0;
}

bool breaksLine(QChar character)
{
    const QChar::Category category = character.category();
    return category == QChar::Other_Control || category == QChar::Separator_Line
        || category == QChar::Separator_Paragraph;
}

// In the channel in which they differ most.
int distance(const QColor& colour, const QColor& other)
{
    return std::max({ std::abs(colour.red() - other.red()), std::abs(colour.green() - other.green()),
        std::abs(colour.blue() - other.blue()) });
}

QColor shifted(const QColor& colour, int steps)
{
    const auto shift = [steps](int channel) {
        return std::clamp(channel + steps, 0, 255);
    };
    return { shift(colour.red()), shift(colour.green()), shift(colour.blue()) };
}

} // namespace

QColor TableLook::lineColour()
{
    return { 224, 224, 224 };
}

QColor TableLook::rowShade(const QPalette& palette)
{
    return palette.color(QPalette::Base).lighter(shadeOfRows);
}

// A factor makes nothing lighter than white, and a dark colour hardly lighter than it is. There the shaded rows are as
// light as they are, and the others step back; from black there is no way but up.
QColor TableLook::rowGround(const QPalette& palette)
{
    const QColor& base = palette.color(QPalette::Base);
    const int missing = leastDistance - distance(rowShade(palette), base);
    if (missing <= 0)
        return base;
    return shifted(base, base.value() >= missing ? -missing : missing);
}

QColor TableLook::headerShade(const QPalette& palette)
{
    return palette.color(QPalette::Base).lighter(shadeOfHeader);
}

void TableLook::drawBottomLine(QPainter& painter, const QRect& area)
{
    const qreal width = lineWidth(painter);
    painter.fillRect(QRectF(area.left(), area.bottom() + 1 - width, area.width(), width), lineColour());
}

void TableLook::drawRightLine(QPainter& painter, const QRect& area)
{
    const qreal width = lineWidth(painter);
    painter.fillRect(QRectF(area.right() + 1 - width, area.top(), width, area.height()), lineColour());
}

QString TableLook::singleLine(const QString& text)
{
    QString line = text.left(longestText);
    std::replace_if(line.begin(), line.end(), breaksLine, QLatin1Char(' '));
    return line;
}
