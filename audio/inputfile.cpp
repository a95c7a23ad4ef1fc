// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/inputfile.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

extern "C" {
#include <libavformat/avio.h>
#include <libavutil/error.h>
#include <libavutil/mem.h>
}

namespace {

// FFmpeg reads up to 5 MB of sound to find the streams; before that come tags, with their pictures. Bytes that it reads
// again count again: a search that its buffer does not hold would fill the whole buffer anew at each step.
constexpr qint64 bytesOfOpening = 64 * 1024 * 1024;

// FFmpeg tries each byte of the 64 KB behind a tag for the first frame of an MPEG file. While a read leaves room in the
// buffer it adds to the buffer, so that the search steps back in memory.
constexpr int bufferSize = 128 * 1024;
constexpr int largestRead = 32 * 1024;

int errorOfType(const struct stat& status)
{
    if (S_ISDIR(status.st_mode))
        return AVERROR(EISDIR);
    return S_ISREG(status.st_mode) ? 0 : AVERROR(EINVAL);
}

} // namespace

void IoContextDeleter::operator()(AVIOContext* context) const
{
    // FFmpeg may have replaced the buffer that the context was made with.
    av_freep(&context->buffer);
    avio_context_free(&context);
}

InputFile::InputFile()
    : m_bytesLeft(bytesOfOpening)
{
}

InputFile::~InputFile() = default;

int InputFile::open(const QString& path)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        return AVERROR(errno);
    struct stat status = {};
    const int statusResult = ::fstat(descriptor, &status) < 0 ? AVERROR(errno) : errorOfType(status);
    if (statusResult < 0) {
        ::close(descriptor);
        return statusResult;
    }
    if (!m_file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle)) {
        ::close(descriptor);
        return AVERROR(EIO);
    }
    m_size = status.st_size;
    auto* buffer = static_cast<unsigned char*>(av_malloc(bufferSize));
    if (!buffer)
        return AVERROR(ENOMEM);
    m_context.reset(
        avio_alloc_context(buffer, bufferSize, 0, this, &InputFile::readPacket, nullptr, &InputFile::seekTo));
    if (!m_context)
        av_free(buffer);
    return m_context ? 0 : AVERROR(ENOMEM);
}

int InputFile::peek(qint64 offset, std::uint8_t* buffer, int size) const
{
    if (m_isInterrupted)
        return 0;
    return std::max(0, int(::pread(m_file.handle(), buffer, size_t(size), offset)));
}

int InputFile::readPacket(void* file, std::uint8_t* buffer, int size)
{
    return static_cast<InputFile*>(file)->read(buffer, size);
}

std::int64_t InputFile::seekTo(void* file, std::int64_t offset, int whence)
{
    return static_cast<InputFile*>(file)->seek(offset, whence);
}

int InputFile::read(std::uint8_t* buffer, int size)
{
    const qint64 wanted = std::min<qint64>(std::min(size, largestRead), m_bytesLeft);
    if (wanted <= 0 || m_isInterrupted)
        return AVERROR_EOF;
    const ssize_t count = ::pread(m_file.handle(), buffer, size_t(wanted), m_position);
    if (count < 0)
        return AVERROR(errno);
    if (count == 0)
        return AVERROR_EOF;
    m_position += count;
    m_bytesLeft -= count;
    return int(count);
}

std::int64_t InputFile::seek(std::int64_t offset, int whence)
{
    // FFmpeg asks for the size at each chunk, so neither this nor a change of position is a call into the system.
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return m_size;
    case SEEK_SET:
        break;
    case SEEK_CUR:
        offset += m_position;
        break;
    case SEEK_END:
        offset += m_size;
        break;
    default:
        return AVERROR(EINVAL);
    }
    if (offset < 0)
        return AVERROR(EINVAL);
    m_position = offset;
    return m_position;
}
