// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <exception>
#include <functional>
#include <string_view>

struct sqlite3;
struct sqlite3_context;
struct sqlite3_value;

/// One pass over a whole table within a single step of a statement: SQLite calls for each row, in the order of the row
/// ids. A million rows with two texts take about three fifths of what they do row by row, since neither a step nor a
/// lock of the connection comes with each of them.
///
/// Owner: the stack of one operation. Thread: that of the connection.
class TablePass final
{
public:
    /// The columns of the current row, numbered from 0; valid during the call only.
    class Row final
    {
    public:
        qint64 integer(int column) const;
        /// To be asked before `text()`, which makes a text of the value.
        bool isText(int column) const;
        /// UTF-8 as stored.
        std::string_view text(int column) const;

    private:
        friend class TablePass;
        explicit Row(sqlite3_value** values)
            : m_values(values)
        {
        }

        sqlite3_value** m_values;
    };

    /// False ends the pass. What it throws comes out of `run()`. No statement may be run in it.
    using Visitor = std::function<bool(const Row&)>;

    TablePass(sqlite3* handle, QString tableName, QStringList columns);

    /// False when the visitor ended the pass, or something failed.
    bool run(const Visitor& visitor);

private:
    struct State
    {
        const Visitor* visitor = nullptr;
        std::exception_ptr exception;
    };

    static void visit(sqlite3_context* context, int count, sqlite3_value** values);
    static void finish(sqlite3_context* context);

    sqlite3* m_handle;
    QString m_tableName;
    QStringList m_columns;
};
