// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/mutedlabel.h"

#include "ui/controllook.h"

#include <QPainter>
#include <QStyle>

namespace {

// So much of the ground's colour in the text's.
constexpr qreal mutedPart = 0.3;
constexpr qreal disabledPart = 0.45;

} // namespace

MutedLabel::MutedLabel(QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
}

void MutedLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPalette muted = palette();
    const QColor ink = muted.color(QPalette::Active, QPalette::WindowText);
    const QColor ground = muted.color(QPalette::Active, QPalette::Window);
    muted.setColor(QPalette::WindowText, ControlLook::mixed(ink, ground, isEnabled() ? mutedPart : disabledPart));
    int flags = int(QStyle::visualAlignment(layoutDirection(), alignment())) | Qt::TextSingleLine;
    if (buddy())
        flags |= Qt::TextShowMnemonic;
    QPainter painter(this);
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width());
    style()->drawItemText(&painter, contentsRect(), flags, muted, true, shown, QPalette::WindowText);
}
