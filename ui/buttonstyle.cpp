// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/buttonstyle.h"

#include <QFontMetrics>
#include <QStyleOptionButton>

#include <algorithm>

namespace {

constexpr int sidePadding = 11; // device-independent pixels
constexpr int leastSidePadding = 4;
constexpr int smallestWidth = 44;

} // namespace

void ButtonStyle::drawControl(
    ControlElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const
{
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    if (button && element == CE_PushButtonBevel) {
        ControlLook::drawFrame(*painter, shapeOf(*button, widget), coloursOf(*button));
    } else if (button && element == CE_PushButtonLabel) {
        QStyleOptionButton label(*button);
        label.palette.setColor(QPalette::ButtonText, coloursOf(*button).text);
        const int room = label.rect.width() - 2 * leastSidePadding;
        label.text = label.fontMetrics.elidedText(label.text, Qt::ElideRight, room, Qt::TextShowMnemonic);
        QProxyStyle::drawControl(element, &label, painter, widget);
    } else {
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

void ButtonStyle::drawPrimitive(
    PrimitiveElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const
{
    // The focus is a ring of the frame.
    if (element != PE_FrameFocusRect)
        QProxyStyle::drawPrimitive(element, option, painter, widget);
}

QSize ButtonStyle::sizeFromContents(
    ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const
{
    if (type != CT_PushButton || !option)
        return QProxyStyle::sizeFromContents(type, option, size, widget);
    const int width = std::max(size.width() + 2 * sidePadding, smallestWidth);
    return { width, std::max(ControlLook::controlHeight(option->fontMetrics), size.height()) };
}

int ButtonStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const
{
    switch (metric) {
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
    case PM_ButtonDefaultIndicator:
        return 0;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

ControlLook::Shape ButtonStyle::shapeOf(const QStyleOptionButton& option, const QWidget* /*widget*/) const
{
    return { option.rect };
}
