// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/scan/operationrecorder.h"

#include "store/operationreply.h"

OperationRecorder::OperationRecorder(OperationReply* reply)
{
    connect(reply, &OperationReply::progress, this,
        [this](int value, int total) { m_events.append(QStringLiteral("progress %1 of %2").arg(value).arg(total)); });
    connect(reply, &OperationReply::warnings, this, [this](const QStringList& values) {
        m_events.append(QStringLiteral("warnings %1").arg(values.size()));
        m_warnings.append(values);
    });
    connect(reply, &OperationReply::error, this,
        [this](const QString& value) { m_events.append(QStringLiteral("error ") + value); });
    connect(reply, &OperationReply::canceled, this, [this]() { m_events.append(QStringLiteral("canceled")); });
    connect(reply, &OperationReply::finished, this, [this]() { m_events.append(QStringLiteral("finished")); });
}

QStringList OperationRecorder::sortedWarnings() const
{
    QStringList all;
    for (const QStringList& values : m_warnings)
        all += values;
    all.sort();
    return all;
}
