// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/whitesliderstyle.h"

#include "ui/controllook.h"

#include <QPainter>
#include <QStyleOptionSlider>

namespace {

// Device-independent pixels.
constexpr int handleRoom = 18;
constexpr qreal handleDiameter = 12;
constexpr qreal grownHandleDiameter = 16;
constexpr qreal grooveHeight = 4;
// So much of the text's colour in the ground's: seen on light and on dark grounds.
constexpr qreal grooveInk = 0.25;
constexpr qreal handleBorderInk = 0.4;
constexpr int pressedDarkness = 110; // per cent
constexpr int handleLightness = 105;

struct SliderColours
{
    QColor groove;
    QColor filled;
    QColor handle;
    QColor handleBorder;
};

SliderColours coloursOf(const QStyleOptionSlider& option)
{
    QPalette palette = option.palette;
    const bool isEnabled = option.state.testFlag(QStyle::State_Enabled);
    if (!isEnabled)
        palette.setCurrentColorGroup(QPalette::Active);
    const bool isPressed = isEnabled && option.state.testFlag(QStyle::State_Sunken);
    SliderColours colours;
    const QColor window = palette.color(QPalette::Window);
    const QColor ink = palette.color(QPalette::WindowText);
    colours.groove = ControlLook::mixed(window, ink, grooveInk);
    colours.filled = palette.color(QPalette::Highlight);
    colours.handle = isPressed ? palette.color(QPalette::Button).darker(pressedDarkness)
                               : palette.color(QPalette::Button).lighter(handleLightness);
    colours.handleBorder = ControlLook::mixed(window, ink, handleBorderInk);
    if (isEnabled && option.state.testFlag(QStyle::State_HasFocus))
        colours.handleBorder = colours.filled;
    if (isEnabled)
        return colours;
    for (QColor* colour : { &colours.groove, &colours.filled, &colours.handle, &colours.handleBorder })
        *colour = ControlLook::faded(*colour, window);
    return colours;
}

bool isHandleGrown(const QStyleOptionSlider& option)
{
    return option.state.testFlag(QStyle::State_Enabled) && option.activeSubControls.testFlag(QStyle::SC_SliderHandle)
        && (option.state & (QStyle::State_MouseOver | QStyle::State_Sunken));
}

void drawGroove(
    QPainter& painter, const QStyleOptionSlider& option, const QPointF& handle, const SliderColours& colours)
{
    const QRectF area(option.rect);
    const QRectF groove(
        area.left() + handleRoom / 2.0, area.center().y() - grooveHeight / 2, area.width() - handleRoom, grooveHeight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colours.groove);
    painter.drawRoundedRect(groove, grooveHeight / 2, grooveHeight / 2);
    QRectF filled = groove;
    if (option.upsideDown)
        filled.setLeft(handle.x());
    else
        filled.setRight(handle.x());
    painter.setBrush(colours.filled);
    painter.drawRoundedRect(filled, grooveHeight / 2, grooveHeight / 2);
}

void drawHandle(
    QPainter& painter, const QStyleOptionSlider& option, const QPointF& centre, const SliderColours& colours)
{
    const bool isFocused
        = option.state.testFlag(QStyle::State_Enabled) && option.state.testFlag(QStyle::State_HasFocus);
    const qreal borderWidth = isFocused ? 2 : 1;
    const qreal radius = ((isHandleGrown(option) ? grownHandleDiameter : handleDiameter) - borderWidth) / 2;
    painter.setPen(QPen(colours.handleBorder, borderWidth));
    painter.setBrush(colours.handle);
    painter.drawEllipse(centre, radius, radius);
}

const QStyleOptionSlider* horizontalSlider(QStyle::ComplexControl control, const QStyleOptionComplex* option)
{
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    return control == QStyle::CC_Slider && slider && slider->orientation == Qt::Horizontal ? slider : nullptr;
}

} // namespace

void WhiteSliderStyle::drawComplexControl(
    ComplexControl control, const QStyleOptionComplex* option, QPainter* painter, const QWidget* widget) const
{
    const QStyleOptionSlider* slider = horizontalSlider(control, option);
    if (!slider) {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
        return;
    }
    const SliderColours colours = coloursOf(*slider);
    const QPointF handle = QRectF(proxy()->subControlRect(control, option, SC_SliderHandle, widget)).center();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    drawGroove(*painter, *slider, handle, colours);
    drawHandle(*painter, *slider, handle, colours);
    painter->restore();
}

QRect WhiteSliderStyle::subControlRect(
    ComplexControl control, const QStyleOptionComplex* option, SubControl subControl, const QWidget* widget) const
{
    const QStyleOptionSlider* slider = horizontalSlider(control, option);
    if (!slider || (subControl != SC_SliderGroove && subControl != SC_SliderHandle))
        return QProxyStyle::subControlRect(control, option, subControl, widget);
    if (subControl == SC_SliderGroove)
        return slider->rect;
    const int position = sliderPositionFromValue(slider->minimum, slider->maximum, slider->sliderPosition,
        slider->rect.width() - handleRoom, slider->upsideDown);
    return { slider->rect.left() + position, slider->rect.top() + (slider->rect.height() - handleRoom) / 2, handleRoom,
        handleRoom };
}

int WhiteSliderStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const
{
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (slider && slider->orientation != Qt::Horizontal)
        return QProxyStyle::pixelMetric(metric, option, widget);
    switch (metric) {
    case PM_SliderThickness:
    case PM_SliderControlThickness:
    case PM_SliderLength:
        return handleRoom;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int WhiteSliderStyle::styleHint(
    StyleHint hint, const QStyleOption* option, const QWidget* widget, QStyleHintReturn* returnData) const
{
    if (hint == SH_Slider_AbsoluteSetButtons)
        return Qt::LeftButton;
    return QProxyStyle::styleHint(hint, option, widget, returnData);
}
