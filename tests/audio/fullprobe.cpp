// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/audio/fullprobe.h"

#include "audio/inputfile.h"
#include "audio/mediainput.h"

#include <QFile>
#include <QFileInfo>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace {

QVariantMap failure(MediaInput::Failure value)
{
    return { { QStringLiteral("failure"), int(value) } };
}

// As bits, since the product of an unknown duration is a number as well, and no digit may differ.
QString exactText(double value)
{
    return QString::number(value, 'g', 17);
}

int bitsOf(const AVCodecContext& codec)
{
    if (codec.bits_per_raw_sample > 0)
        return codec.bits_per_raw_sample;
    return codec.bits_per_coded_sample > 0 ? codec.bits_per_coded_sample
                                           : av_get_bytes_per_sample(codec.sample_fmt) * 8;
}

QVariantMap describe(const AVFormatContext& format, const AVStream& stream, const AVCodecContext& codec)
{
    QVariantMap map{ { "format", QString::fromUtf8(format.iformat->name) },
        { "codec", QString::fromUtf8(avcodec_get_name(codec.codec_id)) }, { "sample format", int(codec.sample_fmt) },
        { "rate", codec.sample_rate }, { "channels", codec.ch_layout.nb_channels }, { "bits", bitsOf(codec) },
        { "duration", exactText(av_q2d(stream.time_base) * double(stream.duration)) },
        { "start", qint64(stream.start_time) }, { "samples of a frame", codec.frame_size } };
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(format.metadata, "", entry, AV_DICT_IGNORE_SUFFIX)))
        map.insert(QStringLiteral("text ") + QString::fromUtf8(entry->key), QByteArray(entry->value));
    return map;
}

QVariantMap propertiesOfStream(const AVFormatContext& format, const AVStream& stream)
{
    const AVCodec* decoder = avcodec_find_decoder(stream.codecpar->codec_id);
    if (!decoder)
        return failure(MediaInput::Failure::FindDecoder);
    const CodecContextPointer codec(avcodec_alloc_context3(decoder));
    avcodec_parameters_to_context(codec.get(), stream.codecpar);
    if (avcodec_open2(codec.get(), decoder, nullptr) < 0)
        return failure(MediaInput::Failure::OpenCodec);
    return describe(format, stream, *codec);
}

} // namespace

namespace FullProbe {

QVariantMap properties(const QString& path)
{
    initialiseFfmpeg();
    InputFile file;
    if (file.open(path) < 0)
        return failure(MediaInput::Failure::OpenInput);
    AVFormatContext* context = avformat_alloc_context();
    context->pb = file.context();
    const AVInputFormat* forced = inputFormatForSuffix(QFileInfo(path).suffix());
    if (avformat_open_input(&context, QFile::encodeName(path).constData(), forced, nullptr) < 0)
        return failure(MediaInput::Failure::OpenInput);
    const FormatContextPointer format(context);
    if (avformat_find_stream_info(context, nullptr) < 0)
        return failure(MediaInput::Failure::FindStreamInfo);
    for (unsigned index = 0; index < context->nb_streams; ++index) {
        if (context->streams[index]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
            return propertiesOfStream(*context, *context->streams[index]);
    }
    return failure(MediaInput::Failure::FindAudioStream);
}

QVariantMap propertiesOfInput(const QString& path)
{
    MediaInput input;
    if (!input.open(path))
        return failure(input.failure());
    return describe(*input.formatContext(), *input.stream(), *input.codecContext());
}

} // namespace FullProbe
