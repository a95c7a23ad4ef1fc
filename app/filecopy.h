// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class OperationReply;

/// Copies that run on the global thread pool and report through a reply, which the caller owns. A copy gets its name
/// only when it is whole and its size is that of its source; a canceled or failed one leaves nothing. Thread: GUI.

/// What becomes of a file that has the name of the copy already.
enum class ExistingTarget
{
    Refuse,
    /// It stays until the copy is whole, and is replaced in one step.
    Replace
};

/// Looks at a copy that is whole but has not got its name yet, in the worker's thread. The text that it returns, unless
/// it is empty, is the error with which the copy ends.
using CopyCheck = std::function<QString(const QString& filePath)>;

/// A reply of an operation that has failed before it began.
OperationReply* failedReply(const QString& errorText);

/// Copies one file, with its bytes as progress; of a file too large for that, in the unit that the reply tells. Makes
/// the target's folder.
///
/// Errors: "Source file not exists: %1", "Target file already exists: %1", "Unable to open source file for reading:
/// %1", "Unable to open target file for writing: %1", "Unable to read source file: %1", "Unable to write target file:
/// %1", "Canceled", the text of the check.
OperationReply* copyFile(const QString& sourceFilePath, const QString& targetFilePath,
    ExistingTarget existingTarget = ExistingTarget::Refuse, const CopyCheck& check = {});

/// Copies files into a folder under their own names, with the number of copied files as progress. A file that cannot
/// be copied is a warning. Canceled, it removes what it has copied so far, and nothing else.
///
/// Warnings: "Invalid source file: %1", "Target file with the same name exists: %1", "Unable to copy file: %1", "Unable
/// to remove copied file: %1". Errors: "Source file paths list is empty", "Target directory is not valid: %1",
/// "Canceled".
OperationReply* copyFiles(const QStringList& sourceFilePaths, const QString& targetFolderPath);
