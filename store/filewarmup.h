// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QFuture>
#include <QString>

#include <atomic>

/// Reads one file to its end in the background, so that the operating system has it in its cache.
///
/// The handle stays open until the next start or the end: to close any handle of a file gives up all the locks that the
/// process holds on it (POSIX, fcntl), those of a transaction too.
///
/// Owner: the store, which starts it while no transaction is under way, and outlives its connection. Thread: one thread
/// at a time; the reading runs on the global thread pool with a file handle of its own. A file that cannot be opened
/// ends it silently.
class FileWarmUp final
{
public:
    FileWarmUp() = default;
    /// Stops the reading.
    ~FileWarmUp();
    Q_DISABLE_COPY(FileWarmUp)

    /// Stops an earlier reading and starts one of this file.
    void start(const QString& filePath);
    /// Returns when the reading has ended, at the latest after the block (10 MiB) that is being read.
    void stop();
    /// Returns when the file has been read.
    void waitForFinished();
    /// The bytes read since the last start.
    qint64 bytesRead() const { return m_bytesRead; }

private:
    void read();

    // Of the reading, as long as it runs.
    QFile m_file;
    std::atomic<bool> m_stopRequested{ false };
    std::atomic<qint64> m_bytesRead{ 0 };
    QFuture<void> m_reading;
};
