// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/advanceddialog.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QShowEvent>

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
    move(area.topLeft());
    activateWindow();
    // A dialog that has chosen one of its controls keeps its choice.
    QWidget* chosen = focusWidget();
    (chosen ? chosen : this)->setFocus();
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
