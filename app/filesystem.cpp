// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filesystem.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool isNameTakenAt(const QByteArray& path)
{
    struct stat status = {};
    return ::lstat(path.constData(), &status) == 0;
}

// With the rights that an opening would have, which are not always those of the user who started the program.
bool isAllowed(const QString& path, int mode)
{
    return ::faccessat(AT_FDCWD, QFile::encodeName(path).constData(), mode, AT_EACCESS) == 0;
}

} // namespace

bool FileSystem::isNameTaken(const QString& filePath)
{
    return isNameTakenAt(QFile::encodeName(filePath));
}

bool FileSystem::isReadable(const QString& filePath)
{
    return isAllowed(filePath, R_OK);
}

bool FileSystem::isWritableFolder(const QString& folderPath)
{
    return QFileInfo(folderPath).isDir() && isAllowed(folderPath, W_OK | X_OK);
}

bool FileSystem::isSameFile(const QString& firstPath, const QString& secondPath)
{
    struct stat first = {};
    struct stat second = {};
    return ::stat(QFile::encodeName(firstPath).constData(), &first) == 0
        && ::stat(QFile::encodeName(secondPath).constData(), &second) == 0 && first.st_dev == second.st_dev
        && first.st_ino == second.st_ino;
}

bool FileSystem::renameReplacing(const QString& filePath, const QString& newPath)
{
    return ::rename(QFile::encodeName(filePath).constData(), QFile::encodeName(newPath).constData()) == 0;
}

bool FileSystem::renameToNew(const QString& filePath, const QString& newPath)
{
    const QByteArray from = QFile::encodeName(filePath);
    const QByteArray to = QFile::encodeName(newPath);
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return true;
    // File systems that cannot promise it in one step.
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    return !isNameTakenAt(to) && ::rename(from.constData(), to.constData()) == 0;
}

bool FileSystem::addName(const QString& filePath, const QString& secondPath)
{
    return ::link(QFile::encodeName(filePath).constData(), QFile::encodeName(secondPath).constData()) == 0;
}

void FileSystem::syncFolderOf(const QString& filePath)
{
    const QByteArray folder = QFile::encodeName(QFileInfo(filePath).absolutePath());
    const int handle = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0)
        return;
    ::fsync(handle);
    ::close(handle);
}
