// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/tablepass.h"

#include "store/sqlitestatement.h"

#include <sqlite3.h>

namespace {

const char* const functionName = "visitRow";

using Step = void (*)(sqlite3_context*, int, sqlite3_value**);
using End = void (*)(sqlite3_context*);

// An aggregate function of a connection: called for each row, it gives one row in all.
class AggregateFunction final
{
public:
    AggregateFunction(sqlite3* handle, int argumentsCount, void* data, Step step, End end)
        : m_handle(handle)
        , m_argumentsCount(argumentsCount)
        , m_isThere(set(data, step, end))
    {
    }
    ~AggregateFunction() { set(nullptr, nullptr, nullptr); }
    Q_DISABLE_COPY(AggregateFunction)

    bool isThere() const { return m_isThere; }

private:
    bool set(void* data, Step step, End end)
    {
        return sqlite3_create_function_v2(m_handle, functionName, m_argumentsCount, SQLITE_UTF8 | SQLITE_DIRECTONLY,
                   data, nullptr, step, end, nullptr)
            == SQLITE_OK;
    }

    sqlite3* m_handle;
    int m_argumentsCount;
    bool m_isThere;
};

} // namespace

qint64 TablePass::Row::integer(int column) const
{
    return sqlite3_value_int64(m_values[column]);
}

bool TablePass::Row::isText(int column) const
{
    return sqlite3_value_type(m_values[column]) == SQLITE_TEXT;
}

std::string_view TablePass::Row::text(int column) const
{
    const auto* bytes = static_cast<const char*>(static_cast<const void*>(sqlite3_value_text(m_values[column])));
    return bytes == nullptr ? std::string_view()
                            : std::string_view(bytes, size_t(sqlite3_value_bytes(m_values[column])));
}

TablePass::TablePass(sqlite3* handle, QString tableName, QStringList columns)
    : m_handle(handle)
    , m_tableName(std::move(tableName))
    , m_columns(std::move(columns))
{
}

bool TablePass::run(const Visitor& visitor)
{
    State state{ &visitor, nullptr };
    const AggregateFunction function(m_handle, m_columns.size(), &state, &TablePass::visit, &TablePass::finish);
    // Only the table itself is in the order of the row ids.
    SqliteStatement statement(m_handle,
        QStringLiteral("SELECT %1(%2) FROM %3 NOT INDEXED")
            .arg(QLatin1String(functionName), m_columns.join(QLatin1String(", ")), m_tableName));
    const bool isComplete = function.isThere() && statement.next();
    if (state.exception)
        std::rethrow_exception(state.exception);
    return isComplete;
}

// No exception may pass through SQLite.
void TablePass::visit(sqlite3_context* context, int /*count*/, sqlite3_value** values)
{
    auto& state = *static_cast<State*>(sqlite3_user_data(context));
    bool isGoingOn = false;
    try {
        isGoingOn = (*state.visitor)(Row(values));
    } catch (...) {
        state.exception = std::current_exception();
    }
    if (!isGoingOn)
        sqlite3_result_error_code(context, SQLITE_ABORT);
}

void TablePass::finish(sqlite3_context* context)
{
    sqlite3_result_null(context);
}
