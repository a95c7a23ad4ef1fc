// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

/// Frames of MPEG audio made by hand: silence behind a header that tells the truth about its length. Thread: any.
namespace MpegFrames {

constexpr int frameSize = 417;
constexpr int paddedFrameSize = 418;

/// Layer III, 44.1 kHz, 128 kbit/s, stereo.
QByteArray frames(int count);
/// The same with one byte more each.
QByteArray paddedFrames(int count);
/// The same with 320 kbit/s: 1044 bytes.
QByteArray richFrames(int count);
/// The same with one channel: 417 bytes.
QByteArray monoFrames(int count);
/// Layer III, 48 kHz, 128 kbit/s: 384 bytes.
QByteArray fasterFrames(int count);
/// Layer II, 44.1 kHz, 128 kbit/s: 417 bytes.
QByteArray secondLayerFrames(int count);
/// A frame whose size its header does not tell.
QByteArray freeFormatFrame();
/// A tag of 128 bytes, as it stands behind the sound.
QByteArray id3Version1();
/// A tag with nothing but its footer, 32 bytes.
QByteArray apeFooter();
/// A first frame with a table of contents: a count of frames and of bytes.
QByteArray xingFrame(const char* identifier, int frameCount, int byteCount);
QByteArray vbriFrame(int frameCount, int byteCount);

} // namespace MpegFrames
