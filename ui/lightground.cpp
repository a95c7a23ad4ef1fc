// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/lightground.h"

#include <QPalette>
#include <QWidget>

void giveLightGround(QWidget* editor)
{
    constexpr int lightEnough = 160; // of 255
    QPalette palette = editor->palette();
    if (palette.color(QPalette::Base).lightness() > lightEnough)
        return;
    palette.setColor(QPalette::Base, QColor(244, 240, 240));
    palette.setColor(QPalette::Text, QColor(32, 32, 32));
    editor->setPalette(palette);
}
