// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/advanceditemdelegate.h"

#include "browse/advanceditemview.h"
#include "browse/tablelook.h"

#include <QApplication>
#include <QBitArray>
#include <QPainter>

namespace {

constexpr QRgb matchColour = qRgb(255, 0, 0);
constexpr QRgb selectedMatchColour = qRgb(0, 255, 0);

bool isSelected(const QStyleOptionViewItem& option)
{
    return option.state.testFlag(QStyle::State_Selected);
}

QColor textColour(const QStyleOptionViewItem& option, const QModelIndex& index)
{
    if (isSelected(option))
        return option.palette.color(QPalette::HighlightedText);
    const auto colour = index.data(Qt::ForegroundRole).value<QColor>();
    return colour.isValid() ? colour : option.palette.color(QPalette::Text);
}

int alignmentOf(const QModelIndex& index)
{
    const QVariant alignment = index.data(Qt::TextAlignmentRole);
    return alignment.isValid() ? alignment.toInt() : int(Qt::AlignLeft | Qt::AlignVCenter);
}

// One bit for each character: set where a word stands, in whatever case.
QBitArray matchesOf(const QString& text, const QStringList& words)
{
    QBitArray matches(text.size());
    for (const QString& word : words) {
        if (word.isEmpty())
            continue;
        int start = text.indexOf(word, 0, Qt::CaseInsensitive);
        while (start >= 0) {
            matches.fill(true, start, start + word.size());
            start = text.indexOf(word, start + word.size(), Qt::CaseInsensitive);
        }
    }
    return matches;
}

// Draws the text in runs of marked and unmarked characters.
void drawMarkedText(
    QPainter& painter, const QRect& area, const QString& text, const QBitArray& matches, const QColor& markedColour)
{
    const QColor plainColour = painter.pen().color();
    const QFontMetrics metrics = painter.fontMetrics();
    int x = area.left();
    for (int start = 0; start < text.size();) {
        int end = start + 1;
        while (end < text.size() && matches.at(end) == matches.at(start))
            ++end;
        const QString run = text.mid(start, end - start);
        const int width = metrics.horizontalAdvance(run);
        painter.setPen(matches.at(start) ? markedColour : plainColour);
        painter.drawText(QRect(x, area.top(), width, area.height()),
            Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextDontClip, run);
        x += width;
        start = end;
    }
}

} // namespace

AdvancedItemDelegate::AdvancedItemDelegate(AdvancedItemView* parent)
    : QItemDelegate(parent)
    , m_font(QApplication::font())
    , m_fontMetrics(m_font)
{
}

AdvancedItemDelegate::~AdvancedItemDelegate() = default;

QMargins AdvancedItemDelegate::cellMargins() const
{
    const auto* view = qobject_cast<const AdvancedItemView*>(parent());
    return view ? view->cellMargins() : TableLook::cellMargins;
}

void AdvancedItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    painter->save();
    if (isSelected(option))
        painter->fillRect(option.rect, option.palette.color(QPalette::Highlight));
    else if (index.row() % 2 == 1)
        painter->fillRect(option.rect, TableLook::rowShade(option.palette));
    TableLook::drawBottomLine(*painter, option.rect);
    if (option.rect.right() < painter->viewport().right())
        TableLook::drawRightLine(*painter, option.rect);
    drawContents(painter, option, index);
    painter->restore();
}

void AdvancedItemDelegate::drawContents(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const QMargins margins = cellMargins();
    QRect area = option.rect.adjusted(margins.left(), 0, -margins.right(), 0);
    painter->setFont(m_font);
    painter->setPen(textColour(option, index));
    const QVariant opacity = index.data(OpacityRole);
    if (opacity.isValid())
        painter->setOpacity(opacity.toReal());

    const QString trailingText = TableLook::singleLine(index.data(TrailingTextRole).toString());
    if (!trailingText.isEmpty()) {
        QRect box = area;
        box.setLeft(area.right() + 1 - m_fontMetrics.horizontalAdvance(trailingText));
        painter->drawText(box, Qt::AlignCenter | Qt::TextSingleLine, trailingText);
        area.setRight(box.left() - 1 - margins.right());
    }

    const QString wholeText = TableLook::singleLine(index.data(Qt::DisplayRole).toString());
    const QString text = m_fontMetrics.elidedText(wholeText, Qt::ElideRight, area.width());
    const QStringList words = index.data(HighlightedWordsRole).toStringList();
    if (words.isEmpty())
        painter->drawText(area, alignmentOf(index) | Qt::TextSingleLine, text);
    else
        drawMarkedText(*painter, area, text, matchesOf(text, words),
            QColor(isSelected(option) ? selectedMatchColour : matchColour));
}

QSize AdvancedItemDelegate::sizeHint(const QStyleOptionViewItem& /*option*/, const QModelIndex& index) const
{
    const QMargins margins = cellMargins();
    const QString text = TableLook::singleLine(index.data(Qt::DisplayRole).toString());
    const QString trailingText = TableLook::singleLine(index.data(TrailingTextRole).toString());
    int width = margins.left() + m_fontMetrics.horizontalAdvance(text) + margins.right() + 1;
    if (!trailingText.isEmpty())
        width += margins.right() + m_fontMetrics.horizontalAdvance(trailingText);
    return { width, margins.top() + m_fontMetrics.height() + margins.bottom() };
}
