// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/whitebutton.h"

#include "ui/whitebuttonstyle.h"

#include <QEvent>
#include <QVariant>

namespace {

// Of the width, in device-independent pixels; what is left beside the text is a little more than the frame.
constexpr int compactSaving = 14;

} // namespace

WhiteButton::WhiteButton(QWidget* parent)
    : QPushButton(parent)
{
    auto* style = new WhiteButtonStyle;
    style->setParent(this);
    setStyle(style);
    setAttribute(Qt::WA_Hover);
}

void WhiteButton::setCompact(bool isCompact)
{
    m_isCompact = isCompact;
    updateGeometry();
}

QSize WhiteButton::sizeHint() const
{
    const QSize hint = QPushButton::sizeHint();
    return m_isCompact ? hint - QSize(compactSaving, 0) : hint;
}

QSize WhiteButton::minimumSizeHint() const
{
    return sizeHint();
}

bool WhiteButton::event(QEvent* event)
{
    // It may be a side's type.
    if (event->type() == QEvent::DynamicPropertyChange)
        update();
    return QPushButton::event(event);
}

WhiteLeftButton::WhiteLeftButton(QWidget* parent)
    : WhiteButton(parent)
{
    setProperty(ControlLook::rightSideProperty, int(ControlLook::JoinedSide));
}
