// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QMargins>
#include <QRect>

class QPainter;
class QPalette;

/// What the painted parts of a table have in common, so that cells, header and the ruled space below fit together.
///
/// Thread: GUI. Lengths are device-independent pixels.
namespace TableLook {

/// Around the text of a cell or of a header section.
constexpr QMargins cellMargins(6, 6, 12, 6);

/// Of every separator line.
QColor lineColour();

/// Of every second row, in the palette's current colour group.
QColor rowShade(const QPalette& palette);

/// What the other rows stand on, in the palette's current colour group: its Base colour or, where the shade could not
/// be told from that, a tone beside it.
QColor rowGround(const QPalette& palette);

/// Of the header's sections, in the palette's current colour group.
QColor headerShade(const QPalette& palette);

/// A line of one pixel inside the rectangle, along its bottom or its right edge. On a screen of a fractional scale all
/// lines have the same whole number of device pixels.
void drawBottomLine(QPainter& painter, const QRect& area);
void drawRightLine(QPainter& painter, const QRect& area);

/// The text on one line: line breaks and other control characters become blanks, and what no screen is wide enough for
/// is cut off.
QString singleLine(const QString& text);

} // namespace TableLook
