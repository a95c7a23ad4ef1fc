// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/advanceddialog.h"

#include <QCursor>
#include <QGuiApplication>
#include <QMoveEvent>
#include <QScreen>
#include <QShowEvent>

#include <algorithm>

namespace {

constexpr int placingTime = 500; // milliseconds

// A window manager that wants it elsewhere has its way in the end.
constexpr int placings = 3;

// The nearest place within the other rectangle; where there is no room, the upper left corner is.
QPoint placeWithin(const QRect& area, const QRect& available)
{
    return { std::max(std::min(area.left(), available.right() - area.width() + 1), available.left()),
        std::max(std::min(area.top(), available.bottom() - area.height() + 1), available.top()) };
}

// The frame, of which nothing is known before it is there, moves the dialog by less than this.
constexpr int largestFrame = 60; // pixels

} // namespace

AdvancedDialog::AdvancedDialog(QWidget* parent)
    : QDialog(parent)
{
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
}

void AdvancedDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    // A window that was minimised comes back where it was.
    if (event->spontaneous())
        return;
    QRect area = frameGeometry();
    area.moveCenter(preferredCentre());
    // With its title bar on the screen, also over a low window.
    const QScreen* place = QGuiApplication::screenAt(area.center());
    m_place = placeWithin(area, (place ? place : screen())->availableGeometry());
    m_placingTime.setRemainingTime(placingTime);
    m_placingsLeft = placings;
    move(m_place);
    activateWindow();
    // A dialog that has chosen one of its controls keeps its choice.
    QWidget* chosen = focusWidget();
    (chosen ? chosen : this)->setFocus();
}

void AdvancedDialog::moveEvent(QMoveEvent* event)
{
    QDialog::moveEvent(event);
    const bool isInPlace = (pos() - m_place).manhattanLength() < largestFrame;
    if (isInPlace || m_placingsLeft == 0 || m_placingTime.hasExpired())
        return;
    --m_placingsLeft;
    move(m_place);
}

QPoint AdvancedDialog::preferredCentre() const
{
    if (const QWidget* parent = parentWidget())
        return parent->mapToGlobal(parent->rect().center());
    const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    return screen->geometry().center();
}
