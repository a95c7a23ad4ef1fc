// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/database.h"

#include <QString>
#include <QThread>

#include <memory>

/// The store on its thread: started together, ended together.
///
/// Owner: the main window. Thread: GUI.
class DatabaseSession final
{
public:
    /// Makes the store and starts its thread; opens nothing yet.
    explicit DatabaseSession(const QString& databaseFilePath);
    /// Ends as `end()` does.
    ~DatabaseSession();
    Q_DISABLE_COPY(DatabaseSession)

    Database* database() const { return m_database.get(); }
    /// False once `end()` was called.
    bool isRunning() const { return m_thread.isRunning(); }
    /// Closes the store, behind all operations requested so far, and waits for its thread to end. Later operations end
    /// at once with an error.
    void end();

private:
    QThread m_thread;
    std::unique_ptr<Database> m_database;
};

/// Moves a database file that cannot be opened into a new folder "Backup/<time>" beside it; false when it cannot be
/// moved. Thread: GUI.
bool moveDatabaseToBackup(const QString& databaseFilePath);
