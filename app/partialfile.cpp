// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/partialfile.h"

#include "app/filesystem.h"

#include <QDir>
#include <QFileInfo>
#include <QUuid>

#include <unistd.h>

namespace {

constexpr int greatestNameSize = 255; // bytes, on the usual file systems

QString partialPath(const QString& targetFilePath)
{
    const QFileInfo target(targetFilePath);
    const QString ending = QUuid::createUuid().toString(QUuid::Id128).left(8) + QLatin1String(".part");
    const QString name = target.fileName() + QLatin1Char('.') + ending;
    const bool fits = QFile::encodeName(name).size() <= greatestNameSize;
    return target.dir().filePath(fits ? name : ending);
}

} // namespace

PartialFile::PartialFile(const QString& targetFilePath)
    : m_targetFilePath(targetFilePath)
    , m_file(partialPath(targetFilePath))
{
}

PartialFile::~PartialFile()
{
    if (m_isOwned)
        m_file.remove();
}

bool PartialFile::open()
{
    m_isOwned = m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered);
    return m_isOwned;
}

bool PartialFile::write(const char* bytes, qint64 size)
{
    m_bytesWritten += size;
    return m_file.write(bytes, size) == size;
}

bool PartialFile::complete(bool isSynced)
{
    if (isSynced && ::fsync(m_file.handle()) != 0)
        return false;
    m_file.close();
    return m_file.error() == QFileDevice::NoError && QFileInfo(m_file.fileName()).size() == m_bytesWritten;
}

void PartialFile::setPermissions(QFileDevice::Permissions permissions)
{
    m_file.setPermissions(permissions);
}

bool PartialFile::publish(bool isReplacing)
{
    const QString path = m_file.fileName();
    const bool isPublished = isReplacing ? FileSystem::renameReplacing(path, m_targetFilePath)
                                         : FileSystem::renameToNew(path, m_targetFilePath);
    m_isOwned = !isPublished;
    if (isPublished)
        FileSystem::syncFolderOf(m_targetFilePath);
    return isPublished;
}
