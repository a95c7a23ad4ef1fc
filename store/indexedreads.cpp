// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/indexedreads.h"

#include "store/fieldcatalogue.h"
#include "store/operationreply.h"
#include "store/querycomposer.h"
#include "store/recordreader.h"
#include "store/sqlitestatement.h"
#include "store/transaction.h"

#include <QHash>
#include <QSqlDatabase>
#include <QSqlQuery>

#include <algorithm>
#include <new>

namespace {

// A statement skips so many rows before anyone notices.
constexpr int fewSkippedRows = 1000;

// More ids would not fit into a statement.
constexpr size_t greatestIdsCount = 50000;

int positive(const QVariantMap& parameters, const QString& key)
{
    return std::max(parameters.value(key).toInt(), 0);
}

int pageOffset(const QVariantMap& parameters)
{
    return positive(parameters, QStringLiteral("offset"));
}

// 0 for all rows.
int pageLimit(const QVariantMap& parameters)
{
    return positive(parameters, QStringLiteral("limit"));
}

// The values of the query's rows as a list, each in the place of its row's id; `read` gives the current row's id and
// value. The query tells the rows in an order of its own. Nothing when a row is missing.
template <typename List, typename Reader>
std::optional<QVariant> valuesInPlace(QSqlQuery& query, const std::vector<qint64>& ids, const Reader& read)
{
    QHash<qint64, int> places;
    places.reserve(int(ids.size()));
    List values;
    values.reserve(int(ids.size()));
    for (const qint64 id : ids) {
        places.insert(id, values.size());
        values.append(typename List::value_type());
    }
    int count = 0;
    for (; query.next(); ++count) {
        auto row = read();
        values[places.value(row.first)] = std::move(row.second);
    }
    return count == values.size() ? std::make_optional(QVariant::fromValue(values)) : std::nullopt;
}

bool selectByIds(QSqlQuery& query, const QString& columns, int tableId, const std::vector<qint64>& ids)
{
    QStringList texts;
    texts.reserve(int(ids.size()));
    for (const qint64 id : ids)
        texts.append(QString::number(id));
    query.setForwardOnly(true);
    return query.exec(QStringLiteral("SELECT %1 FROM %2 WHERE id IN (%3)")
                          .arg(columns, metaDataTableName(tableId), texts.join(QLatin1Char(','))));
}

std::optional<QVariant> readRecords(const QSqlDatabase& connection, int tableId, const std::vector<qint64>& ids)
{
    QSqlQuery query(connection);
    if (!selectByIds(query, QStringLiteral("*"), tableId, ids))
        return std::nullopt;
    const RecordReader reader(query);
    return valuesInPlace<MetaDataList>(query, ids, [&reader]() {
        MetaData record = reader.read();
        const qint64 id = record.id();
        return std::make_pair(id, std::move(record));
    });
}

std::optional<QVariant> readField(
    const QSqlDatabase& connection, int tableId, const QString& field, const std::vector<qint64>& ids)
{
    QSqlQuery query(connection);
    if (!selectByIds(query, QLatin1String("id, ") + field, tableId, ids))
        return std::nullopt;
    return valuesInPlace<QVariantList>(
        query, ids, [&query]() { return std::make_pair(query.value(0).toLongLong(), query.value(1)); });
}

// Whether the values alone tell a record's place. They do not where one is missing, for it compares with nothing, or
// where the stored value is not the one that the record tells.
bool isPlacedByValue(const QSqlDatabase& connection, int tableId, const QString& field, qint64 id)
{
    const MetaData record = fetchMetaData(connection, tableId, id);
    if (record.isNull())
        return false;
    QSqlQuery query(connection);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT 1 FROM %1 WHERE id=:id AND %2=:value AND NOT EXISTS (SELECT 1 FROM %1 WHERE "
                                 "%2 IS NULL)")
                      .arg(metaDataTableName(tableId), field));
    query.bindValue(QStringLiteral(":id"), id);
    query.bindValue(QStringLiteral(":value"), record.toVariantMap().value(field));
    return query.exec() && query.next();
}

} // namespace

IndexedReads::IndexedReads(const QSqlDatabase& connection, const RowIndex::Limits& limits)
    : m_handle(sqliteHandle(connection))
    , m_limits(limits)
{
    if (m_handle != nullptr)
        m_watch = std::make_unique<ChangeWatch>(m_handle);
}

