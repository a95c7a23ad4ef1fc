// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/buttonstyle.h"

/// Light buttons on the palette's Button colour; a checked one has the palette's Highlight.
///
/// Owner: the button that it is installed on. Thread: GUI.
class WhiteButtonStyle : public ButtonStyle
{
    Q_OBJECT

public:
    WhiteButtonStyle() = default;

protected:
    ControlLook::Colours coloursOf(const QStyleOptionButton& option) const override;
    /// By the widget's dynamic properties "leftSideType" and "rightSideType".
    ControlLook::Shape shapeOf(const QStyleOptionButton& option, const QWidget* widget) const override;
};
