// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/whitebuttonstyle.h"

#include <QStyleOptionButton>
#include <QVariant>
#include <QWidget>

namespace {

constexpr int pressedDarkness = 110; // per cent
constexpr int restingLightness = 105;
constexpr int hoveredLightness = 110;
constexpr int checkedBorderDarkness = 130;
constexpr int checkedRingDarkness = 150;
// What a disabled button takes over from the ground, and its text from the face.
constexpr qreal disabledFacePart = 0.3;
constexpr qreal disabledTextPart = 0.4;

QColor faceOf(const QColor& ground, QStyle::State state)
{
    if (state.testFlag(QStyle::State_Sunken))
        return ground.darker(pressedDarkness);
    return ground.lighter(state.testFlag(QStyle::State_MouseOver) ? hoveredLightness : restingLightness);
}

ControlLook::Colours uncheckedColours(const QPalette& palette, QStyle::State state)
{
    ControlLook::Colours colours;
    const bool isHovered = state.testFlag(QStyle::State_MouseOver);
    colours.face = faceOf(palette.color(QPalette::Button), state);
    colours.topEdge = state.testFlag(QStyle::State_Sunken) ? colours.face : colours.face.lighter(hoveredLightness);
    colours.border = isHovered ? ControlLook::hoveredBorder(palette) : ControlLook::border(palette);
    colours.text = palette.color(QPalette::ButtonText);
    if (state.testFlag(QStyle::State_HasFocus))
        colours.focusRing = palette.color(QPalette::Highlight);
    return colours;
}

ControlLook::Colours checkedColours(const QPalette& palette, QStyle::State state)
{
    ControlLook::Colours colours;
    const QColor& highlight = palette.color(QPalette::Highlight);
    const bool isResting = !(state & (QStyle::State_Sunken | QStyle::State_MouseOver));
    colours.face = isResting ? highlight : faceOf(highlight, state);
    colours.topEdge = colours.face;
    colours.border = highlight.darker(checkedBorderDarkness);
    colours.text = palette.color(QPalette::HighlightedText);
    if (state.testFlag(QStyle::State_HasFocus)) {
        colours.focusRing = highlight.darker(checkedRingDarkness);
        colours.innerFocusRing = colours.text;
    }
    return colours;
}

bool isJoined(const QWidget* widget, const char* property)
{
    return widget && widget->property(property).toInt() == ControlLook::JoinedSide;
}

} // namespace

ControlLook::Colours WhiteButtonStyle::coloursOf(const QStyleOptionButton& option) const
{
    const bool isEnabled = option.state.testFlag(State_Enabled);
    QPalette palette = option.palette;
    // Not the disabled colours: on many palettes they can hardly be read.
    if (!isEnabled)
        palette.setCurrentColorGroup(QPalette::Active);
    const State state = isEnabled ? option.state : option.state & ~(State_MouseOver | State_Sunken | State_HasFocus);
    ControlLook::Colours colours
        = state.testFlag(State_On) ? checkedColours(palette, state) : uncheckedColours(palette, state);
    if (isEnabled)
        return colours;
    const QColor ground = palette.color(QPalette::Window);
    colours.face = ControlLook::mixed(colours.face, ground, disabledFacePart);
    colours.topEdge = colours.face;
    colours.border = ControlLook::faded(colours.border, ground);
    colours.text = ControlLook::mixed(colours.text, colours.face, disabledTextPart);
    return colours;
}

ControlLook::Shape WhiteButtonStyle::shapeOf(const QStyleOptionButton& option, const QWidget* widget) const
{
    return { option.rect, isJoined(widget, ControlLook::leftSideProperty),
        isJoined(widget, ControlLook::rightSideProperty) };
}
