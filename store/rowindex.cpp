// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/rowindex.h"

#include "store/querycomposer.h"
#include "store/sqlitestatement.h"
#include "store/tablepass.h"
#include "store/termsearch.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <numeric>

namespace {

const QString filePathField = QStringLiteral("filePath");

constexpr quint32 noRow = std::numeric_limits<quint32>::max();
constexpr size_t rowsBetweenChecks = 1024;

// To sort so many rows by a statement takes a few milliseconds each time, to read the order of all rows, of which they
// are a small part, a hundred once.
constexpr size_t fewRows = 1000;
constexpr size_t rowsPerFew = 50;

// A table of all ids between the least and the greatest is worth its memory up to so many for each row.
constexpr size_t greatestSpread = 4;

bool isHoldable(qint64 id)
{
    return id >= 0 && id < qint64(noRow);
}

} // namespace

RowIndex::RowIndex(sqlite3* handle, int tableId, const Limits& limits)
    : m_handle(handle)
    , m_tableName(metaDataTableName(tableId))
    , m_tableId(tableId)
    , m_limits(limits)
{
}

const QStringList& RowIndex::lookupFields()
{
    static const QStringList fields{ QStringLiteral("library"), QStringLiteral("description"), filePathField };
    return fields;
}

bool RowIndex::findRows(const IndexedView& view, RowSet& rows)
{
    const bool isPrepared
        = !m_isRefused && (view.terms.empty() ? order(view.sortField) != nullptr : prepareTexts(view.lookupFields));
    if (!isPrepared)
        return false;
    rows = m_rows;
    if (!view.flagsWhere.isEmpty()) {
        const RowSet* flagged = flaggedRows(view.flagsWhere);
        if (flagged == nullptr)
            return false;
        rows.intersect(*flagged);
    }
    if (!view.terms.empty())
        TermSearch(columns(view.lookupFields), view.terms).apply(rows);
    return true;
}

const std::vector<quint32>* RowIndex::order(const QString& sortField)
{
    if (m_isRefused || m_isOrderRefused)
        return nullptr;
    if (m_sortField == sortField)
        return &m_order;
    if (!readOrder(sortField)) {
        refuse();
        return nullptr;
    }
    if (isWithinLimits())
        return &m_order;
    // What the texts find is of use without it.
    forgetOrder();
    m_isOrderRefused = true;
    return nullptr;
}

std::optional<std::vector<quint32>> RowIndex::sortedRows(const RowSet& rows, const QString& sortField) const
{
    const auto count = size_t(rows.count());
    if (m_sortField == sortField || count > fewRows || count * rowsPerFew > rows.size())
        return std::nullopt;
    QStringList ids;
    rows.forEach([&](size_t row) { ids.append(QString::number(id(row))); });
    SqliteStatement cursor(m_handle,
        QStringLiteral("SELECT id FROM %1 WHERE id IN (%2) ORDER BY %3, id")
            .arg(m_tableName, ids.join(QLatin1Char(',')), sortField));
    std::vector<quint32> sorted;
    while (cursor.next())
        sorted.push_back(quint32(rowOf(cursor.integer(0))));
    return sorted.size() == count ? std::make_optional(std::move(sorted)) : std::nullopt;
}

qint64 RowIndex::rowOf(qint64 id) const
{
    const qint64 row = ascendingRowOf(id);
    if (row >= 0)
        return row;
    for (size_t added = m_ascendingIds; added < m_ids.size(); ++added) {
        if (m_ids[added] == id && m_rows.contains(added))
            return qint64(added);
    }
    return -1;
}

// The same among the rows of the pass.
qint64 RowIndex::ascendingRowOf(qint64 id) const
{
    if (m_ascendingIds == 0 || id < m_ids.front() || id > m_ids[m_ascendingIds - 1])
        return -1;
    const bool isWithoutGaps = m_ids[m_ascendingIds - 1] - m_ids.front() == m_ascendingIds - 1;
    const auto end = m_ids.begin() + std::ptrdiff_t(m_ascendingIds);
    const qint64 row = isWithoutGaps ? id - m_ids.front() : std::lower_bound(m_ids.begin(), end, id) - m_ids.begin();
    return m_ids[size_t(row)] == id && m_rows.contains(size_t(row)) ? row : -1;
}

