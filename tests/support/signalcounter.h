// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace TestSupport {

/// Counts a signal that may be emitted in another thread. The signal is counted where the counter lives, once its event
/// loop has got it (`QSignalSpy` would write its list in the thread of the sender).
///
/// Owner and thread: one test.
class SignalCounter final : public QObject
{
    Q_OBJECT

public:
    template <typename Sender, typename Signal>
    SignalCounter(Sender* sender, Signal signal)
    {
        connect(sender, signal, this, [this]() { ++m_count; });
    }

    int count() const { return m_count; }

private:
    int m_count = 0;
};

} // namespace TestSupport
