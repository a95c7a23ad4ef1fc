// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/store/literalwriter.h"

#include "store/fieldcatalogue.h"
#include "store/querycomposer.h"

#include <QSqlError>
#include <QStringList>
#include <QVariant>

namespace {

QStringList writtenFields()
{
    QStringList fields = allFieldNames();
    fields.removeOne(QStringLiteral("id"));
    fields.removeOne(QStringLiteral("scanTimestamp"));
    return fields;
}

QString assignments()
{
    QStringList parts;
    for (const QString& field : writtenFields())
        parts.append(field + "=:" + field);
    return parts.join(", ");
}

QSqlQuery prepared(const QSqlDatabase& connection, const QString& statement)
{
    QSqlQuery query(connection);
    if (!query.prepare(statement))
        qFatal("%s: %s", qPrintable(statement), qPrintable(query.lastError().text()));
    return query;
}

void bind(QSqlQuery& query, const MetaData& item)
{
    const QVariantMap values = item.toVariantMap();
    for (const QString& field : writtenFields())
        query.bindValue(':' + field, values.value(field));
    if (item.library().isNull())
        query.bindValue(":library", "");
}

} // namespace

LiteralWriter::LiteralWriter(const QSqlDatabase& connection, int tableId, qint64 scanTimestamp)
    : m_find(prepared(connection, "SELECT id FROM " + metaDataTableName(tableId) + " WHERE filePath=:filePath"))
    , m_insert(prepared(connection,
          "INSERT INTO " + metaDataTableName(tableId) + " (" + writtenFields().join(", ")
              + ", scanTimestamp) VALUES (:" + writtenFields().join(", :") + ", :scanTimestamp)"))
    , m_update(prepared(connection, "UPDATE " + metaDataTableName(tableId) + " SET " + assignments() + " WHERE id=:id"))
    , m_touch(prepared(
          connection, "UPDATE " + metaDataTableName(tableId) + " SET scanTimestamp=:scanTimestamp WHERE id=:id"))
    , m_scanTimestamp(scanTimestamp)
{
}

QStringList LiteralWriter::write(const MetaDataList& items)
{
    QStringList errors;
    for (const MetaData& item : items)
        errors.append(write(item));
    return errors;
}

QString LiteralWriter::write(const MetaData& item)
{
    m_find.bindValue(":filePath", item.filePath());
    const bool isKnown = m_find.exec() && m_find.next();
    const QVariant id = isKnown ? m_find.value(0) : QVariant();
    m_find.finish();
    QSqlQuery& query = isKnown ? m_update : m_insert;
    bind(query, item);
    if (isKnown)
        query.bindValue(":id", id);
    else
        query.bindValue(":scanTimestamp", m_scanTimestamp);
    if (!query.exec())
        return query.lastError().nativeErrorCode() == "19" ? "Database constraint violation" : "Unknown database error";
    if (isKnown) {
        m_touch.bindValue(":scanTimestamp", m_scanTimestamp);
        m_touch.bindValue(":id", id);
        m_touch.exec();
    }
    return {};
}