bool IndexedReads::getRowsCount(
    const QSqlDatabase& connection, OperationReply* reply, int tableId, const QVariantMap& parameters)
{
    chooseTable(tableId);
    if (lookupTerms(parameters).isEmpty())
        return false;
    const std::optional<QVariant> count
        = answer(connection, tableId, parameters, [this](const IndexedView& view) { return countRows(view); });
    if (!count)
        return false;
    reply->setResult(QStringLiteral("rowsCount"), *count);
    reply->finish();
    return true;
}

bool IndexedReads::pullMetaData(
    const QSqlDatabase& connection, OperationReply* reply, int tableId, const QVariantMap& parameters)
{
    const QString singleField = parameters.value(QStringLiteral("singleField")).toString();
    if (!singleField.isEmpty() && !allFieldNames().contains(singleField))
        return false;
    chooseTable(tableId);
    const bool isStatementQuick = lookupTerms(parameters).isEmpty() && pageOffset(parameters) <= fewSkippedRows;
    if (isStatementQuick || pageLimit(parameters) == 0)
        return false;
    const std::optional<QVariant> items = answer(connection, tableId, parameters,
        [&](const IndexedView& view) { return readPage(connection, view, parameters); });
    if (!items)
        return false;
    reply->setResult(QStringLiteral("items"), *items);
    reply->finish();
    return true;
}

bool IndexedReads::lookupMetaDataRow(const QSqlDatabase& connection, OperationReply* reply, int tableId,
    qint64 metaDataId, const QVariantMap& parameters)
{
    chooseTable(tableId);
    const std::optional<QVariant> row
        = answer(connection, tableId, parameters, [&](const IndexedView& view) -> std::optional<QVariant> {
              if (view.sortField.isEmpty() || !isPlacedByValue(connection, tableId, view.sortField, metaDataId))
                  return std::nullopt;
              return findPlace(view, metaDataId);
          });
    if (!row)
        return false;
    reply->setResult(QStringLiteral("row"), *row);
    reply->finish();
    return true;
}

size_t IndexedReads::bytes() const
{
    const size_t viewBytes = m_viewRows.bytes() + m_viewOrder.bytes();
    return viewBytes + (m_index ? m_index->bytes() : 0);
}

void IndexedReads::waitForWords()
{
    if (m_index)
        m_index->waitForWords();
}

// What `findAnswer` finds, in a transaction of its own, so that all that is read is of one age.
template <typename Answer>
std::optional<QVariant> IndexedReads::answer(
    const QSqlDatabase& connection, int tableId, const QVariantMap& parameters, const Answer& findAnswer)
{
    if (!m_watch)
        return std::nullopt;
    const std::optional<IndexedView> view = IndexedView::fromParameters(tableId, parameters);
    if (!view)
        return std::nullopt;
    try {
        Transaction transaction(connection);
        if (!transaction.begin())
            return std::nullopt;
        return findAnswer(*view);
    } catch (const std::bad_alloc&) {
        forgetView();
        m_index->refuse();
        return std::nullopt;
    }
}

void IndexedReads::chooseTable(int tableId)
{
    if (!m_watch || (m_index && tableId == m_tableId))
        return;
    m_tableId = tableId;
    forgetView();
    m_index = std::make_unique<RowIndex>(m_handle, tableId, m_limits);
    m_isIndexNew = true;
    m_watch->setTable(metaDataTableName(tableId).toUtf8());
}

// False when the file cannot be read for the moment.
bool IndexedReads::bringUpToDate()
{
    const ChangeWatch::Verdict verdict = m_watch->ask();
    if (verdict == ChangeWatch::Verdict::Unknown)
        return false;
    if (!m_isIndexNew && verdict == ChangeWatch::Verdict::Nothing)
        return true;
    forgetView();
    const bool isKept
        = !m_isIndexNew && verdict == ChangeWatch::Verdict::Rows && m_index->refresh(m_watch->changedRows());
    if (!isKept)
        m_index = std::make_unique<RowIndex>(m_handle, m_tableId, m_limits);
    m_isIndexNew = false;
    m_watch->settle();
    return true;
}

void IndexedReads::forgetView()
{
    m_viewWhere.reset();
    m_viewRows = RowSet();
    m_viewOrder.clear();
}

