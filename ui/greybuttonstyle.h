// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/buttonstyle.h"

/// Dark grey buttons with white text, for a window's principal actions.
///
/// The grey has a tint of the palette's Button colour but never its brightness, so that the text can be read on every
/// palette. Owner: the button that it is installed on. Thread: GUI.
class GreyButtonStyle : public ButtonStyle
{
    Q_OBJECT

public:
    GreyButtonStyle() = default;

protected:
    ControlLook::Colours coloursOf(const QStyleOptionButton& option) const override;
};
