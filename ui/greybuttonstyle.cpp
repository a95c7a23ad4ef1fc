// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/greybuttonstyle.h"

#include <QStyleOptionButton>

namespace {

constexpr QRgb textColour = qRgb(250, 250, 250);
constexpr int brightness = 96; // of 255
constexpr int topEdgeLightness = 110; // per cent
constexpr int hoveredLightness = 110;
constexpr int pressedDarkness = 120;
constexpr int borderDarkness = 140;

QColor greyOf(const QPalette& palette)
{
    QColor grey = palette.color(QPalette::Active, QPalette::Button);
    grey.setHsv(grey.hsvHue(), grey.hsvSaturation(), brightness);
    return grey;
}

} // namespace

ControlLook::Colours GreyButtonStyle::coloursOf(const QStyleOptionButton& option) const
{
    const QColor grey = greyOf(option.palette);
    const bool isEnabled = option.state.testFlag(State_Enabled);
    const bool isPressed = option.state.testFlag(State_Sunken) || option.state.testFlag(State_On);
    ControlLook::Colours colours;
    colours.face = grey;
    if (isEnabled && isPressed)
        colours.face = grey.darker(pressedDarkness);
    else if (isEnabled && option.state.testFlag(State_MouseOver))
        colours.face = grey.lighter(hoveredLightness);
    colours.topEdge = isPressed ? colours.face : colours.face.lighter(topEdgeLightness);
    colours.border = grey.darker(borderDarkness);
    colours.text = QColor(textColour);
    if (!isEnabled) {
        const QColor ground = option.palette.color(QPalette::Window);
        colours.face = colours.topEdge = ControlLook::faded(grey, ground);
        colours.border = ControlLook::faded(colours.border, ground);
        colours.text = ControlLook::faded(colours.text, colours.face).lighter(topEdgeLightness);
    } else if (option.state.testFlag(State_HasFocus)) {
        colours.focusRing = option.palette.color(QPalette::Highlight);
        colours.innerFocusRing = colours.text;
    }
    return colours;
}
