// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/whitelineedit.h"

#include "ui/whitelineeditstyle.h"

#include <QAction>

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
