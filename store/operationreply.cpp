// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/operationreply.h"

#include "store/metatypes.h"

#include <QEventLoop>
#include <QMutexLocker>
#include <QThread>

OperationReply::OperationReply(QObject* parent)
    : QObject(parent)
{
    registerStoreMetaTypes();
    // The first connection of all, so that every other receiver of finished() already finds it recorded.
    connect(this, &OperationReply::finished, this, &OperationReply::recordDelivery, Qt::DirectConnection);
    m_timer.start();
}

OperationReply::~OperationReply()
{
    // finished() is posted while the worker holds the mutex; its receiver may delete the reply before the worker has
    // let go of it.
    const QMutexLocker locker(&m_mutex);
}

void OperationReply::setProgress(int value, int total)
{
    const QMutexLocker locker(&m_mutex);
    m_progressValue = value;
    m_progressTotal = total;
    QMetaObject::invokeMethod(this, "progress", Qt::QueuedConnection, Q_ARG(int, value), Q_ARG(int, total));
}

void OperationReply::setProgressUnit(qint64 bytes)
{
    const QMutexLocker locker(&m_mutex);
    m_progressUnit = bytes;
}

void OperationReply::addWarnings(const QStringList& values)
{
    if (values.isEmpty())
        return;
    const QMutexLocker locker(&m_mutex);
    m_warnings.append(values);
    QMetaObject::invokeMethod(this, "warnings", Qt::QueuedConnection, Q_ARG(QStringList, values));
}

void OperationReply::addWarning(const QString& value)
{
    addWarnings({ value });
}

void OperationReply::setError(const QString& value)
{
    const QMutexLocker locker(&m_mutex);
    if (m_ended)
        return;
    m_error = value;
    QMetaObject::invokeMethod(this, "error", Qt::QueuedConnection, Q_ARG(QString, value));
    m_elapsedAtFinish = m_timer.elapsed();
    queueFinished();
}

void OperationReply::notifyFinished()
{
    const QMutexLocker locker(&m_mutex);
    if (!m_ended)
        queueFinished();
}

void OperationReply::finish()
{
    const QMutexLocker locker(&m_mutex);
    if (m_ended)
        return;
    m_elapsedAtFinish = m_timer.elapsed();
    queueFinished();
}

void OperationReply::cancel()
{
    const QMutexLocker locker(&m_mutex);
    if (m_ended)
        return;
    m_canceled = true;
    QMetaObject::invokeMethod(this, "canceled", Qt::QueuedConnection);
}

void OperationReply::setResult(const QString& key, const QVariant& value)
{
    const QMutexLocker locker(&m_mutex);
    m_results.insert(key, value);
}

QVariant OperationReply::result(const QString& key, const QVariant& defaultValue) const
{
    const QMutexLocker locker(&m_mutex);
    return m_results.value(key, defaultValue);
}

qint64 OperationReply::progressUnit() const
{
    const QMutexLocker locker(&m_mutex);
    return m_progressUnit;
}

QString OperationReply::errorString() const
{
    const QMutexLocker locker(&m_mutex);
    return m_error;
}

bool OperationReply::hasError() const
{
    const QMutexLocker locker(&m_mutex);
    return !m_error.isEmpty();
}

bool OperationReply::hasWarnings() const
{
    const QMutexLocker locker(&m_mutex);
    return !m_warnings.isEmpty();
}

int OperationReply::warningsCount() const
{
    const QMutexLocker locker(&m_mutex);
    return m_warnings.size();
}

bool OperationReply::isCanceled() const
{
    const QMutexLocker locker(&m_mutex);
    return m_canceled;
}

bool OperationReply::isFinishedDelivered() const
{
    const QMutexLocker locker(&m_mutex);
    return m_finishedDelivered;
}

qint64 OperationReply::elapsed() const
{
    const QMutexLocker locker(&m_mutex);
    return m_elapsedAtFinish >= 0 ? m_elapsedAtFinish : m_timer.elapsed();
}

void OperationReply::waitForFinished()
{
    Q_ASSERT(QThread::currentThread() == thread());
    if (isFinishedDelivered())
        return;
    QEventLoop loop;
    connect(this, &OperationReply::finished, &loop, &QEventLoop::quit);
    connect(this, &QObject::destroyed, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

void OperationReply::queueFinished()
{
    m_ended = true;
    QMetaObject::invokeMethod(this, "finished", Qt::QueuedConnection);
}

void OperationReply::recordDelivery()
{
    const QMutexLocker locker(&m_mutex);
    m_finishedDelivered = true;
}
