// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/whitelineedit.h"

#include "ui/whitelineeditstyle.h"

#include <QAction>
#include <QKeyEvent>

#include <algorithm>

namespace {

// What everybody expects of the keys in a text, whatever else they are for in the window.
bool isCommonTextCommand(const QKeyEvent& event)
{
    const auto commands = { QKeySequence::Undo, QKeySequence::Redo, QKeySequence::Cut, QKeySequence::Copy,
        QKeySequence::Paste, QKeySequence::Delete, QKeySequence::SelectAll };
    return std::any_of(commands.begin(), commands.end(),
        [&event](QKeySequence::StandardKey command) { return event.matches(command); });
}

bool isShortcutOfWindow(const QWidget& window, const QKeyEvent& event)
{
    const QKeySequence keys(int(event.modifiers() & ~Qt::KeypadModifier) | event.key());
    const QList<QAction*> actions = window.findChildren<QAction*>();
    return std::any_of(actions.begin(), actions.end(), [&keys](const QAction* action) {
        return action->isEnabled() && action->shortcutContext() == Qt::WindowShortcut
            && action->shortcuts().contains(keys);
    });
}

} // namespace

WhiteLineEdit::WhiteLineEdit(QWidget* parent)
    : QLineEdit(parent)
{
    auto* style = new WhiteLineEditStyle;
    style->setParent(this);
    setStyle(style);
    setAttribute(Qt::WA_Hover);
}

QIcon WhiteLineEdit::leadingIcon() const
{
    return m_leadingAction ? m_leadingAction->icon() : QIcon();
}

void WhiteLineEdit::setLeadingIcon(const QIcon& icon)
{
    if (icon.isNull()) {
        delete m_leadingAction;
        m_leadingAction = nullptr;
    } else if (m_leadingAction) {
        m_leadingAction->setIcon(icon);
    } else {
        m_leadingAction = addAction(icon, LeadingPosition);
        connect(m_leadingAction, &QAction::triggered, this, [this]() { setFocus(Qt::MouseFocusReason); });
    }
}

// A desktop has more keys for moving in a text than its users know; one of them may be in a menu of the window.
bool WhiteLineEdit::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        const auto& keyEvent = *static_cast<QKeyEvent*>(event);
        if (!isCommonTextCommand(keyEvent) && isShortcutOfWindow(*window(), keyEvent)) {
            event->ignore();
            return false;
        }
    }
    return QLineEdit::event(event);
}
