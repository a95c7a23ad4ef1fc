// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/whitelineeditstyle.h"

#include "ui/controllook.h"

#include <QFontMetrics>
#include <QStyleOption>

#include <algorithm>

namespace {

constexpr int sidePadding = 4; // device-independent pixels; the line edit adds some of its own
constexpr int frameWidth = 2;

ControlLook::Colours coloursOf(const QStyleOption& option)
{
    const QPalette& palette = option.palette;
    ControlLook::Colours colours;
    colours.face = palette.color(QPalette::Base);
    colours.border = ControlLook::border(palette);
    if (!option.state.testFlag(QStyle::State_Enabled)) {
        const QColor ground = palette.color(QPalette::Window);
        colours.face = ControlLook::faded(colours.face, ground);
        colours.border = ControlLook::faded(colours.border, ground);
    } else if (option.state.testFlag(QStyle::State_HasFocus)) {
        colours.focusRing = palette.color(QPalette::Highlight);
    } else if (option.state.testFlag(QStyle::State_MouseOver)) {
        colours.border = ControlLook::hoveredBorder(palette);
    }
    colours.topEdge = colours.face;
    return colours;
}

} // namespace

void WhiteLineEditStyle::drawPrimitive(
    PrimitiveElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const
{
    if (option && element == PE_PanelLineEdit)
        ControlLook::drawFrame(*painter, { option->rect }, coloursOf(*option));
    else
        QProxyStyle::drawPrimitive(element, option, painter, widget);
}

QRect WhiteLineEditStyle::subElementRect(SubElement element, const QStyleOption* option, const QWidget* widget) const
{
    if (element != SE_LineEditContents || !option)
        return QProxyStyle::subElementRect(element, option, widget);
    return option->rect.adjusted(sidePadding, frameWidth, -sidePadding, -frameWidth);
}

QSize WhiteLineEditStyle::sizeFromContents(
    ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const
{
    if (type != CT_LineEdit || !option)
        return QProxyStyle::sizeFromContents(type, option, size, widget);
    return { size.width() + 2 * sidePadding, std::max(ControlLook::controlHeight(option->fontMetrics), size.height()) };
}
