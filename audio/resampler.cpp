// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/resampler.h"

#include <QDebug>

#include <array>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libavutil/mathematics.h>
#include <libavutil/mem.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

namespace {

// As many as the library itself can mix.
constexpr int mostChannels = 64;

struct SamplesDeleter
{
    void operator()(std::uint8_t* samples) const { av_free(samples); }
};

using SamplesPointer = std::unique_ptr<std::uint8_t, SamplesDeleter>;

AVSampleFormat packedFormat(int sampleFormat)
{
    const bool isKnown = sampleFormat >= AV_SAMPLE_FMT_U8 && sampleFormat <= AV_SAMPLE_FMT_DBL;
    return isKnown ? AVSampleFormat(sampleFormat) : AV_SAMPLE_FMT_NONE;
}

bool isUsable(const Resampler::Output& output)
{
    return output.sampleRate >= 1 && output.channels >= 1 && output.channels <= mostChannels
        && packedFormat(output.sampleFormat) != AV_SAMPLE_FMT_NONE;
}

// By itself the library spreads one channel over two at 3 dB less each.
void keepLevelOfOneChannel(SwrContext& resampler, int outputChannels)
{
    if (outputChannels > 2)
        return;
    constexpr std::array<double, 2> factors = { 1, 1 };
    swr_set_matrix(&resampler, factors.data(), 1);
}

} // namespace

bool Resampler::open(const AVCodecContext& codec, const Output& output)
{
    m_output = output;
    AVChannelLayout source = codec.ch_layout;
    return openContext(source, codec.sample_fmt, codec.sample_rate);
}

bool Resampler::reopen(const AVFrame& frame)
{
    AVChannelLayout source = frame.ch_layout;
    return openContext(source, frame.format, frame.sample_rate);
}

bool Resampler::openContext(AVChannelLayout& source, int sampleFormat, int sampleRate)
{
    m_context.reset();
    if (!isUsable(m_output) || sampleRate < 1 || source.nb_channels < 1 || source.nb_channels > mostChannels)
        return false;
    m_sourceRate = sampleRate;
    m_sourceChannels = source.nb_channels;
    m_sourceFormat = sampleFormat;
    AVChannelLayout known = {};
    if (source.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&known, source.nb_channels);
    AVChannelLayout target = {};
    av_channel_layout_default(&target, m_output.channels);
    SwrContext* context = nullptr;
    const int result = swr_alloc_set_opts2(&context, &target, packedFormat(m_output.sampleFormat), m_output.sampleRate,
        source.order == AV_CHANNEL_ORDER_UNSPEC ? &known : &source, AVSampleFormat(sampleFormat), sampleRate, 0,
        nullptr);
    ResamplerPointer resampler(context);
    if (result < 0)
        return false;
    if (m_sourceChannels == 1)
        keepLevelOfOneChannel(*context, m_output.channels);
    if (swr_init(resampler.get()) < 0)
        return false;
    m_context = std::move(resampler);
    return true;
}

void Resampler::close()
{
    m_context.reset();
}

void Resampler::restart()
{
    if (m_context && swr_init(m_context.get()) < 0)
        m_context.reset();
}

bool Resampler::accepts(const AVFrame& frame) const
{
    return m_context && frame.format == m_sourceFormat && frame.sample_rate == m_sourceRate
        && frame.ch_layout.nb_channels == m_sourceChannels;
}

QByteArray Resampler::convert(const AVFrame& frame, int first, int count)
{
    Q_ASSERT(accepts(frame));
    const auto format = AVSampleFormat(m_sourceFormat);
    const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
    const int planesCount = isPlanar ? m_sourceChannels : 1;
    const int step = av_get_bytes_per_sample(format) * (isPlanar ? 1 : m_sourceChannels);
    std::array<const std::uint8_t*, mostChannels> planes = {};
    for (int plane = 0; plane < planesCount; ++plane)
        planes.at(size_t(plane)) = frame.extended_data[plane] + qint64(first) * step;
    return convertPlanes(planes.data(), count);
}

QByteArray Resampler::flush()
{
    return m_context ? convertPlanes(nullptr, 0) : QByteArray();
}

QByteArray Resampler::convertPlanes(const std::uint8_t** planes, int count)
{
    // The library holds back a few samples more than it tells when it is emptied.
    constexpr int reserve = 32;
    const qint64 sourceSamples = swr_get_delay(m_context.get(), m_sourceRate) + count;
    const qint64 capacity = av_rescale_rnd(sourceSamples, m_output.sampleRate, m_sourceRate, AV_ROUND_UP) + reserve;
    const AVSampleFormat format = packedFormat(m_output.sampleFormat);
    std::uint8_t* buffer = nullptr;
    if (av_samples_alloc(&buffer, nullptr, m_output.channels, int(capacity), format, 0) < 0) {
        qWarning("Could not allocate source samples");
        return {};
    }
    const SamplesPointer samples(buffer);
    const int converted = swr_convert(m_context.get(), &buffer, int(capacity), planes, count);
    const int size = converted > 0 ? av_samples_get_buffer_size(nullptr, m_output.channels, converted, format, 1) : 0;
    return { reinterpret_cast<const char*>(samples.get()), qMax(size, 0) };
}

int Resampler::bytesPerOutputFrame() const
{
    return av_get_bytes_per_sample(packedFormat(m_output.sampleFormat)) * m_output.channels;
}
