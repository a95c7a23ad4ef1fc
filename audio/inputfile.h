// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QString>

#include <atomic>
#include <cstdint>
#include <memory>

struct AVIOContext;

struct IoContextDeleter
{
    void operator()(AVIOContext* context) const;
};

/// A regular file as FFmpeg reads it.
///
/// Only a limited number of bytes can be read at a stretch; behind them the file seems to end. Otherwise a file of
/// gigabytes whose sound is followed by nothing but empty chunks or zeros would be walked through to its end. The limit
/// is that of looking for the format and the streams, until `allow()` sets another one.
///
/// Owner: one media input, which must outlive FFmpeg's use of `context()`. Thread: one at a time.
class InputFile final
{
public:
    InputFile();
    ~InputFile();
    Q_DISABLE_COPY(InputFile)

    /// 0, or FFmpeg's code of the error. Neither pipes nor devices are opened, nor does it wait for one.
    int open(const QString& path);
    /// From now on so many bytes can be read.
    void allow(qint64 bytes) { m_bytesLeft = bytes; }
    bool isUsedUp() const { return m_bytesLeft <= 0; }
    /// From now on the file seems to end where it is read. Thread: any.
    void interrupt() { m_isInterrupted = true; }
    /// What stands at a place of the file, without any effect on what FFmpeg reads next: how many bytes there were. An
    /// interrupted file has none.
    int peek(qint64 offset, std::uint8_t* buffer, int size) const;
    /// Bytes, as they were when the file was opened.
    qint64 size() const { return m_size; }
    AVIOContext* context() const { return m_context.get(); }

private:
    static int readPacket(void* file, std::uint8_t* buffer, int size);
    static std::int64_t seekTo(void* file, std::int64_t offset, int whence);

    int read(std::uint8_t* buffer, int size);
    std::int64_t seek(std::int64_t offset, int whence);

    QFile m_file;
    qint64 m_size = 0;
    qint64 m_position = 0;
    qint64 m_bytesLeft;
    std::atomic<bool> m_isInterrupted = false;
    std::unique_ptr<AVIOContext, IoContextDeleter> m_context;
};
