// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/metadata.h"

#include <QVariant>

#include <vector>

class QSqlDatabase;
class QSqlQuery;
struct MetaDataField;

/// Turns the rows of one executed query into records, each column going to the field of its name.
///
/// The columns are looked up once for the query, which matters for pages of many thousand rows.
/// Owner: the stack of one operation; the query must outlive it. Thread: that of the connection.
class RecordReader final
{
public:
    explicit RecordReader(const QSqlQuery& query);
    Q_DISABLE_COPY(RecordReader)

    /// The record of the query's current row.
    MetaData read() const;

private:
    struct Column
    {
        const MetaDataField* field;
        int index;
    };

    const QSqlQuery& m_query;
    std::vector<Column> m_columns;
};

/// One record by its id; a null record when there is none or the query fails. Thread: that of the connection.
MetaData fetchMetaData(const QSqlDatabase& connection, int tableId, qint64 id);
