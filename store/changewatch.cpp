// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/changewatch.h"

#include "store/sqlitestatement.h"

#include <sqlite3.h>

namespace {

// Beyond as many, reading all again is about as quick.
constexpr size_t greatestChangesCount = 2000;

} // namespace

ChangeWatch::ChangeWatch(sqlite3* handle)
    : m_handle(handle)
    , m_settledChanges(sqlite3_total_changes64(handle))
{
    sqlite3_update_hook(m_handle, noteChange, this);
}

ChangeWatch::~ChangeWatch()
{
    sqlite3_update_hook(m_handle, nullptr, nullptr);
}

void ChangeWatch::setTable(const QByteArray& name)
{
    m_tableName = name;
}

ChangeWatch::Verdict ChangeWatch::ask()
{
    SqliteStatement cursor(m_handle, QStringLiteral("PRAGMA data_version"));
    if (!cursor.next())
        return Verdict::Unknown;
    m_askedVersion = cursor.integer(0);
    const bool areAllNoted = sqlite3_total_changes64(m_handle) - m_settledChanges == m_notedChanges;
    if (m_askedVersion != m_settledVersion || !areAllNoted || m_hasTooManyChanges)
        return Verdict::Anything;
    return m_changedRows.empty() ? Verdict::Nothing : Verdict::Rows;
}

void ChangeWatch::settle()
{
    m_settledVersion = m_askedVersion;
    m_settledChanges = sqlite3_total_changes64(m_handle);
    m_notedChanges = 0;
    m_hasTooManyChanges = false;
    m_changedRows.clear();
}

// Called by SQLite in the middle of a statement, for each row of an ordinary table: no statement may be run here.
void ChangeWatch::noteChange(
    void* watch, int /*operation*/, const char* /*database*/, const char* table, long long rowId)
{
    auto& self = *static_cast<ChangeWatch*>(watch);
    ++self.m_notedChanges;
    if (self.m_hasTooManyChanges || self.m_tableName != table)
        return;
    if (self.m_changedRows.size() < greatestChangesCount)
        self.m_changedRows.push_back(rowId);
    else
        self.m_hasTooManyChanges = true;
}