size_t RowIndex::bytes() const
{
    size_t bytes = (m_ids.capacity() + m_order.capacity()) * sizeof(quint32) + m_rows.bytes() + m_words.bytes();
    for (const auto& text : m_texts)
        bytes += text.second.bytes();
    for (const auto& rows : m_flaggedRows)
        bytes += rows.second.bytes();
    return bytes;
}

size_t RowIndex::pathBytes() const
{
    const auto paths = m_texts.find(filePathField);
    return paths == m_texts.end() ? 0 : paths->second.bytes();
}

bool RowIndex::isWithinLimits() const
{
    return bytes() - pathBytes() <= m_limits.perRow * m_expectedRows + m_limits.besides
        && pathBytes() <= m_limits.perPath * m_expectedRows + m_limits.besides;
}

// Not of paths: nearly each has words of its own.
void RowIndex::beginWords()
{
    if (m_words.hasBegun() || m_expectedRows < m_limits.fewestRowsForWords)
        return;
    // What is held now, an order that may still be read, and some bits for each row.
    const size_t needed = bytes() - pathBytes() + (m_order.empty() ? m_ids.size() * sizeof(quint32) : 0) + m_ids.size();
    const size_t allowed = m_limits.perRow * m_expectedRows;
    if (needed >= allowed)
        return;
    std::map<QString, FoldedText> texts;
    std::copy_if(m_texts.begin(), m_texts.end(), std::inserter(texts, texts.end()),
        [](const auto& text) { return text.first != filePathField; });
    m_words.begin(std::move(texts), allowed - needed);
}

void RowIndex::refuse()
{
    clear();
    m_isRefused = true;
}

void RowIndex::clear()
{
    m_ids = std::vector<quint32>();
    m_ascendingIds = 0;
    m_rows = RowSet();
    m_texts.clear();
    m_words.clear();
    m_flaggedRows.clear();
    forgetOrder();
    m_isOrderRefused = false;
}

void RowIndex::forgetOrder()
{
    m_sortField.clear();
    m_order = std::vector<quint32>();
}

// Paths are held only as long as they are searched.
bool RowIndex::prepareTexts(const QStringList& fields)
{
    if (!fields.contains(filePathField))
        m_texts.erase(filePathField);
    else if (m_arePathsRefused)
        return false;
    const auto isMissing = [this](const QString& field) {
        return m_texts.count(field) == 0;
    };
    if (std::none_of(fields.begin(), fields.end(), isMissing)) {
        // Only what is searched more than once before it changes pays.
        beginWords();
        return true;
    }
    // A pass finds the rows in the order of their ids.
    if (m_ids.size() != m_ascendingIds || size_t(m_rows.count()) != m_ids.size())
        clear();
    QStringList missing;
    std::copy_if(fields.begin(), fields.end(), std::back_inserter(missing), isMissing);
    const bool areOnlyPaths = missing == QStringList{ filePathField };
    if (!areOnlyPaths)
        m_words.clear();
    if (readTexts(missing))
        return true;
    if (areOnlyPaths) {
        m_texts.erase(filePathField);
        m_arePathsRefused = true;
    } else {
        refuse();
    }
    return false;
}

bool RowIndex::readTexts(const QStringList& fields)
{
    const bool isFirstPass = m_ids.empty();
    if (isFirstPass && !beginFirstPass())
        return false;
    for (const QString& field : fields)
        m_texts[field].reserve(m_expectedRows);
    if (!readRows(fields) || (isFirstPass && !takeIds(std::move(m_ids))))
        return false;
    for (const QString& field : fields)
        m_texts[field].squeeze();
    return isWithinLimits();
}

