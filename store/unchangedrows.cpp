// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/unchangedrows.h"

#include "store/sqlitestatement.h"
#include "store/timestampindexes.h"

#include <algorithm>
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

// Rows that one statement touches: they take a tenth less time than with a statement for each.
constexpr size_t blockSize = 50;

/// Gives the time stamp to so many rows at a time, or to none of them.
class TouchStatement
{
public:
    TouchStatement(sqlite3* handle, const QString& tableName, qint64 scanTimestamp, size_t rows)
        : m_handle(handle)
        , m_text(QStringLiteral("UPDATE %1 SET scanTimestamp=?1 WHERE id IN (?2%2)")
                     .arg(tableName, QStringLiteral(",?").repeated(int(rows) - 1)))
        , m_scanTimestamp(scanTimestamp)
        , m_rows(rows)
    {
    }

    // False when a row was refused; SQLite tells why.
    bool run(const qint64* ids)
    {
        if (!m_statement)
            m_statement.emplace(m_handle, m_text).bind(1, m_scanTimestamp);
        for (size_t row = 0; row < m_rows; ++row)
            m_statement->bind(int(row) + 2, ids[row]);
        const bool isTouched = m_statement->run() >= 0;
        if (!isTouched)
            m_statement.reset();
        return isTouched;
    }

private:
    sqlite3* m_handle;
    QString m_text;
    qint64 m_scanTimestamp;
    size_t m_rows;
    std::optional<SqliteStatement> m_statement;
};

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

// The last rows first: where rows were in the order of their scan before, each then moves within a page of its indexes,
// from the end of the earlier time stamp to the beginning of the new one.
bool UnchangedRows::touchEach(qint64 scanTimestamp, const std::function<bool()>& isCanceled)
{
    TouchStatement block(m_handle, m_tableName, scanTimestamp, blockSize);
    TouchStatement single(m_handle, m_tableName, scanTimestamp, 1);
    // Rows of a refused block, which stand as before: one by one, so that the refused row is known.
    size_t singlesLeft = 0;
    for (size_t left = m_ids.size(); left > 0;) {
        const size_t count = singlesLeft == 0 && left >= blockSize ? blockSize : 1;
        const bool isNewStep = left / stepSize != (left - count) / stepSize;
        if (isTransactionLost() || (isNewStep && isCanceled()))
            return false;
        const bool isTouched = (count > 1 ? block : single).run(&m_ids[left - count]);
        if (!isTouched && count > 1) {
            singlesLeft = count;
            continue;
        }
        if (!isTouched)
            m_failures.push_back({ m_ids[left - 1], (sqlite3_errcode(m_handle) & 0xff) == SQLITE_CONSTRAINT });
        left -= count;
        singlesLeft -= std::min<size_t>(singlesLeft, 1);
    }
    return !isTransactionLost();
}
