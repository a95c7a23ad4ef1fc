// SPDX-License-Identifier: GPL-3.0-or-later
// How a RowIndex follows single rows that have changed.
#include "store/growth.h"
#include "store/rowindex.h"
#include "store/sqlitestatement.h"

#include <algorithm>
#include <limits>

namespace {

// Beyond as many, reading all again is about as quick.
constexpr size_t greatestAddedRows = 4000;
constexpr size_t greatestComingRows = 64;

} // namespace

/// Tells which of two rows comes first in the order of a field and the id. Owner: the stack of a refresh.
class RowIndex::Comparison final
{
public:
    Comparison(sqlite3* handle, const QString& tableName, const QString& field)
        : m_statement(handle,
            QStringLiteral("SELECT CASE WHEN a.%2 IS b.%2 THEN a.id < b.id WHEN a.%2 IS NULL THEN 1 WHEN b.%2 IS NULL "
                           "THEN 0 ELSE a.%2 < b.%2 END FROM %1 a, %1 b WHERE a.id=?1 AND b.id=?2")
                .arg(tableName, field))
    {
    }

    bool isBefore(qint64 id, qint64 otherId)
    {
        m_statement.bind(1, id);
        m_statement.bind(2, otherId);
        m_hasFailed = !m_statement.next() || m_hasFailed;
        return !m_hasFailed && m_statement.integer(0) != 0;
    }
    // Whether any two could not be compared: one of them is not there.
    bool hasFailed() const { return m_hasFailed; }

private:
    SqliteStatement m_statement;
    bool m_hasFailed = false;
};

bool RowIndex::refresh(std::vector<qint64> changedIds)
{
    m_flaggedRows.clear();
    if (m_isRefused)
        return true;
    if (m_ids.empty())
        return false;
    std::sort(changedIds.begin(), changedIds.end());
    changedIds.erase(std::unique(changedIds.begin(), changedIds.end()), changedIds.end());
    QStringList fields;
    for (const auto& text : m_texts)
        fields.append(text.first);
    const QStringList columns = QStringList{ QStringLiteral("id") } + fields;
    SqliteStatement cursor(
        m_handle, QStringLiteral("SELECT %1 FROM %2 WHERE id=?1").arg(columns.join(QLatin1String(", ")), m_tableName));
    OrderChanges changes;
    for (const qint64 id : changedIds) {
        cursor.bind(1, id);
        const bool isThere = cursor.next();
        if (cursor.hasFailed())
            return false;
        const qint64 row = rowOf(id);
        const bool isKept = isThere && row >= 0 && isSearchedAsBefore(cursor, fields, size_t(row));
        if (row >= 0)
            changes.leaving.push_back(quint32(row));
        if (row >= 0 && !isKept)
            m_rows.remove(size_t(row));
        if (isThere && !isKept && !appendRow(cursor, fields, id))
            return false;
        if (isThere)
            changes.coming.push_back(quint32(isKept ? size_t(row) : m_ids.size() - 1));
    }
    m_expectedRows = size_t(m_rows.count());
    refreshOrder(changes);
    return m_ids.size() - m_ascendingIds <= greatestAddedRows && isWithinLimits();
}

bool RowIndex::isSearchedAsBefore(const SqliteStatement& cursor, const QStringList& fields, size_t row) const
{
    int column = 0;
    return std::all_of(fields.begin(), fields.end(), [&](const QString& field) {
        FoldedText text;
        ++column;
        return cursor.isText(column) && text.append(cursor.text(column)) && text.row(0) == m_texts.at(field).row(row);
    });
}

bool RowIndex::appendRow(const SqliteStatement& cursor, const QStringList& fields, qint64 id)
{
    if (id < 0 || id >= std::numeric_limits<quint32>::max() || !appendTexts(cursor, textsOf(fields)))
        return false;
    appendSparingly(m_ids, quint32(id));
    m_rows.append();
    return true;
}

void RowIndex::refreshOrder(const OrderChanges& changes)
{
    if (changes.coming.size() > greatestComingRows)
        forgetOrder();
    if (m_sortField.isEmpty())
        return;
    Comparison comparison(m_handle, m_tableName, m_sortField);
    if (replaceInOrder(comparison, changes))
        return;
    removeFromOrder(changes.leaving);
    for (const quint32 row : changes.coming)
        insertIntoOrder(comparison, row);
    if (comparison.hasFailed())
        forgetOrder();
}

// Where the row belongs among the others, which are in their order.
size_t RowIndex::placeInOrder(Comparison& comparison, quint32 row) const
{
    const auto isBefore = [&](quint32 other) {
        return comparison.isBefore(id(other), id(row));
    };
    return size_t(std::partition_point(m_order.begin(), m_order.end(), isBefore) - m_order.begin());
}

// For most changes: of a single row, in a field that does not move it. False, without a change, for all others.
bool RowIndex::replaceInOrder(Comparison& comparison, const OrderChanges& changes)
{
    if (changes.leaving.size() != 1 || changes.coming.size() != 1)
        return false;
    const quint32 row = changes.coming.front();
    // Where the row itself is out of place, so may this be: it is only tried.
    const size_t place = placeInOrder(comparison, row);
    if (place == m_order.size() || m_order[place] != changes.leaving.front())
        return false;
    const bool isLast = place + 1 == m_order.size();
    if ((!isLast && !comparison.isBefore(id(row), id(m_order[place + 1]))) || comparison.hasFailed())
        return false;
    m_order[place] = row;
    return true;
}

void RowIndex::removeFromOrder(const std::vector<quint32>& rows)
{
    if (rows.empty())
        return;
    // A single one is found more quickly by itself.
    if (rows.size() == 1) {
        m_order.erase(std::remove(m_order.begin(), m_order.end(), rows.front()), m_order.end());
        return;
    }
    RowSet leaving(m_ids.size());
    for (const quint32 row : rows)
        leaving.insert(row);
    const auto isLeaving = [&leaving](quint32 row) {
        return leaving.contains(row);
    };
    m_order.erase(std::remove_if(m_order.begin(), m_order.end(), isLeaving), m_order.end());
}

void RowIndex::insertIntoOrder(Comparison& comparison, quint32 row)
{
    const auto place = std::ptrdiff_t(placeInOrder(comparison, row));
    appendSparingly(m_order, row);
    std::rotate(m_order.begin() + place, m_order.end() - 1, m_order.end());
}
