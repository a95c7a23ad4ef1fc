// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/sqlitestatement.h"

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <sqlite3.h>

sqlite3* sqliteHandle(const QSqlDatabase& connection)
{
    const QVariant handle = connection.driver()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return nullptr;
    // A driver may bring an SQLite of its own, whose handles another one must not touch.
    QSqlQuery query(connection);
    if (!query.exec(QStringLiteral("SELECT sqlite_source_id()")) || !query.next())
        return nullptr;
    const bool isSame = query.value(0).toString() == QLatin1String(sqlite3_sourceid());
    return isSame ? *static_cast<sqlite3* const*>(handle.constData()) : nullptr;
}

SqliteStatement::SqliteStatement(sqlite3* handle, const QString& statement)
{
    const QByteArray text = statement.toUtf8();
    m_hasFailed = sqlite3_prepare_v2(handle, text.constData(), text.size(), &m_statement, nullptr) != SQLITE_OK;
}

SqliteStatement::~SqliteStatement()
{
    sqlite3_finalize(m_statement);
}

void SqliteStatement::bind(int place, qint64 value)
{
    if (m_hasFailed)
        return;
    finish();
    m_hasFailed = sqlite3_bind_int64(m_statement, place, value) != SQLITE_OK;
}

void SqliteStatement::bind(int place, const QVariant& value)
{
    if (m_hasFailed)
        return;
    finish();
    int result = SQLITE_OK;
    if (value.isNull()) {
        result = sqlite3_bind_null(m_statement, place);
    } else if (value.userType() == QMetaType::QString) {
        m_texts.resize(std::max(m_texts.size(), size_t(place)));
        QByteArray& text = m_texts[size_t(place) - 1];
        text = value.toString().toUtf8();
        result = sqlite3_bind_text(m_statement, place, text.constData(), text.size(), SQLITE_STATIC);
    } else if (value.userType() == QMetaType::Double) {
        result = sqlite3_bind_double(m_statement, place, value.toDouble());
    } else {
        result = sqlite3_bind_int64(m_statement, place, value.toLongLong());
    }
    m_hasFailed = result != SQLITE_OK;
}

int SqliteStatement::run()
{
    next();
    const int changedRows = m_hasFailed ? -1 : sqlite3_changes(sqlite3_db_handle(m_statement));
    finish();
    return changedRows;
}

void SqliteStatement::finish()
{
    if (m_isRunning)
        sqlite3_reset(m_statement);
    m_isRunning = false;
}

bool SqliteStatement::next()
{
    if (m_hasFailed)
        return false;
    m_isRunning = true;
    const int result = sqlite3_step(m_statement);
    m_hasFailed = result != SQLITE_ROW && result != SQLITE_DONE;
    return result == SQLITE_ROW;
}

qint64 SqliteStatement::integer(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

bool SqliteStatement::isText(int column) const
{
    return sqlite3_column_type(m_statement, column) == SQLITE_TEXT;
}

std::string_view SqliteStatement::text(int column) const
{
    const auto* bytes = static_cast<const char*>(static_cast<const void*>(sqlite3_column_text(m_statement, column)));
    return bytes == nullptr ? std::string_view()
                            : std::string_view(bytes, size_t(sqlite3_column_bytes(m_statement, column)));
}
