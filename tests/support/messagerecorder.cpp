// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/messagerecorder.h"

#include <QMutex>
#include <QMutexLocker>
#include <QPair>
#include <QVector>

namespace {

// A message handler is a plain function, hence its data are global.
QMutex mutex;
QVector<QPair<QtMsgType, QString>> recordedMessages;

void record(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    Q_UNUSED(context)
    const QMutexLocker locker(&mutex);
    recordedMessages.append({ type, message });
}

} // namespace

TestSupport::MessageRecorder::MessageRecorder()
{
    const QMutexLocker locker(&mutex);
    recordedMessages.clear();
    m_previousHandler = qInstallMessageHandler(record);
}

TestSupport::MessageRecorder::~MessageRecorder()
{
    qInstallMessageHandler(m_previousHandler);
}

QStringList TestSupport::MessageRecorder::messages(QtMsgType type) const
{
    const QMutexLocker locker(&mutex);
    QStringList texts;
    for (const auto& message : qAsConst(recordedMessages)) {
        if (message.first == type)
            texts.append(message.second);
    }
    return texts;
}

QStringList TestSupport::MessageRecorder::messages() const
{
    const QMutexLocker locker(&mutex);
    QStringList texts;
    for (const auto& message : qAsConst(recordedMessages))
        texts.append(message.second);
    return texts;
}
