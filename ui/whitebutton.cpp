// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/whitebutton.h"

#include "ui/whitebuttonstyle.h"

#include <QEvent>
#include <QVariant>

WhiteButton::WhiteButton(QWidget* parent)
    : QPushButton(parent)
{
    auto* style = new WhiteButtonStyle;
    style->setParent(this);
    setStyle(style);
    setAttribute(Qt::WA_Hover);
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
