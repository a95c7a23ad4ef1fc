// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/panelwidget.h"

#include <QPainter>

namespace {

constexpr int lineDarkness = 120; // per cent

}

PanelWidget::PanelWidget(QWidget* parent)
    : QWidget(parent)
{
}

void PanelWidget::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    const QColor ground = palette().color(QPalette::Window);
    painter.fillRect(rect(), ground);
    painter.fillRect(0, height() - 1, width(), 1, ground.darker(lineDarkness));
}
