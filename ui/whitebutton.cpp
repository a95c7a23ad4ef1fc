// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/whitebutton.h"

#include "ui/whitebuttonstyle.h"

#include <QEvent>
#include <QVariant>

#include <algorithm>

WhiteButton::WhiteButton(QWidget* parent)
    : QPushButton(parent)
{
    auto* style = new WhiteButtonStyle;
    style->setParent(this);
    setStyle(style);
    setAttribute(Qt::WA_Hover);
}

void WhiteButton::setNarrowing(int narrowing)
{
    m_narrowing = std::clamp(narrowing, 0, mostNarrowing);
    updateGeometry();
}

QSize WhiteButton::sizeHint() const
{
    return QPushButton::sizeHint() - QSize(m_narrowing, 0);
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
