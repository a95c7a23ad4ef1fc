// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/recordwriter.h"

#include "store/fieldcatalogue.h"
#include "store/metadatafields.h"
#include "store/querycomposer.h"
#include "store/recordreader.h"
#include "store/transactionstate.h"

#include <QCoreApplication>
#include <QSqlError>
#include <QStringList>
#include <QVariant>

#include <sqlite3.h>
#include <vector>

namespace {

const QString findStatement = QStringLiteral("SELECT id FROM %1 WHERE filePath=:filePath");

const QString idPlace = QStringLiteral(":id");
const QString filePathPlace = QStringLiteral(":filePath");
const QString libraryPlace = QStringLiteral(":library");
const QString scanTimestampPlace = QStringLiteral(":scanTimestamp");

// SQLite's code of a violated constraint.
const QString constraintErrorCode = QStringLiteral("19");

struct BoundField
{
    QString place;
    const MetaDataField* field;
};

// The fields that the insert and the updates write.
std::vector<BoundField> buildBoundFields()
{
    std::vector<BoundField> fields;
    for (const QString& name : allFieldNames()) {
        if (name == QLatin1String("id") || name == QLatin1String("scanTimestamp"))
            continue;
        const MetaDataField* field = findMetaDataField(name);
        Q_ASSERT(field != nullptr);
        fields.push_back({ QLatin1Char(':') + name, field });
    }
    return fields;
}

const std::vector<BoundField>& boundFields()
{
    static const std::vector<BoundField> fields = buildBoundFields();
    return fields;
}

// The pattern with each bound field's name in it.
QString eachField(const QString& pattern, const QString& separator)
{
    QStringList parts;
    for (const BoundField& bound : boundFields())
        parts.append(pattern.arg(bound.field->name));
    return parts.join(separator);
}

// A row whose fields are all written already is only to be marked as seen: a third of the indexes change. Values are
// compared as they are stored, so that a change of case or of null into empty is a change.
const QString& comparisonStatement()
{
    static const QString statement = QStringLiteral("SELECT id, ")
        + eachField(QStringLiteral("%1 IS ? COLLATE BINARY"), QStringLiteral(" AND "))
        + QStringLiteral(" FROM %1 WHERE filePath=?");
    return statement;
}

QString assignments()
{
    return eachField(QStringLiteral("%1=:%1"), QStringLiteral(", "));
}

const QString& insertStatement()
{
    static const QString statement = QStringLiteral("INSERT INTO %1 (")
        + eachField(QStringLiteral("%1"), QStringLiteral(", ")) + QStringLiteral(", scanTimestamp) VALUES (")
        + eachField(QStringLiteral(":%1"), QStringLiteral(", ")) + QStringLiteral(", :scanTimestamp)");
    return statement;
}

const QString& updateStatement()
{
    static const QString statement = QStringLiteral("UPDATE %1 SET ") + assignments() + QStringLiteral(" WHERE id=:id");
    return statement;
}

// The update and the touch in one, so that no index is written twice.
const QString& rescanStatement()
{
    static const QString statement = QStringLiteral("UPDATE %1 SET ") + assignments()
        + QStringLiteral(", scanTimestamp=:scanTimestamp WHERE id=:id");
    return statement;
}

// A file that no rule gave a library has none; every other text that is missing is for the table to refuse.
QVariant writtenValue(const MetaData& item, const BoundField& bound)
{
    const bool isMissingLibrary = bound.place == libraryPlace && item.library().isNull();
    return isMissingLibrary ? QVariant(QStringLiteral("")) : bound.field->read(item);
}

void bindField(QSqlQuery& query, const MetaData& item, const BoundField& bound)
{
    query.bindValue(bound.place, writtenValue(item, bound));
}

void bindFields(QSqlQuery& query, const MetaData& item)
{
    for (const BoundField& bound : boundFields())
        bindField(query, item, bound);
}

QString unknownErrorText()
{
    return QCoreApplication::translate("Database", "Unknown database error");
}

QString fieldsUpdateStatement(const QStringList& fields)
{
    QStringList assignments;
    for (const QString& field : fields)
        assignments.append(field + QStringLiteral("=:") + field);
    return QStringLiteral("UPDATE %1 SET ") + assignments.join(QStringLiteral(", ")) + QStringLiteral(" WHERE id=:id");
}

} // namespace

RecordWriter::RecordWriter(const QSqlDatabase& connection, int tableId, qint64 scanTimestamp, bool lookupByFilePath)
    : m_connection(connection)
    , m_tableId(tableId)
    , m_tableName(metaDataTableName(tableId))
    , m_wasInTransaction(isTransactionActive(connection))
    , m_update(connection)
    , m_insert(connection)
    , m_find(connection)
    , m_rescan(connection)
    , m_scanTimestamp(scanTimestamp)
    , m_lookupByFilePath(lookupByFilePath)
    , m_handle(lookupByFilePath ? sqliteHandle(connection) : nullptr)
{
    if (m_handle == nullptr)
        return;
    m_comparison.emplace(m_handle, comparisonStatement().arg(m_tableName));
    m_unchangedRows.emplace(m_handle, m_tableName);
}

MetaDataList RecordWriter::write(const MetaDataList& items)
{
    MetaDataList failedItems;
    for (const MetaData& item : items) {
        const MetaData failedItem = write(item);
        if (!failedItem.isNull())
            failedItems.append(failedItem);
    }
    return failedItems;
}

