// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <functional>

/// Wildcards of the files that a folder is searched for.
const QStringList& mediaFileFilters();

/// Lists the files behind `paths`, breadth first: files named directly, whatever their suffix, then the contents of
/// folders level by level, in the order in which the system lists them.
///
/// From folders come regular files that match one of `filters` (wildcards, in any case) and the contents of all
/// subfolders; names that begin with "." are passed over. Given paths are made absolute and clean; nothing is listed
/// once only. Links are followed, save into a folder that lies above the link on the way to it. A path that does not
/// exist gives nothing. A folder that cannot be read, or not to its end, gives a warning in the log, and its path is
/// appended to `unreadFolders`.
///
/// `isCanceled` is asked before each entry; once it returns true the list ends where it is. Thread: any.
QStringList listMediaFiles(const QStringList& paths, const QStringList& filters,
    const std::function<bool()>& isCanceled = {}, QStringList* unreadFolders = nullptr);
