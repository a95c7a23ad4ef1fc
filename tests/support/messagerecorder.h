// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

namespace TestSupport {

/// Keeps what is written to the message log while it lives, from every thread; nothing of it is printed.
///
/// Owner: the stack of one test; one at a time. Thread: any.
class MessageRecorder final
{
public:
    MessageRecorder();
    /// Puts back the handler that was there before.
    ~MessageRecorder();
    Q_DISABLE_COPY(MessageRecorder)

    /// All messages of this level so far, in order.
    QStringList messages(QtMsgType type) const;
    /// All messages of every level so far, in order.
    QStringList messages() const;

private:
    QtMessageHandler m_previousHandler;
};

} // namespace TestSupport
