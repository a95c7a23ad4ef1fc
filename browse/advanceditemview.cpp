// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/advanceditemview.h"

#include "browse/advancedheaderviewstyle.h"
#include "browse/advanceditemdelegate.h"
#include "browse/tablelook.h"

#include <QApplication>
#include <QFontMetrics>
#include <QHeaderView>
#include <QPaintEvent>
#include <QPainter>

namespace {

constexpr double rowHeightInFontHeights = 1.75;

} // namespace

AdvancedItemView::AdvancedItemView(QWidget* parent)
    : QTableView(parent)
    , m_rowHeight(int(QFontMetrics(QApplication::font()).height() * rowHeightInFontHeights))
    , m_cellMargins(TableLook::cellMargins)
{
    setItemDelegate(new AdvancedItemDelegate(this));
    verticalHeader()->setDefaultSectionSize(m_rowHeight);
    setAlternatingRowColors(false);
    setShowGrid(false);
    setWordWrap(false);
    setTextElideMode(Qt::ElideRight);
    setVerticalScrollMode(ScrollPerItem);
    setEditTriggers(NoEditTriggers);
    setUpHeader();
    verticalHeader()->hide();
    setSelectionBehavior(SelectRows);
    setUpGround();
}

AdvancedItemView::~AdvancedItemView() = default;

void AdvancedItemView::setUpHeader()
{
    QHeaderView* header = horizontalHeader();
    header->setFont(QApplication::font());
    header->show();
    header->setSectionsMovable(false);
    auto* style = new AdvancedHeaderViewStyle;
    style->setParent(header);
    style->setMinimumSectionHeight(m_rowHeight);
    style->setCellMargins(m_cellMargins);
    header->setStyle(style);
    header->setMinimumHeight(m_rowHeight);
}

QByteArray AdvancedItemView::saveHeaderState() const
{
    return horizontalHeader()->saveState();
}

void AdvancedItemView::restoreHeaderState(const QByteArray& state)
{
    horizontalHeader()->restoreState(state);
    emit headerStateRestored();
}

// The viewport paints it. The view's own palette keeps the colour of which the shade is made.
void AdvancedItemView::setUpGround()
{
    QPalette inherited = palette();
    QPalette ground;
    // Whoever gives the table a colour of its own means just that.
    const bool isInherited = !inherited.isBrushSet(QPalette::Active, QPalette::Base);
    for (const QPalette::ColorGroup group : { QPalette::Active, QPalette::Inactive, QPalette::Disabled }) {
        inherited.setCurrentColorGroup(group);
        const QColor colour = TableLook::rowGround(inherited);
        if (isInherited && colour != inherited.color(QPalette::Base))
            ground.setColor(group, QPalette::Base, colour);
    }
    viewport()->setPalette(ground);
}

bool AdvancedItemView::event(QEvent* event)
{
    const bool isHandled = QTableView::event(event);
    if (event->type() == QEvent::PaletteChange)
        setUpGround();
    return isHandled;
}

void AdvancedItemView::scrollContentsBy(int dx, int dy)
{
    QTableView::scrollContentsBy(dx, dy);
    // A column that ended at the edge has no line there, and what is only moved gets none.
    if (dx != 0)
        viewport()->update();
}

void AdvancedItemView::paintEvent(QPaintEvent* event)
{
    QTableView::paintEvent(event);
    const int top = rowsBottom() + 1;
    if (top > event->rect().bottom())
        return;
    QPainter painter(viewport());
    painter.setClipRect(event->rect());
    paintBands(painter, event->rect(), top);
    paintColumnLines(painter, top);
}

// The last pixel of the last row; -1 when there is none.
int AdvancedItemView::rowsBottom() const
{
    const int rows = model() ? model()->rowCount(rootIndex()) : 0;
    if (rows == 0)
        return -1;
    return rowViewportPosition(rows - 1) + QTableView::rowHeight(rows - 1) - 1;
}

// Only whole bands, whatever part of the table is painted anew.
void AdvancedItemView::paintBands(QPainter& painter, const QRect& area, int firstBandTop) const
{
    const QColor shade = TableLook::rowShade(palette());
    QRect band(area.left(), firstBandTop, area.width(), m_rowHeight);
    int row = model() ? model()->rowCount(rootIndex()) : 0;
    while (band.bottom() <= viewport()->rect().bottom() && band.top() <= area.bottom()) {
        if (row % 2 == 1)
            painter.fillRect(band, shade);
        TableLook::drawBottomLine(painter, band);
        band.translate(0, m_rowHeight);
        ++row;
    }
}

void AdvancedItemView::paintColumnLines(QPainter& painter, int top) const
{
    const QHeaderView* header = horizontalHeader();
    const QRect area = viewport()->rect();
    for (int section = 0; section < header->count(); ++section) {
        if (header->isSectionHidden(section))
            continue;
        const QRect column(
            header->sectionViewportPosition(section), top, header->sectionSize(section), area.bottom() + 1 - top);
        if (column.right() >= area.left() && column.right() < area.right())
            TableLook::drawRightLine(painter, column);
    }
}
