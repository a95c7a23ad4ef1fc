// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/whiteslider.h"

#include "ui/whitesliderstyle.h"

WhiteSlider::WhiteSlider(QWidget* parent)
    : QSlider(Qt::Horizontal, parent)
{
    auto* style = new WhiteSliderStyle;
    style->setParent(this);
    setStyle(style);
    setAttribute(Qt::WA_Hover);
}
