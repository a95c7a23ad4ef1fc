// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/audio/mpegframes.h"

#include <QtEndian>

namespace {

QByteArray frame(const char* header, int size)
{
    return QByteArray::fromHex(header).leftJustified(size, '\0');
}

QByteArray bigEndian(int number)
{
    QByteArray bytes(4, '\0');
    qToBigEndian<qint32>(number, bytes.data());
    return bytes;
}

QByteArray frameHolding(int offset, const QByteArray& contents)
{
    return MpegFrames::frames(1).replace(offset, contents.size(), contents);
}

} // namespace

namespace MpegFrames {

QByteArray frames(int count)
{
    return frame("fffb9064", frameSize).repeated(count);
}

QByteArray paddedFrames(int count)
{
    return frame("fffb9264", paddedFrameSize).repeated(count);
}

QByteArray richFrames(int count)
{
    return frame("fffbe064", 1044).repeated(count);
}

QByteArray monoFrames(int count)
{
    return frame("fffb90c4", frameSize).repeated(count);
}

QByteArray fasterFrames(int count)
{
    return frame("fffb9464", 384).repeated(count);
}

QByteArray secondLayerFrames(int count)
{
    return frame("fffd8064", 417).repeated(count);
}

QByteArray freeFormatFrame()
{
    return frame("fffb0064", frameSize);
}

QByteArray id3Version1()
{
    return QByteArray("TAGname").leftJustified(128, '\0');
}

QByteArray apeFooter()
{
    return QByteArray("APETAGEX\xd0\x07\0\0\x20\0\0\0", 16).leftJustified(32, '\0');
}

QByteArray xingFrame(const char* identifier, int frameCount, int byteCount)
{
    constexpr int behindSideInformation = 36;
    return frameHolding(
        behindSideInformation, identifier + bigEndian(3) + bigEndian(frameCount) + bigEndian(byteCount));
}

QByteArray vbriFrame(int frameCount, int byteCount)
{
    constexpr int fixedOffset = 36;
    const QByteArray versionDelayQuality("\0\1\0\0\0\0", 6);
    return frameHolding(fixedOffset, "VBRI" + versionDelayQuality + bigEndian(byteCount) + bigEndian(frameCount));
}

} // namespace MpegFrames
