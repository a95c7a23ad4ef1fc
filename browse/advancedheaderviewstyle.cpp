// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/advancedheaderviewstyle.h"

#include "browse/tablelook.h"

#include <QPainter>
#include <QStyleOptionHeader>

#include <algorithm>

namespace {

// The header view's own "down" stands for an ascending order.
QString sortSuffix(QStyleOptionHeader::SortIndicator indicator)
{
    switch (indicator) {
    case QStyleOptionHeader::SortUp:
        return QStringLiteral(" \u2191");
    case QStyleOptionHeader::SortDown:
        return QStringLiteral(" \u2193");
    default:
        return {};
    }
}

} // namespace

AdvancedHeaderViewStyle::AdvancedHeaderViewStyle() = default;

void AdvancedHeaderViewStyle::drawControl(
    ControlElement element, const QStyleOption* option, QPainter* painter, const QWidget* widget) const
{
    const auto* header = qstyleoption_cast<const QStyleOptionHeader*>(option);
    if (header && element == CE_Header)
        drawHeader(*header, *painter, widget);
    else if (header && element == CE_HeaderSection)
        drawSection(*header, *painter);
    else if (header && element == CE_HeaderLabel)
        drawLabel(*header, *painter);
    else
        QProxyStyle::drawControl(element, option, painter, widget);
}

void AdvancedHeaderViewStyle::drawHeader(
    const QStyleOptionHeader& option, QPainter& painter, const QWidget* widget) const
{
    painter.save();
    painter.setClipRect(option.rect, Qt::IntersectClip);
    proxy()->drawControl(CE_HeaderSection, &option, &painter, widget);
    QStyleOptionHeader label(option);
    label.rect = proxy()->subElementRect(SE_HeaderLabel, &option, widget);
    if (!label.rect.isEmpty())
        proxy()->drawControl(CE_HeaderLabel, &label, &painter, widget);
    painter.restore();
}

void AdvancedHeaderViewStyle::drawSection(const QStyleOptionHeader& option, QPainter& painter) const
{
    painter.fillRect(option.rect, TableLook::headerShade(option.palette));
    TableLook::drawBottomLine(painter, option.rect);
    if (option.position != QStyleOptionHeader::End)
        TableLook::drawRightLine(painter, option.rect);
}

void AdvancedHeaderViewStyle::drawLabel(const QStyleOptionHeader& option, QPainter& painter) const
{
    const QFontMetrics metrics = painter.fontMetrics();
    const QString suffix = sortSuffix(option.sortIndicator);
    const int room = std::max(0, option.rect.width() - metrics.horizontalAdvance(suffix));
    const QString title = metrics.elidedText(TableLook::singleLine(option.text), Qt::ElideRight, room);
    proxy()->drawItemText(&painter, option.rect, int(option.textAlignment) | Qt::TextSingleLine, option.palette,
        option.state.testFlag(State_Enabled), title + suffix, QPalette::Text);
}

QRect AdvancedHeaderViewStyle::subElementRect(
    SubElement element, const QStyleOption* option, const QWidget* widget) const
{
    if (element != SE_HeaderLabel || !qstyleoption_cast<const QStyleOptionHeader*>(option))
        return QProxyStyle::subElementRect(element, option, widget);
    return visualRect(option->direction, option->rect, option->rect.marginsRemoved(m_cellMargins));
}

QSize AdvancedHeaderViewStyle::sizeFromContents(
    ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const
{
    const auto* header = qstyleoption_cast<const QStyleOptionHeader*>(option);
    if (!header || type != CT_HeaderSection)
        return QProxyStyle::sizeFromContents(type, option, size, widget);
    const int textHeight = m_cellMargins.top() + header->fontMetrics.height() + m_cellMargins.bottom();
    const int textWidth = m_cellMargins.left() + header->fontMetrics.horizontalAdvance(header->text);
    return { textWidth + m_cellMargins.right() + 1, std::max(m_minimumSectionHeight, textHeight) };
}
