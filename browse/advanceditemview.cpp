// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/advanceditemview.h"

#include <QApplication>
#include <QFontMetrics>
#include <QHeaderView>

namespace {

constexpr double rowHeightInFontHeights = 1.75;

}

AdvancedItemView::AdvancedItemView(QWidget* parent)
    : QTableView(parent)
    , m_rowHeight(int(QFontMetrics(QApplication::font()).height() * rowHeightInFontHeights))
{
    verticalHeader()->setDefaultSectionSize(m_rowHeight);
    verticalHeader()->hide();
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    setTextElideMode(Qt::ElideRight);
    setVerticalScrollMode(ScrollPerItem);
    setEditTriggers(NoEditTriggers);
    setSelectionBehavior(SelectRows);
    horizontalHeader()->setFont(QApplication::font());
    horizontalHeader()->setMinimumHeight(m_rowHeight);
    horizontalHeader()->setSectionsMovable(false);
    horizontalHeader()->show();
}

AdvancedItemView::~AdvancedItemView() = default;

QByteArray AdvancedItemView::saveHeaderState() const
{
    return horizontalHeader()->saveState();
}

void AdvancedItemView::restoreHeaderState(const QByteArray& state)
{
    horizontalHeader()->restoreState(state);
    emit headerStateRestored();
}
