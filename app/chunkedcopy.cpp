// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/chunkedcopy.h"

#include "app/partialfile.h"

#include <QFile>
#include <QFileInfo>

namespace {

constexpr size_t chunkSize = 10485760;

// They tell what this process may do, which for the superuser is more than what the file says of its owner.
const auto permissionsOfThisUser = QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser;

using Outcome = ChunkedCopy::Outcome;

Outcome copyBytes(QFile& source, PartialFile& target, std::vector<char>& buffer, const ChunkedCopy::Watch& watch)
{
    const qint64 size = source.size();
    qint64 position = 0;
    for (;;) {
        if (watch.isCanceled())
            return Outcome::Canceled;
        const qint64 count = source.read(buffer.data(), qint64(buffer.size()));
        if (count < 0)
            return Outcome::SourceNotRead;
        if (count == 0)
            break;
        if (!target.write(buffer.data(), count))
            return Outcome::TargetNotWritten;
        position += count;
        if (watch.progress)
            watch.progress(position, size);
    }
    // It was cut or has grown meanwhile: the copy is of no state that the source ever had.
    return position == size ? Outcome::Copied : Outcome::SourceNotRead;
}

} // namespace

ChunkedCopy::ChunkedCopy(const Watch& watch, const Options& options)
    : m_watch(watch)
    , m_options(options)
    , m_buffer(chunkSize)
{
}

Outcome ChunkedCopy::copy(const QString& sourceFilePath, const QString& targetFilePath)
{
    QFile source(sourceFilePath);
    // A pipe could be waited for without end.
    if (!QFileInfo(sourceFilePath).isFile() || !source.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return Outcome::SourceNotOpened;
    PartialFile target(targetFilePath);
    if (QFileInfo(targetFilePath).isDir() || !target.open())
        return Outcome::TargetNotOpened;
    const Outcome outcome = copyBytes(source, target, m_buffer, m_watch);
    if (outcome != Outcome::Copied)
        return outcome;
    if (!target.complete(m_options.isSynced))
        return Outcome::TargetNotWritten;
    if (m_options.hasPermissionsOfSource)
        target.setPermissions(source.permissions() & ~permissionsOfThisUser);
    if (m_watch.isAccepted && !m_watch.isAccepted(target.filePath()))
        return Outcome::NotAccepted;
    if (m_watch.isCanceled())
        return Outcome::Canceled;
    return target.publish(m_options.isReplacing) ? Outcome::Copied : Outcome::TargetNotWritten;
}
