// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// What the program asks of the file system besides Qt's own calls: each is one step that happens wholly or not at
/// all, and none copies. Thread: any.
namespace FileSystem {

/// True also for a link that leads nowhere.
bool isNameTaken(const QString& filePath);
/// Whether this process may read the file.
bool isReadable(const QString& filePath);
/// Whether this process may make files in the folder.
bool isWritableFolder(const QString& folderPath);
/// Whether both name one existing file, through whatever links.
bool isSameFile(const QString& firstPath, const QString& secondPath);
/// Renames within a file system; what stood under the new name is replaced.
bool renameReplacing(const QString& filePath, const QString& newPath);
/// Renames within a file system; false when the new name is taken.
bool renameToNew(const QString& filePath, const QString& newPath);
/// A second name for the same file; false where the file system has none, or when the name is taken.
bool addName(const QString& filePath, const QString& secondPath);
/// Makes the names in the file's folder outlast a loss of power.
void syncFolderOf(const QString& filePath);

} // namespace FileSystem
