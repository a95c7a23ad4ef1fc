// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/whitebutton.h"

#include "ui/whitebuttonstyle.h"

#include <QEvent>
#include <QVariant>

#include <algorithm>

namespace {

constexpr int lettersWhenShrunk = 4;
constexpr int widthBesideText = 22; // device-independent pixels

} // namespace

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

void WhiteButton::setShrinkable(bool isShrinkable)
{
    m_isShrinkable = isShrinkable;
    setSizePolicy(isShrinkable ? QSizePolicy::Preferred : QSizePolicy::Minimum, sizePolicy().verticalPolicy());
    setToolTip(isShrinkable ? text() : QString());
    updateGeometry();
}

QSize WhiteButton::sizeHint() const
{
    return QPushButton::sizeHint() - QSize(m_narrowing, 0);
}

QSize WhiteButton::minimumSizeHint() const
{
    const QSize whole = sizeHint();
    if (!m_isShrinkable)
        return whole;
    const QString start = text().left(lettersWhenShrunk) + QChar(0x2026);
    const int width = fontMetrics().horizontalAdvance(start) + widthBesideText - m_narrowing;
    return { std::min(whole.width(), width), whole.height() };
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
