// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDeadlineTimer>
#include <QDialog>

/// Base of every dialog: no context-help button, opens centred on its parent and takes the focus.
///
/// For half a second after that it returns to its place when it is moved away: while a window manager frames a dialog,
/// the place reported for it can be that of the empty frame, which its next change of size would ask for.
///
/// Owner: its Qt parent or the stack. Thread: GUI.
class AdvancedDialog : public QDialog
{
    Q_OBJECT

public:
    explicit AdvancedDialog(QWidget* parent = nullptr);

protected:
    /// Centres on the parent, or without one on the screen under the mouse pointer, as far as the screen has room.
    void showEvent(QShowEvent* event) override;
    void moveEvent(QMoveEvent* event) override;

private:
    QPoint preferredCentre() const;

    QPoint m_place; // of the upper left corner, on the screen
    QDeadlineTimer m_placingTime;
    int m_placingsLeft = 0;
};
