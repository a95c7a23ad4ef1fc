// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QStringList>

class OperationReply;

/// Writes down the signals of one reply in the order in which they arrive, one line each: "progress 40 of 41",
/// "warnings 2", "error Canceled", "canceled", "finished".
///
/// Owner: a test; made right after the operation was started. Thread: the reply's own.
class OperationRecorder : public QObject
{
    Q_OBJECT

public:
    explicit OperationRecorder(OperationReply* reply);

    QStringList events() const { return m_events; }
    /// The lists of warnings as they came.
    QList<QStringList> warnings() const { return m_warnings; }
    /// All warnings, sorted.
    QStringList sortedWarnings() const;

private:
    QStringList m_events;
    QList<QStringList> m_warnings;
};
