// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/recordreader.h"

#include "store/metadatafields.h"
#include "store/querycomposer.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>

RecordReader::RecordReader(const QSqlQuery& query)
    : m_query(query)
{
    const QSqlRecord record = query.record();
    for (int index = 0; index < record.count(); ++index) {
        const MetaDataField* field = findMetaDataField(record.fieldName(index));
        if (field != nullptr)
            m_columns.push_back({ field, index });
    }
}

MetaData RecordReader::read() const
{
    MetaData item{ QVariantMap() };
    for (const Column& column : m_columns)
        column.field->write(item, m_query.value(column.index));
    return item;
}

MetaData fetchMetaData(const QSqlDatabase& connection, int tableId, qint64 id)
{
    QSqlQuery query(connection);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT * FROM %1 WHERE id=:id").arg(metaDataTableName(tableId)));
    query.bindValue(QStringLiteral(":id"), id);
    if (!query.exec() || !query.next())
        return MetaData();
    return RecordReader(query).read();
}
