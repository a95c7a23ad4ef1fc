// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/mediainput.h"

#include "audio/disguisedsound.h"
#include "audio/inputfile.h"
#include "audio/mpegframewalk.h"
#include "audio/mpegseekindex.h"

#include <QChar>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <optional>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/error.h>
#include <libavutil/mathematics.h>
#include <libavutil/samplefmt.h>
}

namespace {

// Hz. No sound has more; FFmpeg corrects the duration of damaged files that claim so.
constexpr int highestTrustedRate = 1000000;

// Bytes that hold as many frames of MPEG audio as FFmpeg looks at, at most rates.
constexpr int frameLookSize = 64 * 1024;

// Milliseconds that are read before a place, so that a codec whose frames build upon earlier ones has got them.
constexpr qint64 seekLead = 500;

// Bytes without a frame among them, behind which a file seems to end: more than a tag with its pictures has that stands
// between two joined recordings, and read through in less than half a second.
constexpr qint64 longestGap = 16 * 1024 * 1024;

// What a file holds is in that file: neither another one nor the network is opened on its behalf.
int refuseOtherFile(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**)
{
    return AVERROR(EPERM);
}

// To learn its size, a picture would be decoded.
void leaveOutPictures(AVFormatContext& format)
{
    for (unsigned index = 0; index < format.nb_streams; ++index) {
        AVStream& stream = *format.streams[index];
        if (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) {
            stream.codecpar->codec_type = AVMEDIA_TYPE_DATA;
            stream.discard = AVDISCARD_ALL;
        }
    }
}

bool isLinearPcm(AVCodecID codec)
{
    return codec >= AV_CODEC_ID_PCM_S16LE && codec < AV_CODEC_ID_ADPCM_IMA_QT;
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
    // What reads from the old file goes before it.
    m_seekIndex = std::move(other.m_seekIndex);
    m_codec = std::move(other.m_codec);
    m_format = std::move(other.m_format);
    m_file = std::move(other.m_file);
    m_streamIndex = other.m_streamIndex;
    m_probing = other.m_probing;
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
    if (!openToKnownCodec(path) || !findAudioStream() || !openDecoder()) {
        close();
        return false;
    }
    allowFurther();
    return true;
}

void MediaInput::close()
{
    m_seekIndex.reset();
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

bool MediaInput::seek(qint64 timestamp)
{
    correctByteRate();
    // The search for where to begin may read as well.
    allowFurther();
    if (!seekTo(seekStart(timestamp)))
        return false;
    avcodec_flush_buffers(m_codec.get());
    allowFurther();
    return true;
}

// Where FFmpeg reads on from the last frame that it knows, that may be far, as long as there are frames.
bool MediaInput::seekTo(qint64 timestamp)
{
    int result = 0;
    qint64 knownBefore = 0;
    do {
        knownBefore = lastKnownTimestamp();
        allowFurther();
        result = av_seek_frame(m_format.get(), m_streamIndex, timestamp, AVSEEK_FLAG_BACKWARD);
    } while (m_file->isUsedUp() && lastKnownTimestamp() > knownBefore);
    return result >= 0;
}

qint64 MediaInput::lastKnownTimestamp() const
{
    AVStream* stream = m_format->streams[m_streamIndex];
    const int count = avformat_index_get_entries_count(stream);
    const AVIndexEntry* last = count > 0 ? avformat_index_get_entry(stream, count - 1) : nullptr;
    return last ? last->timestamp : std::numeric_limits<qint64>::min();
}

void MediaInput::allowFurther()
{
    m_file->allow(longestGap);
}

// FFmpeg finds places in a wave by the byte rate of its header, which many programs write wrongly for compressed sound.
// Blocks of a fixed number of samples tell the true one.
void MediaInput::correctByteRate()
{
    AVCodecParameters& parameters = *m_format->streams[m_streamIndex]->codecpar;
    const bool isSampled = av_get_exact_bits_per_sample(parameters.codec_id) > 0;
    const bool isInBlocks = !isSampled && parameters.block_align > 0 && av_get_bits_per_sample(parameters.codec_id) > 0;
    const int samples = isInBlocks ? av_get_audio_frame_duration2(&parameters, parameters.block_align) : 0;
    if (samples > 0)
        parameters.bit_rate = av_rescale(qint64(parameters.block_align) * 8, parameters.sample_rate, samples);
}

bool MediaInput::prepareSeek(std::chrono::milliseconds time)
{
    MpegSeekIndex* index = seekIndex();
    return index && index->lookAhead(time);
}

// Null where FFmpeg finds its places by itself.
MpegSeekIndex* MediaInput::seekIndex()
{
    if (!m_seekIndex && formatName() == QLatin1String("mp3"))
        m_seekIndex = std::make_unique<MpegSeekIndex>(*m_file, *m_format, *stream());
    return m_seekIndex.get();
}

qint64 MediaInput::seekStart(qint64 timestamp)
{
    MpegSeekIndex* index = seekIndex();
    if (const std::optional<qint64> start = index ? index->startFor(timestamp) : std::nullopt)
        return *start;
    const qint64 lead = av_rescale_q(seekLead, AVRational{ 1, 1000 }, stream()->time_base);
    const qint64 startTime = stream()->start_time == AV_NOPTS_VALUE ? 0 : stream()->start_time;
    return std::max(std::min<qint64>(0, startTime), timestamp - lead);
}

bool MediaInput::isOpen() const
{
    return m_codec != nullptr;
}

bool MediaInput::openToKnownCodec(const QString& path)
{
    if (!openFile(path, Probing::Short))
        return false;
    if (!mayBeDisguised())
        return true;
    m_format.reset();
    return openFile(path, Probing::Full);
}

bool MediaInput::openFile(const QString& path, Probing probing)
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
    m_probing = format ? probing : Probing::Full;
    // Of the forced formats, FFmpeg examines only those streams further that `mayBeDisguised()` looks at.
    if (m_probing == Probing::Short)
        context->max_probe_packets = 1;
    // On failure the call frees the context that it was given.
    const int result = avformat_open_input(&context, QFile::encodeName(path).constData(), format, nullptr);
    if (result < 0)
        return fail(Failure::OpenInput, result);
    m_format.reset(context);
    return true;
}

bool MediaInput::findAudioStream()
{
    leaveOutPictures(*m_format);
    if (!isKnownFromHeader() && !learnFromFrames()) {
        if (const int result = avformat_find_stream_info(m_format.get(), nullptr); result < 0)
            return fail(Failure::FindStreamInfo, result);
    }
    const AVStream* stream = firstAudioStream();
    if (!stream)
        return fail(Failure::FindAudioStream);
    m_streamIndex = stream->index;
    return true;
}

AVStream* MediaInput::firstAudioStream() const
{
    for (unsigned index = 0; index < m_format->nb_streams; ++index) {
        if (m_format->streams[index]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
            return m_format->streams[index];
    }
    return nullptr;
}

// FFmpeg compares the first sound of 16-bit waves with every format that it knows, which costs far more than all the
// rest of opening; nearly always a look at the bytes shows that it is in vain.
bool MediaInput::mayBeDisguised() const
{
    const AVStream* stream = firstAudioStream();
    if (!stream || m_probing == Probing::Full || stream->codecpar->codec_id != AV_CODEC_ID_PCM_S16LE)
        return false;
    // Kept for the next file: to get and give back so large a piece of memory costs more than to read it.
    thread_local std::vector<std::uint8_t> bytes(disguiseLookSize);
    const int size = m_file->peek(avio_tell(m_format->pb), bytes.data(), disguiseLookSize);
    return mayBeDisguisedSound(bytes.data(), size);
}

// True where the header tells all that reading sound could tell. Without a first frame of sound, or with frames of
// another size than their samples have, FFmpeg corrects what the header says.
bool MediaInput::isKnownFromHeader() const
{
    const AVStream* stream = firstAudioStream();
    if (!stream || m_probing == Probing::Full)
        return false;
    const AVCodecParameters& parameters = *stream->codecpar;
    const int frameSize = parameters.ch_layout.nb_channels * av_get_exact_bits_per_sample(parameters.codec_id) / 8;
    const bool isSampled = isLinearPcm(parameters.codec_id) && parameters.sample_rate > 0
        && parameters.sample_rate <= highestTrustedRate;
    return isSampled && frameSize > 0 && parameters.block_align == frameSize && stream->duration > 0
        && m_file->size() - avio_tell(m_format->pb) >= frameSize;
}

// Of MPEG audio whose first frame counts the others, the headers of the next frames tell the rest. FFmpeg would decode
// a frame as well, which takes longer than all else of opening, and tells no more where the frames are of one kind.
bool MediaInput::learnFromFrames()
{
    AVStream* stream = firstAudioStream();
    if (!stream || m_probing == Probing::Full || stream->codecpar->codec_id != AV_CODEC_ID_MP3 || stream->duration <= 0)
        return false;
    MpegFrameWalk walk(*m_file, avio_tell(m_format->pb), 0, frameLookSize);
    const MpegFrameHeader first = walk.isValid() ? walk.frame().header : MpegFrameHeader();
    // One more than FFmpeg looks at.
    for (int frame = 0; frame < m_format->max_ts_probe; ++frame) {
        if (!walk.next() || walk.frame().header.channels() != first.channels())
            return false;
    }
    if (first.layer() != 3)
        return false;
    AVCodecParameters& parameters = *stream->codecpar;
    parameters.sample_rate = first.sampleRate();
    parameters.frame_size = first.samples();
    av_channel_layout_default(&parameters.ch_layout, first.channels());
    return true;
}

bool MediaInput::openDecoder()
{
    const AVCodecParameters* parameters = stream()->codecpar;
    const AVCodec* decoder = decoderForCodec(parameters->codec_id);
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