// False when it is not a row for each of the ids, in their order, or there is a text that cannot be held.
bool RowIndex::readRows(const QStringList& fields)
{
    const bool isFirstPass = m_ids.empty();
    const std::vector<FoldedText*> texts = textsOf(fields);
    size_t row = 0;
    TablePass pass(m_handle, m_tableName, QStringList{ QStringLiteral("id") } + fields);
    const bool isComplete = pass.run([&](const TablePass::Row& columns) {
        const qint64 id = columns.integer(0);
        if (isFirstPass && isHoldable(id))
            m_ids.push_back(quint32(id));
        if (row >= m_ids.size() || m_ids[row] != id || !appendTexts(columns, texts))
            return false;
        return row++ % rowsBetweenChecks != 0 || isWithinLimits();
    });
    return isComplete && row == m_ids.size();
}

std::vector<FoldedText*> RowIndex::textsOf(const QStringList& fields)
{
    std::vector<FoldedText*> texts;
    for (const QString& field : fields)
        texts.push_back(&m_texts[field]);
    return texts;
}

bool RowIndex::beginFirstPass()
{
    SqliteStatement cursor(m_handle, QLatin1String("SELECT COUNT(*) FROM ") + m_tableName);
    if (!cursor.next())
        return false;
    m_expectedRows = size_t(cursor.integer(0));
    if (m_expectedRows >= noRow)
        return false;
    m_ids.reserve(m_expectedRows);
    return true;
}

bool RowIndex::readOrder(const QString& sortField)
{
    const bool isFirstPass = m_ids.empty();
    if (isFirstPass && !beginFirstPass())
        return false;
    forgetOrder();
    m_order.reserve(m_expectedRows);
    SqliteStatement cursor(
        m_handle, composeSelect(m_tableId, QStringLiteral("id"), { { QStringLiteral("sortField"), sortField } }));
    while (cursor.next()) {
        if (!isHoldable(cursor.integer(0)) || m_order.size() == m_expectedRows)
            return false;
        m_order.push_back(quint32(cursor.integer(0)));
    }
    if (cursor.hasFailed() || (isFirstPass && !takeIds(m_order)) || !numberOrder())
        return false;
    m_sortField = sortField;
    return true;
}

bool RowIndex::takeIds(std::vector<quint32> ids)
{
    if (!std::is_sorted(ids.begin(), ids.end()))
        std::sort(ids.begin(), ids.end());
    m_ids = std::move(ids);
    m_ascendingIds = m_ids.size();
    m_rows = RowSet(m_ids.size());
    for (size_t row = 0; row < m_ids.size(); ++row)
        m_rows.insert(row);
    return m_ids.size() == m_expectedRows;
}

// Puts the row numbers in the place of the ids. False when there are others than the rows'.
bool RowIndex::numberOrder()
{
    if (m_order.size() != size_t(m_rows.count()))
        return false;
    if (m_order.empty())
        return true;
    const auto range = std::minmax_element(m_ids.begin(), m_ids.end());
    const quint32 least = *range.first;
    const size_t spread = size_t(*range.second) - least + 1;
    std::vector<quint32> rows;
    if (spread <= greatestSpread * m_ids.size()) {
        rows.assign(spread, noRow);
        m_rows.forEach([&](size_t row) { rows[m_ids[row] - least] = quint32(row); });
    }
    for (quint32& place : m_order) {
        if (place < least || place - least >= spread)
            return false;
        place = rows.empty() ? quint32(rowOf(place)) : rows[place - least];
        if (place == noRow)
            return false;
    }
    return true;
}

// Those of few conditions at a time: there are two, and both together.
const RowSet* RowIndex::flaggedRows(const QString& flagsWhere)
{
    const auto found = m_flaggedRows.find(flagsWhere);
    if (found != m_flaggedRows.end())
        return &found->second;
    RowSet rows(m_ids.size());
    SqliteStatement cursor(m_handle, QLatin1String("SELECT id FROM ") + m_tableName + flagsWhere);
    while (cursor.next()) {
        const qint64 row = rowOf(cursor.integer(0));
        if (row >= 0)
            rows.insert(size_t(row));
    }
    if (cursor.hasFailed())
        return nullptr;
    return &m_flaggedRows.emplace(flagsWhere, std::move(rows)).first->second;
}

std::vector<SearchedColumn> RowIndex::columns(const QStringList& fields) const
{
    std::vector<SearchedColumn> columns;
    for (const QString& field : fields)
        columns.push_back({ &m_texts.at(field), m_words.find(field) });
    return columns;
}
