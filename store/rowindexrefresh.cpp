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
constexpr size_t greatestMovedRows = 64;

} // namespace

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
    std::vector<quint32> movedRows;
    bool hasNewRows = false;
    for (const qint64 id : changedIds) {
        cursor.bind(1, id);
        const bool isThere = cursor.next();
        if (cursor.hasFailed())
            return false;
        const qint64 row = rowOf(id);
        if (isThere && row >= 0 && isSearchedAsBefore(cursor, fields, size_t(row))) {
            movedRows.push_back(quint32(row));
            continue;
        }
        if (row >= 0)
            m_rows.remove(size_t(row));
        if (!isThere)
            continue;
        if (!appendRow(cursor, fields, id))
            return false;
        hasNewRows = hasNewRows || row < 0;
        if (row >= 0)
            movedRows.push_back(renumberInOrder(quint32(row)));
    }
    m_expectedRows = size_t(m_rows.count());
    if (hasNewRows)
        forgetOrder();
    refreshOrder(movedRows);
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

// The last row has taken the place of this one, for the time being.
quint32 RowIndex::renumberInOrder(quint32 row)
{
    const auto newRow = quint32(m_ids.size() - 1);
    std::replace(m_order.begin(), m_order.end(), row, newRow);
    return newRow;
}

// For rows that have gone, and others that may have moved: in the order of the paths, a new rating moves nothing.
void RowIndex::refreshOrder(const std::vector<quint32>& movedRows)
{
    if (movedRows.size() > greatestMovedRows)
        forgetOrder();
    if (m_sortField.isEmpty())
        return;
    const auto isDead = [this](quint32 row) {
        return !m_rows.contains(row);
    };
    m_order.erase(std::remove_if(m_order.begin(), m_order.end(), isDead), m_order.end());
    SqliteStatement precedence(m_handle,
        QStringLiteral("SELECT 1 FROM %1 a, %1 b WHERE a.id=?1 AND b.id=?2 AND (a.%2, a.id) < (b.%2, b.id)")
            .arg(m_tableName, m_sortField));
    const auto isStill = [&](quint32 row) {
        return isInPlace(precedence, row);
    };
    if (!std::all_of(movedRows.begin(), movedRows.end(), isStill))
        forgetOrder();
}

// Whether the row is still between its neighbours. Nothing is said of rows without a value.
bool RowIndex::isInPlace(SqliteStatement& precedence, quint32 row) const
{
    const auto place = std::find(m_order.begin(), m_order.end(), row);
    if (place == m_order.end())
        return false;
    const auto isBefore = [&](quint32 first, quint32 second) {
        precedence.bind(1, id(first));
        precedence.bind(2, id(second));
        return precedence.next();
    };
    const bool isAfterLast = place == m_order.begin() || isBefore(*(place - 1), row);
    return isAfterLast && (place + 1 == m_order.end() || isBefore(row, *(place + 1)));
}