// The record, with its error set, when it could not be written; else a null record.
MetaData RecordWriter::write(const MetaData& item)
{
    if (!item.error().isEmpty())
        return item;
    if (m_isTransactionLost)
        return failed(item);
    if (item.id() < 1 && m_lookupByFilePath)
        return writeByFilePath(item) ? MetaData() : failed(item);
    const bool isWritten = item.id() < 1 ? insert(item) : update(item, item.id());
    return isWritten ? MetaData() : failed(item);
}

bool RecordWriter::writeByFilePath(const MetaData& item)
{
    const KnownRow row = findKnownRow(item);
    m_wasLastKnown = row.id >= 1;
    if (row.id < 1)
        return insert(item);
    if (!row.isUnchanged)
        return rescan(item, row.id);
    m_unchangedRows->add(row.id);
    return true;
}

MetaDataList RecordWriter::finish(const std::function<bool()>& isCanceled)
{
    if (!m_unchangedRows)
        return {};
    if (!m_unchangedRows->touch(m_scanTimestamp, isCanceled) && !isCanceled())
        m_finishError = m_isTransactionLost ? m_errorText : QString::fromUtf8(sqlite3_errmsg(m_handle));
    MetaDataList failedItems;
    for (const UnchangedRows::Failure& failure : m_unchangedRows->failures()) {
        noteFailure(failure.isConstraint);
        failedItems.append(failed(fetchMetaData(m_connection, m_tableId, failure.id)));
    }
    return failedItems;
}

MetaData RecordWriter::failed(const MetaData& item) const
{
    MetaData failedItem = item;
    failedItem.setError(m_errorText);
    return failedItem;
}

void RecordWriter::prepare(QSqlQuery& query, const QString& statement)
{
    if (!query.lastQuery().isEmpty())
        return;
    query.setForwardOnly(true);
    query.prepare(statement.arg(m_tableName));
}

// A scan finds nearly all files known, or none: the last file tells what to ask first.
RecordWriter::KnownRow RecordWriter::findKnownRow(const MetaData& item)
{
    KnownRow row;
    if (m_wasLastKnown && compareWithRow(item, row))
        return row;
    row.id = findByFilePath(item.filePath());
    if (row.id >= 1)
        compareWithRow(item, row);
    return row;
}

qint64 RecordWriter::findByFilePath(const QString& filePath)
{
    prepare(m_find, findStatement);
    m_find.bindValue(filePathPlace, filePath);
    const qint64 id = m_find.exec() && m_find.next() ? m_find.value(0).toLongLong() : 0;
    m_find.finish();
    return id;
}

// Leaves the row alone when it cannot be compared.
bool RecordWriter::compareWithRow(const MetaData& item, KnownRow& row)
{
    if (!m_comparison)
        return false;
    int place = 0;
    for (const BoundField& bound : boundFields())
        m_comparison->bind(++place, writtenValue(item, bound));
    m_comparison->bind(++place, QVariant(item.filePath()));
    const bool isKnown = m_comparison->next();
    if (m_comparison->hasFailed())
        return false;
    row = { isKnown ? m_comparison->integer(0) : 0, isKnown && m_comparison->integer(1) != 0 };
    m_comparison->finish();
    return true;
}

bool RecordWriter::insert(const MetaData& item)
{
    prepare(m_insert, insertStatement());
    bindFields(m_insert, item);
    m_insert.bindValue(scanTimestampPlace, m_scanTimestamp);
    return execute(m_insert);
}

bool RecordWriter::update(const MetaData& item, qint64 id)
{
    prepare(m_update, updateStatement());
    bindFields(m_update, item);
    m_update.bindValue(idPlace, id);
    return execute(m_update);
}

bool RecordWriter::rescan(const MetaData& item, qint64 id)
{
    prepare(m_rescan, rescanStatement());
    bindFields(m_rescan, item);
    m_rescan.bindValue(scanTimestampPlace, m_scanTimestamp);
    m_rescan.bindValue(idPlace, id);
    return execute(m_rescan);
}

MetaData RecordWriter::writeFields(const MetaData& item, const QStringList& fields)
{
    if (m_isTransactionLost)
        return failed(item);
    auto query = m_fieldUpdates.find(fields);
    if (query == m_fieldUpdates.end()) {
        query = m_fieldUpdates.insert(fields, QSqlQuery(m_connection));
        prepare(*query, fieldsUpdateStatement(fields));
    }
    for (const BoundField& bound : boundFields()) {
        if (fields.contains(bound.field->name))
            bindField(*query, item, bound);
    }
    query->bindValue(idPlace, item.id());
    return execute(*query) ? MetaData() : failed(item);
}

bool RecordWriter::execute(QSqlQuery& query)
{
    if (query.exec())
        return true;
    noteFailure(query.lastError().nativeErrorCode() == constraintErrorCode);
    return false;
}

void RecordWriter::noteFailure(bool isConstraint)
{
    m_errorText
        = isConstraint ? QCoreApplication::translate("Database", "Database constraint violation") : unknownErrorText();
    // A full disk, or a trigger that rolls back, makes SQLite end the transaction by itself; what was written now would
    // stay for good.
    m_isTransactionLost = m_wasInTransaction && !isTransactionActive(m_connection);
}

MetaDataList writeMetaData(
    const QSqlDatabase& connection, int tableId, const MetaDataList& items, qint64 scanTimestamp, bool lookupByFilePath)
{
    RecordWriter writer(connection, tableId, scanTimestamp, lookupByFilePath);
    MetaDataList failedItems = writer.write(items);
    failedItems.append(writer.finish());
    if (writer.finishError().isEmpty())
        return failedItems;
    failedItems = items;
    for (MetaData& item : failedItems)
        item.setError(unknownErrorText());
    return failedItems;
}
