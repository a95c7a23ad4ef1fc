// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/unchangedrows.h"

#include "store/sqlitestatement.h"
#include "store/timestampindexes.h"

#include <optional>
#include <sqlite3.h>

namespace {

// To make the indexes of a table anew costs as much as to move a quarter of its rows or less: the less, the farther
// apart their places lie.
constexpr qint64 worthwhilePart = 4;
constexpr qint64 fewestRows = 1000;

// SQLite sorts up to 512 MiB in memory. Of more rows it may need room in the folder of temporary files, without which a
// long scan would fail in its last moment.
constexpr qint64 mostTableRows = 2000000;

// Rows between two looks at whether the scan was canceled.
constexpr size_t stepSize = 1000;

} // namespace

UnchangedRows::UnchangedRows(sqlite3* handle, const QString& tableName)
    : m_handle(handle)
    , m_tableName(tableName)
    , m_isInTransaction(sqlite3_get_autocommit(handle) == 0)
{
}

bool UnchangedRows::touch(qint64 scanTimestamp, const std::function<bool()>& isCanceled)
{
    TimestampIndexes indexes(m_handle, m_tableName);
    if (areWorthNewIndexes())
        indexes.drop(isCanceled);
    return touchEach(scanTimestamp, isCanceled) && indexes.create(isCanceled);
}

// SQLite gives a transaction up when the disk is full; what is written then would stay for good.
bool UnchangedRows::isTransactionLost() const
{
    return m_isInTransaction && sqlite3_get_autocommit(m_handle) != 0;
}

// Only within a transaction can nobody ever see the table without its indexes.
bool UnchangedRows::areWorthNewIndexes() const
{
    if (qint64(m_ids.size()) < fewestRows || !m_isInTransaction || isTransactionLost())
        return false;
    SqliteStatement count(m_handle, QStringLiteral("SELECT COUNT(*) FROM %1").arg(m_tableName));
    const qint64 tableRows = count.next() ? count.integer(0) : 0;
    return tableRows > 0 && tableRows <= mostTableRows && qint64(m_ids.size()) >= tableRows / worthwhilePart;
}

// The last row first: where rows were in the order of their scan before, each then moves within a page of its indexes,
// from the end of the earlier time stamp to the beginning of the new one.
bool UnchangedRows::touchEach(qint64 scanTimestamp, const std::function<bool()>& isCanceled)
{
    const QString statement = QStringLiteral("UPDATE %1 SET scanTimestamp=?1 WHERE id=?2").arg(m_tableName);
    std::optional<SqliteStatement> touch;
    for (size_t left = m_ids.size(); left > 0; --left) {
        if (isTransactionLost() || (left % stepSize == 0 && isCanceled()))
            return false;
        if (!touch)
            touch.emplace(m_handle, statement).bind(1, scanTimestamp);
        touch->bind(2, m_ids[left - 1]);
        if (touch->run() < 0) {
            m_failures.push_back({ m_ids[left - 1], (sqlite3_errcode(m_handle) & 0xff) == SQLITE_CONSTRAINT });
            touch.reset();
        }
    }
    return !isTransactionLost();
}
