// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/mpegseekindex.h"

#include "audio/inputfile.h"

#include <QDeadlineTimer>

#include <algorithm>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/mathematics.h>
}

namespace {

// Bytes read at once: more while going forward than around a place.
constexpr int forwardPiece = 128 * 1024;
constexpr int nearbyPiece = 64 * 1024;

constexpr int framesPerPlace = 64;

// So many packets must lie where the walk finds frames. FFmpeg itself needs a few frames until it trusts the lengths.
constexpr int knownPackets = 8;

// Seconds that surely hold so many: the longest frame lasts 72 ms.
constexpr int secondsOfKnownPackets = 1;

// A frame is decoded exactly when the one before it was, whose overlap it takes over; where a frame is as short as in
// MPEG-2 that one needs its own predecessor for it. One more for the memory of the synthesis filter.
constexpr std::size_t framesBeforeExact = 3;

// The frame to begin with, so that the last one is decoded exactly: what the first one of those that must be decoded
// takes out of the reservoir has to be there. Nothing when that begins before all of these frames.
std::optional<std::size_t> leadOf(const std::vector<MpegFrameWalk::Frame>& frames)
{
    if (frames.size() <= framesBeforeExact)
        return std::nullopt;
    std::size_t begin = frames.size() - 1 - framesBeforeExact;
    int missing = frames.back().header.largestReservoir();
    while (missing > 0 && begin > 0)
        missing -= frames.at(--begin).header.mainDataSize();
    return missing > 0 ? std::nullopt : std::optional(begin);
}

} // namespace

MpegSeekIndex::MpegSeekIndex(const InputFile& file, AVFormatContext& format, const AVStream& stream)
    : m_file(&file)
    , m_format(&format)
    , m_stream(format.streams[stream.index])
{
}

std::optional<qint64> MpegSeekIndex::startFor(qint64 timestamp)
{
    if (!begin() || timestamp < m_firstTimestamp)
        return std::nullopt;
    const qint64 sample = sampleAt(timestamp);
    walkTo(sample);
    // What lies behind the end of the walk FFmpeg seeks from the last entry of its index on.
    const Frames frames = framesUpTo(std::min(sample, m_walk->frame().sample));
    const Frame& start = frames.at(leadOf(frames).value_or(0));
    announce(start);
    return isWalked(sample) ? std::optional(timestampOf(start.sample)) : std::nullopt;
}

bool MpegSeekIndex::lookAhead(std::chrono::milliseconds time)
{
    if ((!m_hasBegun && !knowsFirstPackets()) || !begin())
        return false;
    const QDeadlineTimer deadline(time);
    bool isGoingOn = true;
    while (isGoingOn && !deadline.hasExpired()) {
        for (int frame = 0; isGoingOn && frame < framesPerPlace; ++frame)
            isGoingOn = step();
    }
    return isGoingOn;
}

bool MpegSeekIndex::begin()
{
    if (!m_hasBegun) {
        m_hasBegun = true;
        if (!beginAtKnownPackets())
            m_walk.reset();
    }
    return m_walk.has_value();
}

bool MpegSeekIndex::beginAtKnownPackets()
{
    if (!knowsFirstPackets()) {
        const qint64 later = av_rescale_q(secondsOfKnownPackets, AVRational{ 1, 1 }, m_stream->time_base);
        av_seek_frame(m_format, m_stream->index, later, AVSEEK_FLAG_BACKWARD);
    }
    const AVIndexEntry* first = avformat_index_get_entry(m_stream, 0);
    if (!first)
        return false;
    m_firstTimestamp = first->timestamp;
    m_walk.emplace(*m_file, first->pos, 0, forwardPiece);
    if (!m_walk->isValid())
        return false;
    m_places.push_back(m_walk->frame());
    // Only from a rate of MPEG audio do whole time stamps come, in the time base that FFmpeg gives such files.
    const int rate = m_walk->frame().header.sampleRate();
    if (m_stream->time_base.num != 1 || m_stream->time_base.den % rate != 0)
        return false;
    MpegFrameWalk trial(*m_file, first->pos, 0, nearbyPiece);
    return meetsKnownPackets(trial);
}

bool MpegSeekIndex::knowsFirstPackets() const
{
    return avformat_index_get_entries_count(m_stream) > knownPackets;
}

bool MpegSeekIndex::meetsKnownPackets(MpegFrameWalk& walk) const
{
    for (int index = 1; index <= knownPackets; ++index) {
        const AVIndexEntry* entry = avformat_index_get_entry(m_stream, index);
        if (!entry)
            return false;
        while (walk.frame().offset < entry->pos && walk.next()) { }
        if (walk.frame().offset != entry->pos || timestampOf(walk.frame().sample) != entry->timestamp)
            return false;
    }
    return true;
}

void MpegSeekIndex::walkTo(qint64 sample)
{
    while (!isWalked(sample) && step()) { }
}

// To the next frame; false at the end of the walk.
bool MpegSeekIndex::step()
{
    if (!m_walk->next())
        return false;
    if (++m_framesSincePlace == framesPerPlace) {
        m_places.push_back(m_walk->frame());
        m_framesSincePlace = 0;
    }
    return true;
}

bool MpegSeekIndex::isWalked(qint64 sample) const
{
    return sample < m_walk->frame().endSample();
}

// With enough frames before it, if there are so many.
MpegSeekIndex::Frames MpegSeekIndex::framesUpTo(qint64 sample) const
{
    auto place = std::upper_bound(m_places.cbegin(), m_places.cend(), sample,
        [](qint64 wanted, const Frame& candidate) { return wanted < candidate.sample; });
    Frames frames;
    do {
        --place;
        frames = framesFrom(*place, sample);
    } while (place != m_places.cbegin() && !leadOf(frames));
    return frames;
}

MpegSeekIndex::Frames MpegSeekIndex::framesFrom(const Frame& place, qint64 sample) const
{
    MpegFrameWalk walk(*m_file, place.offset, place.sample, nearbyPiece);
    Frames frames{ place };
    while (walk.frame().endSample() <= sample && walk.next())
        frames.push_back(walk.frame());
    return frames;
}

void MpegSeekIndex::announce(const Frame& frame)
{
    av_add_index_entry(m_stream, frame.offset, timestampOf(frame.sample), 0, 0, AVINDEX_KEYFRAME);
}

qint64 MpegSeekIndex::timestampOf(qint64 sample) const
{
    return m_firstTimestamp + sample * (m_stream->time_base.den / m_places.front().header.sampleRate());
}

qint64 MpegSeekIndex::sampleAt(qint64 timestamp) const
{
    return (timestamp - m_firstTimestamp) / (m_stream->time_base.den / m_places.front().header.sampleRate());
}
