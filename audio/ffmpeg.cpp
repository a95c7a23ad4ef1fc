// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/ffmpeg.h"

#include <QHash>
#include <QMutex>
#include <QMutexLocker>

#include <array>
#include <mutex>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/error.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
#include <libavutil/mem.h>
#include <libswresample/swresample.h>
}

namespace {

// A size field of a hostile file can ask for gigabytes in one piece; no honest frame, packet or picture comes near
// this.
constexpr size_t largestAllocation = size_t(512) * 1024 * 1024;

using InputFormats = QHash<QString, const AVInputFormat*>;

// Filled once by the set-up and only read afterwards.
InputFormats& inputFormats()
{
    static InputFormats formats;
    return formats;
}

void setUpFfmpeg()
{
    avformat_network_init();
    av_log_set_level(AV_LOG_QUIET);
    av_max_alloc(largestAllocation);
    InputFormats& formats = inputFormats();
    formats.insert(QStringLiteral("mp3"), av_find_input_format("mp3"));
    formats.insert(QStringLiteral("wav"), av_find_input_format("wav"));
    formats.insert(QStringLiteral("aif"), av_find_input_format("aiff"));
    formats.insert(QStringLiteral("aiff"), av_find_input_format("aiff"));
}

} // namespace

void FormatContextDeleter::operator()(AVFormatContext* context) const
{
    avformat_close_input(&context);
}

void CodecContextDeleter::operator()(AVCodecContext* context) const
{
    avcodec_free_context(&context);
}

void FrameDeleter::operator()(AVFrame* frame) const
{
    av_frame_free(&frame);
}

void PacketDeleter::operator()(AVPacket* packet) const
{
    av_packet_free(&packet);
}

void ResamplerDeleter::operator()(SwrContext* resampler) const
{
    swr_free(&resampler);
}

void initialiseFfmpeg()
{
    static std::once_flag once;
    std::call_once(once, setUpFfmpeg);
}

const AVInputFormat* inputFormatForSuffix(const QString& suffix)
{
    const InputFormats& formats = inputFormats();
    return formats.value(suffix.toLower(), nullptr);
}

const AVCodec* decoderForCodec(int codec)
{
    static QMutex mutex;
    static QHash<int, const AVCodec*> decoders;
    const QMutexLocker locker(&mutex);
    const auto known = decoders.constFind(codec);
    if (known != decoders.constEnd())
        return known.value();
    const AVCodec* decoder = avcodec_find_decoder(AVCodecID(codec));
    decoders.insert(codec, decoder);
    return decoder;
}

QString ffmpegErrorText(int errorCode)
{
    std::array<char, 255> text = {};
    av_strerror(errorCode, text.data(), text.size());
    return QString::fromUtf8(text.data());
}
