// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/mediainput.h"

#include "audio/inputfile.h"

#include <QChar>
#include <QFile>
#include <QFileInfo>

#include <cerrno>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/error.h>
#include <libavutil/samplefmt.h>
}

namespace {

// What a file holds is in that file: neither another one nor the network is opened on its behalf.
int refuseOtherFile(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**)
{
    return AVERROR(EPERM);
}

QString decodedText(const char* text)
{
    return QString::fromUtf8(text).remove(QChar(QChar::ReplacementCharacter));
}

} // namespace

MediaInput::MediaInput() = default;
MediaInput::~MediaInput() = default;
MediaInput::MediaInput(MediaInput&& other) noexcept = default;

MediaInput& MediaInput::operator=(MediaInput&& other) noexcept
{
    if (this == &other)
        return *this;
    // The old context goes before the file that it reads from.
    m_codec = std::move(other.m_codec);
    m_format = std::move(other.m_format);
    m_file = std::move(other.m_file);
    m_streamIndex = other.m_streamIndex;
    m_failure = other.m_failure;
    m_errorText = other.m_errorText;
    return *this;
}

bool MediaInput::open(const QString& path)
{
    Q_ASSERT(!isOpen());
    initialiseFfmpeg();
    m_failure = Failure::None;
    m_errorText.clear();
    if (!openFile(path) || !findAudioStream() || !openDecoder()) {
        close();
        return false;
    }
    m_file->liftLimit();
    return true;
}

void MediaInput::close()
{
    m_codec.reset();
    m_format.reset();
    m_file.reset();
    m_streamIndex = -1;
}

void MediaInput::interrupt()
{
    if (m_file)
        m_file->interrupt();
}

bool MediaInput::isOpen() const
{
    return m_codec != nullptr;
}

bool MediaInput::openFile(const QString& path)
{
    m_file = std::make_unique<InputFile>();
    if (const int result = m_file->open(path); result < 0)
        return fail(Failure::OpenInput, result);
    AVFormatContext* context = avformat_alloc_context();
    if (!context)
        return fail(Failure::OpenInput, AVERROR(ENOMEM));
    context->pb = m_file->context();
    context->io_open = &refuseOtherFile;
    const AVInputFormat* format = inputFormatForSuffix(QFileInfo(path).suffix());
    // On failure the call frees the context that it was given.
    const int result = avformat_open_input(&context, QFile::encodeName(path).constData(), format, nullptr);
    if (result < 0)
        return fail(Failure::OpenInput, result);
    m_format.reset(context);
    return true;
}

bool MediaInput::findAudioStream()
{
    if (const int result = avformat_find_stream_info(m_format.get(), nullptr); result < 0)
        return fail(Failure::FindStreamInfo, result);
    for (unsigned index = 0; index < m_format->nb_streams; ++index) {
        if (m_format->streams[index]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO) {
            m_streamIndex = int(index);
            return true;
        }
    }
    return fail(Failure::FindAudioStream);
}

bool MediaInput::openDecoder()
{
    const AVCodecParameters* parameters = stream()->codecpar;
    const AVCodec* decoder = avcodec_find_decoder(parameters->codec_id);
    if (!decoder)
        return fail(Failure::FindDecoder);
    CodecContextPointer codec(avcodec_alloc_context3(decoder));
    if (!codec)
        return fail(Failure::OpenCodec, AVERROR(ENOMEM));
    if (const int result = avcodec_parameters_to_context(codec.get(), parameters); result < 0)
        return fail(Failure::OpenCodec, result);
    codec->pkt_timebase = stream()->time_base;
    if (const int result = avcodec_open2(codec.get(), decoder, nullptr); result < 0)
        return fail(Failure::OpenCodec, result);
    m_codec = std::move(codec);
    return true;
}

bool MediaInput::fail(Failure failure, int errorCode)
{
    m_failure = failure;
    m_errorText = errorCode < 0 ? ffmpegErrorText(errorCode) : QString();
    return false;
}

QString MediaInput::formatName() const
{
    return QString::fromUtf8(m_format->iformat->name).toLower();
}

int MediaInput::sampleRate() const
{
    return m_codec->sample_rate;
}

int MediaInput::channelsCount() const
{
    return m_codec->ch_layout.nb_channels;
}

int MediaInput::bitsPerSample() const
{
    if (m_codec->bits_per_raw_sample >= 1)
        return m_codec->bits_per_raw_sample;
    if (m_codec->bits_per_coded_sample >= 1)
        return m_codec->bits_per_coded_sample;
    return av_get_bytes_per_sample(m_codec->sample_fmt) * 8;
}

double MediaInput::duration() const
{
    const AVRational timeBase = stream()->time_base;
    return double(timeBase.num) / double(timeBase.den) * double(stream()->duration);
}

QVector<QPair<QString, QString>> MediaInput::metadata() const
{
    QVector<QPair<QString, QString>> entries;
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(m_format->metadata, "", entry, AV_DICT_IGNORE_SUFFIX)))
        entries.append({ QString::fromUtf8(entry->key).toLower(), decodedText(entry->value) });
    return entries;
}

const AVStream* MediaInput::stream() const
{
    return m_format->streams[m_streamIndex];
}
