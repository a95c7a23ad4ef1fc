// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QFontMetrics>
#include <QItemDelegate>

class AdvancedItemView;

/// Paints the cells of an `AdvancedItemView`: shaded odd rows, thin separators, one line of elided text.
///
/// Beside the display, foreground and alignment roles it reads three roles of its own, by which a cell shows lookup
/// matches in a colour, fades, or carries a second text at its right end.
///
/// Owner: the view. Thread: GUI.
class AdvancedItemDelegate : public QItemDelegate
{
    Q_OBJECT

public:
    enum Role
    {
        /// String list: words to show in the match colour.
        HighlightedWordsRole = Qt::UserRole + 102,
        /// Real, 0 to 1: opacity of the cell's text.
        OpacityRole = Qt::UserRole + 103,
        /// String: a second text at the cell's right end.
        TrailingTextRole = Qt::UserRole + 104
    };

    explicit AdvancedItemDelegate(AdvancedItemView* parent);
    ~AdvancedItemDelegate() override;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    /// Room for the whole text, so that a column can be fitted to its contents.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// Draws the texts of a cell whose background is painted already.
    virtual void drawContents(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const;

private:
    QMargins cellMargins() const;

    QFont m_font;
    QFontMetrics m_fontMetrics;
};
