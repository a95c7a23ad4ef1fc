// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/metadata.h"

#include <QSqlDatabase>
#include <QSqlQuery>

/// Writes records as plainly as can be, with one statement after the other: what the record writer must come to as
/// well. Of a found row every field is written again, then its time stamp.
///
/// Owner: a test or a benchmark. Thread: that of the connection.
class LiteralWriter final
{
public:
    LiteralWriter(const QSqlDatabase& connection, int tableId, qint64 scanTimestamp);

    /// The error text of each record, empty where it was written.
    QStringList write(const MetaDataList& items);

private:
    QString write(const MetaData& item);

    QSqlQuery m_find;
    QSqlQuery m_insert;
    QSqlQuery m_update;
    QSqlQuery m_touch;
    qint64 m_scanTimestamp;
};
