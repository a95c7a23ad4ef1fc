// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/audiodecoder.h"

#include <algorithm>
#include <cmath>
#include <numeric>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
#include <libavutil/mathematics.h>
}

namespace {

// Samples that the resampler is fed before the wanted one: more than its filter is long.
constexpr qint64 leadSamples = 1024;

// Of the output, at once. A frame of a hostile file with a rate of a few Hz would swell to gigabytes.
constexpr int framesPerSlice = 64 * 1024;

// Seconds; no sound is longer, whatever a hostile file tells of its duration.
constexpr double latestPosition = 1e9;

// The sample to begin with, so that the resampler's output falls on the same instants as without a seek.
qint64 firstSampleToConvert(qint64 wantedFrame, int outputRate, int sourceRate)
{
    const qint64 period = sourceRate / std::gcd(sourceRate, outputRate);
    const qint64 wantedSample = av_rescale(wantedFrame, sourceRate, outputRate);
    return std::max<qint64>(0, wantedSample - leadSamples) / period * period;
}

void discardOtherStreams(AVFormatContext& format, const AVStream* wanted)
{
    for (unsigned index = 0; index < format.nb_streams; ++index) {
        if (format.streams[index] != wanted)
            format.streams[index]->discard = AVDISCARD_ALL;
    }
}

} // namespace

AudioDecoder::AudioDecoder() = default;
AudioDecoder::~AudioDecoder() = default;

void AudioDecoder::setOutputSampleRate(int sampleRate)
{
    if (!isOpen())
        m_output.sampleRate = sampleRate;
}

void AudioDecoder::setOutputChannels(int channels)
{
    if (!isOpen())
        m_output.channels = channels;
}

void AudioDecoder::setOutputSampleFormat(int sampleFormat)
{
    if (!isOpen())
        m_output.sampleFormat = sampleFormat;
}

bool AudioDecoder::open()
{
    if (isOpen())
        return fail(QStringLiteral("Audio decoder is already opened"));
    if (m_fileName.isEmpty())
        return fail(QStringLiteral("Audio decoder file name is empty"));
    if (!m_input.open(m_fileName))
        return fail(inputError());
    m_frame.reset(av_frame_alloc());
    m_packet.reset(av_packet_alloc());
    if (!m_frame || !m_packet || !m_resampler.open(*m_input.codecContext(), m_output)) {
        close();
        return fail(QStringLiteral("Could not initialize audio resampler"));
    }
    discardOtherStreams(*m_input.formatContext(), m_input.stream());
    for (const auto& [key, value] : m_input.metadata())
        m_tags.insert(key, value);
    m_duration = knownDuration();
    m_sourceRate = m_input.sampleRate();
    return true;
}

QString AudioDecoder::inputError() const
{
    switch (m_input.failure()) {
    case MediaInput::Failure::OpenInput:
        return QStringLiteral("Unable to open input: %1").arg(m_input.errorText());
    case MediaInput::Failure::FindStreamInfo:
        return QStringLiteral("Cannot find stream info: %1").arg(m_input.errorText());
    case MediaInput::Failure::FindAudioStream:
        return QStringLiteral("No audio stream found");
    case MediaInput::Failure::FindDecoder:
        return QStringLiteral("Unable to find decoder");
    case MediaInput::Failure::OpenCodec:
        return QStringLiteral("Unable to open codec: %1").arg(m_input.errorText());
    case MediaInput::Failure::None:
        break;
    }
    return {};
}

double AudioDecoder::knownDuration() const
{
    if (m_input.stream()->duration != AV_NOPTS_VALUE)
        return std::max(0.0, m_input.duration());
    const qint64 ofContainer = m_input.formatContext()->duration;
    return ofContainer == AV_NOPTS_VALUE ? 0.0 : std::max(0.0, double(ofContainer) / AV_TIME_BASE);
}

void AudioDecoder::close()
{
    forgetFrame();
    m_resampler.close();
    m_frame.reset();
    m_packet.reset();
    m_input.close();
    m_tags.clear();
    m_duration = 0;
    m_wantedFrame = -1;
    m_isAtEnd = false;
}

void AudioDecoder::interrupt()
{
    m_input.interrupt();
}

QString AudioDecoder::tag(const QString& key, const QString& defaultValue) const
{
    return m_tags.value(key.toLower(), defaultValue);
}

QByteArray AudioDecoder::decode(int maxBytes)
{
    while (isOpen() && !m_isAtEnd && m_pending.size() < maxBytes)
        decodeFurther();
    QByteArray bytes = m_pending.left(std::max(0, maxBytes));
    m_pending.remove(0, bytes.size());
    return bytes;
}

void AudioDecoder::decodeFurther()
{
    if (m_samplesLeft > 0) {
        convertSlice();
        return;
    }
    const int result = avcodec_receive_frame(m_input.codecContext(), m_frame.get());
    if (result >= 0)
        beginFrame();
    else if (m_isDraining)
        finish();
    else
        readPacket();
}

