// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class Database;

/// The files that make up a catalogue or were left beside it. Thread: any; the catalogue is closed.
namespace DatabaseFiles {

/// The file itself where the path is a link to it.
QString fileBehindLinks(const QString& filePath);

/// Whether the path is the catalogue's file, under whatever name, or one that SQLite keeps beside it.
bool isPartOfDatabase(const QString& path, const QString& databaseFilePath);
/// The same for the file of a store; false without a store.
bool isPartOfDatabase(const QString& path, const Database* database);
/// Whether SQLite's files stand beside the catalogue: then another program has it open, or changed it and died, and
/// its file alone is not whole.
bool hasCompanions(const QString& databaseFilePath);
/// The journal that SQLite keeps beside a catalogue while it changes it.
QString journalPath(const QString& databaseFilePath);
/// Whether a part of what was written is not in the file yet, and cannot be told from it.
bool hasWriteAheadLog(const QString& databaseFilePath);
/// Removes a catalogue's file and what SQLite keeps beside it.
void remove(const QString& databaseFilePath);

/// Where a restore keeps the catalogue that it replaces: "<file>.<time>.backup".
QString safetyCopyPath(const QString& databaseFilePath, const QString& time);
/// Where a restore puts the new catalogue until it was seen to open: "<file>.<time>.restoring".
QString stagingPath(const QString& databaseFilePath, const QString& time);

/// Tidies up after a restore whose program was killed, before the catalogue is opened: puts the last safety copy back
/// when there is no catalogue, removes what was not restored to the end and safety copies that are the catalogue
/// itself. A safety copy of another catalogue stays.
void recoverFromInterruptedRestore(const QString& databaseFilePath);

} // namespace DatabaseFiles
