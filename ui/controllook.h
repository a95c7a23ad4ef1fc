// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QRect>

class QFontMetrics;
class QPainter;
class QPalette;
class QStyleOption;

/// What the styled controls have in common: one height, one frame, shades of the palette's colours.
///
/// Thread: GUI. Lengths are device-independent pixels.
namespace ControlLook {

/// The dynamic properties of a `WhiteButton` that tell whether a side is joined to a neighbouring button, and their
/// values.
constexpr char leftSideProperty[] = "leftSideType";
constexpr char rightSideProperty[] = "rightSideType";
enum SideType
{
    FreeSide = 0,
    JoinedSide = 1
};

/// Where a control stands, and which of its sides are joined to a neighbour: these have square corners, and the two
/// neighbours share the hairline of the left one.
struct Shape
{
    QRect area;
    bool isLeftJoined = false;
    bool isRightJoined = false;
};

struct Colours
{
    QColor face;
    /// Along the top of the face.
    QColor topEdge;
    QColor border;
    QColor text;
    /// Around a control that has the focus, and a second ring inside where the first would be lost on the face; both
    /// are invalid otherwise.
    QColor focusRing;
    QColor innerFocusRing;
};

/// Of every control in a row.
int controlHeight(const QFontMetrics& metrics);

/// So much of the second colour, 0 to 1, in the first one.
QColor mixed(const QColor& first, const QColor& second, qreal part);

/// Of a control on the palette's Button colour.
QColor border(const QPalette& palette);

/// The border as it is while the pointer is over the control.
QColor hoveredBorder(const QPalette& palette);

/// What is left of a colour in a disabled control.
QColor faded(const QColor& colour, const QColor& ground);

/// Draws the border, the face and the focus ring.
void drawFrame(QPainter& painter, const Shape& shape, const Colours& colours);

} // namespace ControlLook
