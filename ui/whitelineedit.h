// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QLineEdit>

/// A line edit that fits the styled buttons; it may have an icon before its text.
///
/// The shortcuts of its window's actions work while it has the focus, save those of the common text commands (undo,
/// redo, cut, copy, paste, delete, select all).
///
/// Owner: its Qt parent. Thread: GUI.
class WhiteLineEdit : public QLineEdit
{
    Q_OBJECT
    Q_PROPERTY(QIcon leadingIcon READ leadingIcon WRITE setLeadingIcon)

public:
    explicit WhiteLineEdit(QWidget* parent = nullptr);

    QIcon leadingIcon() const;
    /// Says what the edit is for; a click on it only takes the focus there. A null icon takes it away.
    void setLeadingIcon(const QIcon& icon);

protected:
    bool event(QEvent* event) override;

private:
    QAction* m_leadingAction = nullptr;
};
