// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

/// Sound files with real sound in them, and a decoding of them that shares no code of this program: both are the work
/// of the ffmpeg command. Every function fails the program when it cannot do its work. Thread: the test's.
namespace SoundMaker {

/// Output frames a second, and bytes a frame, of what the program plays.
constexpr int playedRate = 96000;
constexpr int playedFrameSize = 8;

/// Runs ffmpeg with these arguments and returns what it writes to its standard output.
QByteArray runFfmpeg(const QStringList& arguments);

/// A file of noise that never repeats, so that every instant of it can be told from every other. `arguments` choose
/// codec, rate (-ar) and channels (-ac); the suffix chooses the container.
void makeNoise(const QString& path, double seconds, const QStringList& arguments = {});

/// A file with a sine of this frequency in Hz, of half the full amplitude, in all channels.
void makeTone(const QString& path, double seconds, const QStringList& arguments = {}, int frequency = 1000);

/// The whole file as the program is to decode it: 96000 Hz, stereo, signed 32-bit. One channel is heard from both sides
/// at its full level.
QByteArray reference(const QString& path);

/// The left channel of decoded sound; full amplitude is 1.
QVector<double> leftChannel(const QByteArray& sound);

/// Between two decodings of the same sound, as far as both go, in the left channel; full amplitude is 1. Up to the
/// last bits, which may be rounded either way, it is to be nothing.
double greatestDifference(const QByteArray& first, const QByteArray& second);

/// The greatest amplitude; full is 1.
double peak(const QByteArray& sound);

} // namespace SoundMaker
