// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QPair>
#include <QString>
#include <QVector>

/// Bytes of small media files, written field by field so that a test knows exactly what is in them. Thread: any.
namespace SoundFiles {

/// One RIFF or, with `isBigEndian`, one IFF chunk with its pad byte.
QByteArray chunk(const char* identifier, const QByteArray& data, bool isBigEndian = false);

enum class SampleKind
{
    Integer,
    Float
};

/// Stored samples of a file.
struct Layout
{
    int bits = 16;
    int sampleRate = 44100;
    int channels = 2;
    int frames = 4410;
    SampleKind kind = SampleKind::Integer;
};

/// A WAVE file of silence; `chunks` stand between format and sound.
QByteArray wave(const Layout& layout = {}, const QByteArray& chunks = {});
/// An AIFF file of silence (integer samples); `chunks` stand between format and sound.
QByteArray aiff(const Layout& layout = {}, const QByteArray& chunks = {});
/// Silent frames of MPEG layer III, 44.1 kHz, stereo, 128 kbit/s, after `tag`.
QByteArray mp3(int frames = 20, const QByteArray& tag = {});
/// A Sun audio file of silence: 16 bits, 8 kHz, mono; one second.
QByteArray sunAudio();
/// A raw video stream: one frame of 2 by 2 pixels and no sound.
QByteArray silentVideo();

/// The LIST chunk of a WAVE file with these texts.
QByteArray infoChunk(const QVector<QPair<QByteArray, QByteArray>>& texts);
/// The broadcast chunk of a WAVE file.
QByteArray broadcastChunk(const QByteArray& description, const QByteArray& originatorReference);
/// An ID3v2.4 tag of these frames.
QByteArray id3Tag(const QByteArray& frames);
QByteArray id3Frame(const char* identifier, const QByteArray& body);
/// An ID3v2.3 tag of frames whose sizes are plain numbers; with `isEscaped` a zero follows each byte of 255 in it.
QByteArray id3OldTag(const QByteArray& frames, bool isEscaped = false);
QByteArray id3OldFrame(const char* identifier, const QByteArray& body, char flags = 0);
/// A text frame in UTF-8; several values are separated by NUL.
QByteArray id3Text(const char* identifier, const QByteArray& text);
/// The body of a packed text frame: the length of the text, then what it is packed to.
QByteArray id3Packed(const QByteArray& text);
/// A text frame whose body is packed.
QByteArray id3CompressedText(const char* identifier, const QByteArray& text);
QByteArray id3UserText(const QByteArray& name, const QByteArray& text);
QByteArray id3Comment(const QByteArray& text);
/// The chunk that holds an ID3 tag in WAVE and AIFF files.
QByteArray id3Chunk(const QByteArray& frames, bool isBigEndian = false);
/// A chapter frame that holds a chapter frame, and so on.
QByteArray nestedChapters(int depth);

} // namespace SoundFiles
