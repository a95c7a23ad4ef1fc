// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/recordwriter.h"

#include "store/fieldcatalogue.h"
#include "store/metadatafields.h"
#include "store/querycomposer.h"
#include "store/transactionstate.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <vector>

namespace {

const char* const updateStatement
    = "UPDATE %1 SET filePath=:filePath, fileName=:fileName, fileType=:fileType, library=:library, "
      "description=:description, duration=:duration, rating=:rating, sampleRate=:sampleRate, "
      "channelsCount=:channelsCount, bitsPerSample=:bitsPerSample, originReference=:originReference, artist=:artist, "
      "title=:title, album=:album, comments=:comments, genre=:genre, year=:year, bitrate=:bitrate, "
      "playlist=:playlist WHERE id=:id";

const char* const insertStatement
    = "INSERT INTO %1 (filePath, fileName, fileType, library, description, duration, rating, sampleRate, "
      "channelsCount, bitsPerSample, originReference, artist, title, album, comments, genre, year, bitrate, playlist, "
      "scanTimestamp) VALUES (:filePath, :fileName, :fileType, :library, :description, :duration, :rating, "
      ":sampleRate, :channelsCount, :bitsPerSample, :originReference, :artist, :title, :album, :comments, :genre, "
      ":year, :bitrate, :playlist, :scanTimestamp)";

const char* const findStatement = "SELECT id FROM %1 WHERE filePath=:filePath";

const char* const touchStatement = "UPDATE %1 SET scanTimestamp=:scanTimestamp WHERE id=:id";

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

// The fields that both the insert and the update write.
std::vector<BoundField> buildBoundFields()
{
    std::vector<BoundField> fields;
    for (const QString& name : allFieldNames()) {
        if (name != QLatin1String("id") && name != QLatin1String("scanTimestamp"))
            fields.push_back({ QLatin1Char(':') + name, findMetaDataField(name) });
    }
    return fields;
}

const std::vector<BoundField>& boundFields()
{
    static const std::vector<BoundField> fields = buildBoundFields();
    return fields;
}

// Writes one list of records with four statements that are prepared once.
class RecordWriter
{
public:
    RecordWriter(const QSqlDatabase& connection, int tableId, qint64 scanTimestamp, bool lookupByFilePath);

    // The record, with its error set, when it could not be written; else a null record.
    MetaData write(const MetaData& item);

private:
    static QSqlQuery prepare(const QSqlDatabase& connection, const char* statement, int tableId);
    static void bindFields(QSqlQuery& query, const MetaData& item);
    MetaData failed(const MetaData& item) const;
    qint64 findByFilePath(const QString& filePath);
    bool insert(const MetaData& item);
    bool update(const MetaData& item, qint64 id);
    bool execute(QSqlQuery& query);
    void touch(qint64 id);

    QSqlDatabase m_connection;
    bool m_wasInTransaction;
    bool m_isTransactionLost = false;
    QSqlQuery m_update;
    QSqlQuery m_insert;
    QSqlQuery m_find;
    QSqlQuery m_touch;
    qint64 m_scanTimestamp;
    bool m_lookupByFilePath;
    QString m_errorText;
};

RecordWriter::RecordWriter(const QSqlDatabase& connection, int tableId, qint64 scanTimestamp, bool lookupByFilePath)
    : m_connection(connection)
    , m_wasInTransaction(isTransactionActive(connection))
    , m_update(prepare(connection, updateStatement, tableId))
    , m_insert(prepare(connection, insertStatement, tableId))
    , m_find(prepare(connection, findStatement, tableId))
    , m_touch(prepare(connection, touchStatement, tableId))
    , m_scanTimestamp(scanTimestamp)
    , m_lookupByFilePath(lookupByFilePath)
{
}

QSqlQuery RecordWriter::prepare(const QSqlDatabase& connection, const char* statement, int tableId)
{
    QSqlQuery query(connection);
    query.setForwardOnly(true);
    query.prepare(QString::fromLatin1(statement).arg(metaDataTableName(tableId)));
    return query;
}

MetaData RecordWriter::write(const MetaData& item)
{
    if (!item.error().isEmpty())
        return item;
    if (m_isTransactionLost)
        return failed(item);
    const bool searches = item.id() < 1 && m_lookupByFilePath;
    const qint64 id = searches ? findByFilePath(item.filePath()) : item.id();
    const bool isWritten = id < 1 ? insert(item) : update(item, id);
    if (!isWritten)
        return failed(item);
    if (searches && id >= 1)
        touch(id);
    return MetaData();
}

MetaData RecordWriter::failed(const MetaData& item) const
{
    MetaData failedItem = item;
    failedItem.setError(m_errorText);
    return failedItem;
}

qint64 RecordWriter::findByFilePath(const QString& filePath)
{
    m_find.bindValue(filePathPlace, filePath);
    const qint64 id = m_find.exec() && m_find.next() ? m_find.value(0).toLongLong() : 0;
    m_find.finish();
    return id;
}

bool RecordWriter::insert(const MetaData& item)
{
    bindFields(m_insert, item);
    m_insert.bindValue(scanTimestampPlace, m_scanTimestamp);
    return execute(m_insert);
}

bool RecordWriter::update(const MetaData& item, qint64 id)
{
    bindFields(m_update, item);
    m_update.bindValue(idPlace, id);
    return execute(m_update);
}

void RecordWriter::bindFields(QSqlQuery& query, const MetaData& item)
{
    for (const BoundField& bound : boundFields())
        query.bindValue(bound.place, bound.field->read(item));
    // A file that no rule gave a library has none; every other text that is missing is for the table to refuse.
    if (item.library().isNull())
        query.bindValue(libraryPlace, QStringLiteral(""));
}

bool RecordWriter::execute(QSqlQuery& query)
{
    if (query.exec())
        return true;
    const bool isConstraint = query.lastError().nativeErrorCode() == constraintErrorCode;
    m_errorText = isConstraint ? QCoreApplication::translate("Database", "Database constraint violation")
                               : QCoreApplication::translate("Database", "Unknown database error");
    // A full disk makes SQLite end the transaction by itself; what was written now would stay for good.
    m_isTransactionLost = !isConstraint && m_wasInTransaction && !isTransactionActive(m_connection);
    return false;
}

void RecordWriter::touch(qint64 id)
{
    m_touch.bindValue(scanTimestampPlace, m_scanTimestamp);
    m_touch.bindValue(idPlace, id);
    m_touch.exec();
}

} // namespace

MetaDataList writeMetaData(
    const QSqlDatabase& connection, int tableId, const MetaDataList& items, qint64 scanTimestamp, bool lookupByFilePath)
{
    RecordWriter writer(connection, tableId, scanTimestamp, lookupByFilePath);
    MetaDataList failedItems;
    for (const MetaData& item : items) {
        const MetaData failedItem = writer.write(item);
        if (!failedItem.isNull())
            failedItems.append(failedItem);
    }
    return failedItems;
}
