// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

/// Base of every dialog: no context-help button, opens centred on its parent and takes the focus.
///
/// Owner: its Qt parent or the stack. Thread: GUI.
class AdvancedDialog : public QDialog
{
    Q_OBJECT

public:
    explicit AdvancedDialog(QWidget* parent = nullptr);

protected:
    /// Centres on the parent, or without one on the screen under the mouse pointer.
    void showEvent(QShowEvent* event) override;

private:
    QPoint preferredCentre() const;
};