void AudioDecoder::readPacket()
{
    AVCodecContext* codec = m_input.codecContext();
    if (av_read_frame(m_input.formatContext(), m_packet.get()) < 0) {
        m_isDraining = true;
        avcodec_send_packet(codec, nullptr);
        return;
    }
    // A damaged packet is refused; the next one may be whole again.
    if (m_packet->stream_index == m_input.stream()->index)
        avcodec_send_packet(codec, m_packet.get());
    av_packet_unref(m_packet.get());
}

void AudioDecoder::beginFrame()
{
    m_input.allowFurther();
    if (!m_resampler.accepts(*m_frame)) {
        // Joined recordings may change from stereo to mono, or their rate, in the middle.
        append(m_resampler.flush());
        if (!m_resampler.reopen(*m_frame))
            return;
    }
    m_nextSample = 0;
    m_samplesLeft = m_frame->nb_samples;
    if (m_wantedFrame >= 0)
        dropUntilWanted();
}

void AudioDecoder::dropUntilWanted()
{
    const int sourceRate = m_frame->sample_rate;
    const int outputRate = m_output.sampleRate;
    // Of several frames in a packet only the first has a time stamp.
    if (m_frame->best_effort_timestamp != AV_NOPTS_VALUE)
        m_dropPosition = av_rescale_q(
            m_frame->best_effort_timestamp - startTime(), m_input.stream()->time_base, AVRational{ 1, sourceRate });
    if (!m_dropPosition) {
        m_wantedFrame = -1;
        return;
    }
    const qint64 position = *m_dropPosition;
    const qint64 early = firstSampleToConvert(m_wantedFrame, outputRate, sourceRate) - position;
    const int dropped = int(std::clamp<qint64>(early, 0, m_samplesLeft));
    m_dropPosition = position + dropped;
    m_nextSample += dropped;
    m_samplesLeft -= dropped;
    if (m_samplesLeft == 0)
        return;
    m_framesToSkip = std::max<qint64>(0, m_wantedFrame - av_rescale(position + dropped, outputRate, sourceRate));
    m_wantedFrame = -1;
}

void AudioDecoder::convertSlice()
{
    const qint64 samples = av_rescale(framesPerSlice, m_frame->sample_rate, m_output.sampleRate);
    const int count = int(std::clamp<qint64>(samples, 1, m_samplesLeft));
    append(m_resampler.convert(*m_frame, m_nextSample, count));
    m_nextSample += count;
    m_samplesLeft -= count;
}

void AudioDecoder::finish()
{
    append(m_resampler.flush());
    m_isAtEnd = true;
}

void AudioDecoder::append(const QByteArray& converted)
{
    const int frameSize = m_resampler.bytesPerOutputFrame();
    const qint64 skipped = std::min<qint64>(m_framesToSkip, converted.size() / frameSize);
    m_framesToSkip -= skipped;
    m_pending.append(converted.constData() + skipped * frameSize, int(converted.size() - skipped * frameSize));
}

bool AudioDecoder::seek(double seconds)
{
    if (!isOpen())
        return fail(QStringLiteral("Audio decoder is not opened"));
    const double end = m_duration > 0 ? std::min(m_duration, latestPosition) : latestPosition;
    const double position = std::max(0.0, std::min(seconds, end));
    const qint64 wantedFrame = std::llround(position * m_output.sampleRate);
    forgetFrame();
    if (!m_input.seek(firstTimestampToDecode(wantedFrame))) {
        m_isAtEnd = true;
        return fail(QStringLiteral("Unable to seek to specified position"));
    }
    m_resampler.restart();
    m_wantedFrame = wantedFrame;
    m_isAtEnd = false;
    return true;
}

bool AudioDecoder::prepareSeek(std::chrono::milliseconds time)
{
    return isOpen() && m_input.prepareSeek(time);
}

qint64 AudioDecoder::firstTimestampToDecode(qint64 wantedFrame) const
{
    const qint64 sample = firstSampleToConvert(wantedFrame, m_output.sampleRate, m_sourceRate);
    return startTime() + av_rescale_q(sample, AVRational{ 1, m_sourceRate }, m_input.stream()->time_base);
}

void AudioDecoder::forgetFrame()
{
    m_pending.clear();
    m_nextSample = 0;
    m_samplesLeft = 0;
    m_framesToSkip = 0;
    m_dropPosition.reset();
    m_isDraining = false;
}

qint64 AudioDecoder::startTime() const
{
    const qint64 start = m_input.stream()->start_time;
    return start == AV_NOPTS_VALUE ? 0 : start;
}

bool AudioDecoder::fail(const QString& text)
{
    m_errorString = text;
    return false;
}
