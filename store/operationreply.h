// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QMutex>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

/// Handle of one long operation: its progress, warnings, results and its one ending.
///
/// The caller gets the reply when the operation starts, connects to its signals and releases it with `deleteLater()`
/// after `finished()`; the worker reports through it from its own thread. Every signal is queued while the mutex is
/// held, so receivers run in the thread that owns the reply, in the order in which the worker reported, and never
/// inside the worker's call. `finished()` is emitted exactly once; what is reported as an ending after the first one
/// changes nothing. An operation stopped by `cancel()` ends with the error "Canceled".
///
/// Owner: the caller. Thread: lives in the thread that created it; every public method may be called from any thread.
class OperationReply : public QObject
{
    Q_OBJECT

public:
    explicit OperationReply(QObject* parent = nullptr);
    ~OperationReply() override;

    /// `total` is the number of items; -1 while it is not known yet.
    void setProgress(int value, int total);
    /// How many bytes one step of the progress stands for, 1 unless set. Set before the progress it belongs to.
    void setProgressUnit(qint64 bytes);
    /// Adds and emits these warnings; an empty list does nothing.
    void addWarnings(const QStringList& values);
    void addWarning(const QString& value);
    /// Ends the operation with this error text, which must not be empty.
    void setError(const QString& value);
    /// Ends the operation for its receivers without stopping the clock: `finished()` is queued, `elapsed()` runs on.
    void notifyFinished();
    /// Inserts or replaces a named result; results are set before the ending.
    void setResult(const QString& key, const QVariant& value);

    QVariant result(const QString& key, const QVariant& defaultValue = QVariant()) const;
    qint64 progressUnit() const;
    QString errorString() const;
    bool hasError() const;
    bool hasWarnings() const;
    /// The number of warnings added so far.
    int warningsCount() const;
    bool isCanceled() const;
    /// True once `finished()` has been delivered to this reply's own thread.
    bool isFinishedDelivered() const;
    /// Milliseconds since the start; constant from the ending on.
    qint64 elapsed() const;

    /// Runs a local event loop, deaf to user input, until `finished()` is delivered; returns at once when it was
    /// delivered before. Thread: the reply's own. Returns early only when the application quits or the reply is
    /// destroyed meanwhile.
    void waitForFinished();

signals:
    void progress(int value, int total);
    void warnings(QStringList values);
    void error(QString value);
    void canceled();
    void finished();

public slots:
    /// Asks the worker to stop at its next poll; it does not end the operation by itself and does nothing once the
    /// operation has ended.
    void cancel();
    /// Ends the operation.
    void finish();

private:
    // With the mutex held.
    void queueFinished();
    void recordDelivery();

    mutable QMutex m_mutex;
    QVariantMap m_results;
    QStringList m_warnings;
    QString m_error;
    bool m_canceled = false;
    bool m_ended = false;
    bool m_finishedDelivered = false;
    int m_progressValue = 0;
    int m_progressTotal = 0;
    qint64 m_progressUnit = 1;
    QElapsedTimer m_timer;
    qint64 m_elapsedAtFinish = -1;
};

Q_DECLARE_METATYPE(OperationReply*)
