// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/timestampindexes.h"

#include "store/sqlitestatement.h"

#include <algorithm>

namespace {

// Those that come of themselves, for what is unique, have no text and cannot be dropped.
const QString selectStatement = QStringLiteral(
    "SELECT name, sql FROM sqlite_master WHERE type='index' AND tbl_name='%1' AND sql IS NOT NULL AND rowid >= "
    "(SELECT MIN(known.rowid) FROM sqlite_master AS known, pragma_index_info(known.name) AS part "
    "WHERE known.type='index' AND known.tbl_name='%1' AND known.sql IS NOT NULL AND part.name='scanTimestamp') "
    "ORDER BY rowid");

const QString dropStatement = QStringLiteral("DROP INDEX \"%1\"");

bool run(sqlite3* handle, const QString& statement)
{
    return SqliteStatement(handle, statement).run() >= 0;
}

QString toString(std::string_view text)
{
    return QString::fromUtf8(text.data(), int(text.size()));
}

} // namespace

TimestampIndexes::TimestampIndexes(sqlite3* handle, const QString& tableName)
    : m_handle(handle)
    , m_tableName(tableName)
{
}

void TimestampIndexes::drop(const std::function<bool()>& isCanceled)
{
    for (const Index& index : read()) {
        QString name = index.name;
        if (isCanceled() || !run(m_handle, dropStatement.arg(name.replace('"', QLatin1String("\"\"")))))
            return;
        m_dropped.push_back(index);
    }
}

bool TimestampIndexes::create(const std::function<bool()>& isCanceled)
{
    return std::all_of(m_dropped.begin(), m_dropped.end(),
        [&](const Index& index) { return !isCanceled() && run(m_handle, index.creation); });
}

std::vector<TimestampIndexes::Index> TimestampIndexes::read() const
{
    std::vector<Index> indexes;
    SqliteStatement statement(m_handle, selectStatement.arg(m_tableName));
    while (statement.next())
        indexes.push_back({ toString(statement.text(0)), toString(statement.text(1)) });
    return indexes;
}
