// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QString>

/// A file that is written beside its place under a name of its own ("<name>.<letters>.part") and gets its own name
/// only when it is whole. Until then it is removed with the object.
///
/// Owner and thread: the stack of the worker that writes it.
class PartialFile final
{
public:
    explicit PartialFile(const QString& targetFilePath);
    /// Removes the file unless it was published.
    ~PartialFile();
    Q_DISABLE_COPY(PartialFile)

    /// Where it is until it gets its name.
    QString filePath() const { return m_file.fileName(); }
    /// Creates the file; false when it cannot be.
    bool open();
    bool write(const char* bytes, qint64 size);
    /// Closes the file, with all its bytes on the disk when `isSynced`; false when it is not whole.
    bool complete(bool isSynced);
    void setPermissions(QFileDevice::Permissions permissions);
    /// Gives the file its name; without `isReplacing` false when the name is taken. After `complete()`.
    bool publish(bool isReplacing);

private:
    const QString m_targetFilePath;
    QFile m_file;
    qint64 m_bytesWritten = 0;
    bool m_isOwned = false;
};
