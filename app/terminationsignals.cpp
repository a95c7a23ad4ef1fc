// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/terminationsignals.h"

#include <QCoreApplication>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

// A signal handler may do little more than write to a file: the event loop reads the other end.
std::array<int, 2> wakeUpPipe{ -1, -1 };
constexpr std::array<int, 3> handledSignals{ SIGTERM, SIGINT, SIGHUP };

void wakeUp(int /*signal*/)
{
    const char byte = 0;
    // Nothing can be done about a failure here.
    const auto written = write(wakeUpPipe[1], &byte, 1);
    static_cast<void>(written);
}

void setHandler(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int signal : handledSignals)
        sigaction(signal, &action, nullptr);
}

} // namespace

TerminationSignals::TerminationSignals()
{
    if (pipe2(wakeUpPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(wakeUpPipe[0], QSocketNotifier::Read);
    // The byte stays unread: a quit during the start, when only a wait's event loop runs, is forgotten by the main loop
    // that begins after it.
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, &QCoreApplication::quit);
    const auto finishQuitting = [this] {
        m_notifier->setEnabled(false);
    };
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, m_notifier.get(), finishQuitting);
    setHandler(wakeUp);
}

TerminationSignals::~TerminationSignals()
{
    setHandler(SIG_DFL);
    m_notifier.reset();
    for (const int end : wakeUpPipe)
        close(end);
}
