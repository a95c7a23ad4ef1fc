// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSocketNotifier>

#include <memory>

/// Turns SIGTERM, SIGINT and SIGHUP into an orderly quit of the application, so that a session's end loses nothing.
///
/// Every event loop ends, also one begun after the signal, until the main loop has ended; then waits work as ever.
/// Owner: the start-up code, one at a time. Thread: GUI.
class TerminationSignals final
{
public:
    TerminationSignals();
    ~TerminationSignals();
    Q_DISABLE_COPY(TerminationSignals)

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};
