// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

/// Lets one command run at a time: none may start inside another's wait.
///
/// On the stack of a command: `const CommandGuard guard(m_isCommandRunning); if (!guard.isEntered()) return;`
/// Thread: GUI.
class CommandGuard final
{
public:
    explicit CommandGuard(bool& isCommandRunning)
        : m_isCommandRunning(isCommandRunning)
        , m_isEntered(!isCommandRunning)
    {
        m_isCommandRunning = true;
    }
    ~CommandGuard()
    {
        if (m_isEntered)
            m_isCommandRunning = false;
    }
    Q_DISABLE_COPY(CommandGuard)

    /// False when another command is running.
    bool isEntered() const { return m_isEntered; }

private:
    bool& m_isCommandRunning;
    const bool m_isEntered;
};
