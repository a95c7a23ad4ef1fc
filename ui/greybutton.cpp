// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/greybutton.h"

#include "ui/greybuttonstyle.h"

GreyButton::GreyButton(QWidget* parent)
    : QPushButton(parent)
{
    auto* style = new GreyButtonStyle;
    style->setParent(this);
    setStyle(style);
    setAttribute(Qt::WA_Hover);
}
