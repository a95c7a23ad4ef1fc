// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <memory>

class Database;
class OperationReply;

/// One restore: the store's file is replaced by a copy of another, and kept as a safety copy until the new one has been
/// opened.
///
/// The copy is made beside the database, and its pages are read and it is opened there; then it takes the database's
/// place in one step. Whatever happens before, a canceled copy, a full disk or a killed program, the previous database
/// stands where it stood. It is never removed unless the new one is open. A change that was not finished in the source
/// is rolled back in the copy.
///
/// Errors besides those of `copyFile()`: "The database cannot be restored from itself: %1", "Database file is in use:
/// %1", "Unable to make safety copy: %1".
///
/// Owner: the command, on its stack. Thread: GUI.
class DatabaseRestore final
{
public:
    enum class Outcome
    {
        /// The store is open with the restored file.
        Restored,
        /// The file was not copied, as the reply has told; the store is open again as it was before.
        NotCopied,
        /// The copy cannot take the database's place; see `errorText()`. The store is open again as it was before.
        Failed
    };

    explicit DatabaseRestore(Database& database);
    /// Ends as `end(false)` does.
    ~DatabaseRestore();
    Q_DISABLE_COPY(DatabaseRestore)

    /// Closes the store, makes the safety copy and starts the copy; the reply is the caller's. Call once.
    OperationReply* start(const QString& sourceFilePath);
    /// After the end of the reply: `isCopied` tells whether it ended without an error. Puts the copy in the database's
    /// place and opens the store. Whether it is open is then `Database::isOpened()`, and why not its `lastError()`.
    Outcome end(bool isCopied);
    /// Why the restore failed; also where the previous database is when it could not be put back.
    QString errorText() const { return m_errorText; }

private:
    bool opens(const QString& filePath);
    bool isSound();
    bool makeSafetyCopy();
    bool replaceDatabase();
    void putSafetyCopyBack();
    void tidyUp(bool isRestored);

    Database& m_database;
    // Through links: the file itself is replaced, not a link to it.
    QString m_databaseFilePath;
    QString m_sourceFilePath;
    QString m_safetyCopyPath;
    QString m_stagingPath;
    QString m_errorText;
    // What is wrong with the copy's pages; written by the worker before the reply ends.
    const std::shared_ptr<QString> m_damage = std::make_shared<QString>();
    bool m_isClosed = false;
    bool m_hasSafetyCopy = false;
};
