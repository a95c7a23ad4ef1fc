// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <memory>

class Database;
class OperationReply;

/// One backup: the store is closed, its file copied to another, and the store opened again.
///
/// A file of the chosen name is replaced in one step, once the new backup is whole; until then, and when the backup
/// fails, is canceled or killed, it stays as it was. A damaged database never takes the place of a file, which may be
/// the last good backup; under a new name it is copied as it is, for whoever can still save something of it.
///
/// Errors besides those of `copyFile()`: "The database cannot be its own backup: %1", "Database file is in use: %1",
/// "The database is damaged, and the existing file was not replaced: %1".
///
/// Owner: the command, on its stack. Thread: GUI.
class DatabaseBackup final
{
public:
    explicit DatabaseBackup(Database& database);
    /// Ends as `end()` does.
    ~DatabaseBackup();
    Q_DISABLE_COPY(DatabaseBackup)

    /// Closes the store and starts the copy; the reply is the caller's. Call once.
    OperationReply* start(const QString& targetFilePath);
    /// After the end of the reply: opens the store again. False when it cannot be opened; see `Database::lastError()`.
    bool end();
    /// After the end of the reply: what is wrong with the database that was copied; empty when nothing is.
    QString damage() const { return *m_damage; }

private:
    Database& m_database;
    // Written by the worker before the reply ends.
    const std::shared_ptr<QString> m_damage = std::make_shared<QString>();
    bool m_isClosed = false;
};
