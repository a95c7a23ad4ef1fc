// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/scan/soundfiles.h"

#include <QtEndian>

namespace {

constexpr char utf8Encoding = 3;

template <typename Number>
QByteArray little(Number number)
{
    QByteArray bytes(int(sizeof(Number)), '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

template <typename Number>
QByteArray big(Number number)
{
    QByteArray bytes(int(sizeof(Number)), '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

// Four bytes of seven bits each.
QByteArray synchronisedSize(int size)
{
    QByteArray bytes;
    for (int shift = 21; shift >= 0; shift -= 7)
        bytes.append(char((size >> shift) & 0x7F));
    return bytes;
}

// The 80-bit floating-point number of a positive whole one.
QByteArray extendedNumber(quint32 number)
{
    int exponent = 31;
    while (!(number >> exponent))
        --exponent;
    return big(quint16(16383 + exponent)) + big(quint64(number) << (63 - exponent));
}

QByteArray silence(const SoundFiles::Layout& layout)
{
    return QByteArray(layout.frames * layout.channels * layout.bits / 8, '\0');
}

} // namespace

namespace SoundFiles {

QByteArray chunk(const char* identifier, const QByteArray& data, bool isBigEndian)
{
    const auto size = quint32(data.size());
    const QByteArray padding(data.size() % 2, '\0');
    return identifier + (isBigEndian ? big(size) : little(size)) + data + padding;
}

QByteArray wave(const Layout& layout, const QByteArray& chunks)
{
    const int frameSize = layout.channels * layout.bits / 8;
    const QByteArray format = little(quint16(layout.kind == SampleKind::Float ? 3 : 1))
        + little(quint16(layout.channels)) + little(quint32(layout.sampleRate))
        + little(quint32(layout.sampleRate * frameSize)) + little(quint16(frameSize)) + little(quint16(layout.bits));
    return chunk("RIFF", "WAVE" + chunk("fmt ", format) + chunks + chunk("data", silence(layout)));
}

QByteArray aiff(const Layout& layout, const QByteArray& chunks)
{
    const QByteArray common = big(quint16(layout.channels)) + big(quint32(layout.frames)) + big(quint16(layout.bits))
        + extendedNumber(quint32(layout.sampleRate));
    const QByteArray sound = QByteArray(8, '\0') + silence(layout);
    return chunk("FORM", "AIFF" + chunk("COMM", common, true) + chunks + chunk("SSND", sound, true), true);
}

QByteArray mp3(int frames, const QByteArray& tag)
{
    const int frameSize = 144 * 128000 / 44100;
    const QByteArray frame = QByteArray::fromHex("fffb9064").leftJustified(frameSize, '\0');
    return tag + frame.repeated(frames);
}

QByteArray sunAudio()
{
    const quint32 linear16 = 3;
    const quint32 dataSize = 16000;
    return ".snd" + big(quint32(24)) + big(dataSize) + big(linear16) + big(quint32(8000)) + big(quint32(1))
        + QByteArray(int(dataSize), '\0');
}

QByteArray silentVideo()
{
    return QByteArray("YUV4MPEG2 W2 H2 F25:1 Ip A1:1 C420jpeg\n") + "FRAME\n" + QByteArray(6, '\x40');
}

QByteArray infoChunk(const QVector<QPair<QByteArray, QByteArray>>& texts)
{
    QByteArray body("INFO");
    for (const auto& [identifier, text] : texts)
        body += chunk(identifier.constData(), text + '\0');
    return chunk("LIST", body);
}

QByteArray broadcastChunk(const QByteArray& description, const QByteArray& originatorReference)
{
    const int sizeOfTheRest = 10 + 8 + 8 + 2 + 254;
    return chunk("bext",
        description.leftJustified(256, '\0') + QByteArray(32, '\0') + originatorReference.leftJustified(32, '\0')
            + QByteArray(sizeOfTheRest, '\0'));
}

QByteArray id3Tag(const QByteArray& frames)
{
    return QByteArray("ID3\x04\0\0", 6) + synchronisedSize(frames.size()) + frames;
}

QByteArray id3Frame(const char* identifier, const QByteArray& body)
{
    return identifier + synchronisedSize(body.size()) + QByteArray(2, '\0') + body;
}

QByteArray id3OldTag(const QByteArray& frames, bool isEscaped)
{
    const char escapedTag = '\x80';
    QByteArray written = frames;
    if (isEscaped)
        written.replace("\xff", QByteArray("\xff\0", 2));
    return QByteArray("ID3\x03\0", 5) + (isEscaped ? escapedTag : '\0') + synchronisedSize(written.size()) + written;
}

QByteArray id3OldFrame(const char* identifier, const QByteArray& body, char flags)
{
    return identifier + big(quint32(body.size())) + '\0' + flags + body;
}

QByteArray id3Text(const char* identifier, const QByteArray& text)
{
    return id3Frame(identifier, utf8Encoding + text);
}

QByteArray id3Packed(const QByteArray& text)
{
    // Qt puts the length before the packed data as well, but in plain bytes.
    return synchronisedSize(text.size() + 1) + qCompress(utf8Encoding + text, 9).mid(4);
}

QByteArray id3CompressedText(const char* identifier, const QByteArray& text)
{
    const QByteArray body = id3Packed(text);
    const QByteArray compressedWithLength("\0\x09", 2);
    return identifier + synchronisedSize(body.size()) + compressedWithLength + body;
}

QByteArray id3UserText(const QByteArray& name, const QByteArray& text)
{
    return id3Frame("TXXX", utf8Encoding + name + '\0' + text);
}

QByteArray id3Comment(const QByteArray& text)
{
    return id3Frame("COMM", utf8Encoding + QByteArray("eng") + '\0' + text);
}

QByteArray id3Chunk(const QByteArray& frames, bool isBigEndian)
{
    return chunk(isBigEndian ? "ID3 " : "id3 ", id3Tag(frames), isBigEndian);
}

QByteArray nestedChapters(int depth)
{
    // An element name and four times, then the frames that the chapter holds.
    const QByteArray chapterHead = QByteArray("a\0", 2) + QByteArray(16, '\0');
    const int headSize = 10 + chapterHead.size();
    QByteArray frames;
    for (int level = depth; level >= 1; --level)
        frames += "CHAP" + synchronisedSize(level * headSize - 10) + QByteArray(2, '\0') + chapterHead;
    return frames;
}

} // namespace SoundFiles