// Null when the statement has to answer, as below.
const RowSet* IndexedReads::matchingRows(const IndexedView& view)
{
    if (m_viewWhere == view.where)
        return &m_viewRows;
    forgetView();
    if (!m_index->findRows(view, m_viewRows))
        return nullptr;
    m_viewWhere = view.where;
    return &m_viewRows;
}

// All rows in the view's order; null when the statement has to answer.
const std::vector<quint32>* IndexedReads::orderOf(const IndexedView& view)
{
    const std::vector<quint32>* order = m_index->order(view.sortField);
    // The index may have given its rows back, which those of the view are.
    if (order == nullptr)
        forgetView();
    return order;
}

// So many of a filtered view's rows from the first on, or all.
bool IndexedReads::orderMatchingRows(const IndexedView& view, size_t count)
{
    const RowSet* rows = matchingRows(view);
    if (rows == nullptr)
        return false;
    if (!m_viewOrder.isOf(view.sortField, view.isDescending)) {
        m_viewOrder.begin(view.sortField, view.isDescending);
        if (std::optional<std::vector<quint32>> sorted = m_index->sortedRows(*rows, view.sortField))
            m_viewOrder.set(*std::move(sorted));
    }
    if (m_viewOrder.rows().size() >= std::min(count, size_t(rows->count())))
        return true;
    const std::vector<quint32>* order = orderOf(view);
    if (order == nullptr)
        return false;
    m_viewOrder.extend(*order, *rows, count);
    return true;
}

std::optional<std::vector<qint64>> IndexedReads::idsOfPage(const IndexedView& view, size_t offset, size_t limit)
{
    if (view.isFiltered() && !orderMatchingRows(view, offset + limit))
        return std::nullopt;
    const std::vector<quint32>* rows = view.isFiltered() ? &m_viewOrder.rows() : orderOf(view);
    const size_t end = rows == nullptr ? 0 : std::min(offset + limit, rows->size());
    if (rows == nullptr || end > offset + greatestIdsCount)
        return std::nullopt;
    const bool isReversed = view.isDescending && !view.isFiltered();
    std::vector<qint64> ids;
    for (size_t place = offset; place < end; ++place)
        ids.push_back(m_index->id((*rows)[isReversed ? rows->size() - 1 - place : place]));
    return ids;
}

std::optional<QVariant> IndexedReads::countRows(const IndexedView& view)
{
    const RowSet* rows = bringUpToDate() ? matchingRows(view) : nullptr;
    return rows == nullptr ? std::nullopt : std::make_optional(QVariant(rows->count()));
}

std::optional<QVariant> IndexedReads::readPage(
    const QSqlDatabase& connection, const IndexedView& view, const QVariantMap& parameters)
{
    if (view.sortField.isEmpty() || !bringUpToDate())
        return std::nullopt;
    const std::optional<std::vector<qint64>> ids
        = idsOfPage(view, size_t(pageOffset(parameters)), size_t(pageLimit(parameters)));
    if (!ids)
        return std::nullopt;
    const QString singleField = parameters.value(QStringLiteral("singleField")).toString();
    return singleField.isEmpty() ? readRecords(connection, m_tableId, *ids)
                                 : readField(connection, m_tableId, singleField, *ids);
}

// How many rows of the view come before the record, which need not be one of them.
std::optional<QVariant> IndexedReads::findPlace(const IndexedView& view, qint64 id)
{
    if (!bringUpToDate())
        return std::nullopt;
    const RowSet* rows = view.isFiltered() ? matchingRows(view) : nullptr;
    if (view.isFiltered() && rows == nullptr)
        return std::nullopt;
    // Asked for last: to read texts may make it be forgotten.
    const std::vector<quint32>* order = orderOf(view);
    if (order == nullptr)
        return std::nullopt;
    const auto place = std::find(order->begin(), order->end(), quint32(m_index->rowOf(id)));
    if (place == order->end())
        return std::nullopt;
    const auto isCounted = [rows](quint32 row) {
        return rows == nullptr || rows->contains(row);
    };
    const auto count = view.isDescending ? std::count_if(place + 1, order->end(), isCounted)
                                         : std::count_if(order->begin(), place, isCounted);
    return QVariant(int(count));
}
