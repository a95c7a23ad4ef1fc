// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/audio/soundmaker.h"

#include <QProcess>
#include <QtEndian>

#include <algorithm>
#include <cmath>

namespace {

QByteArray run(const QString& command, const QStringList& arguments)
{
    QProcess process;
    process.start(command, arguments);
    if (!process.waitForFinished(-1) || process.exitCode() != 0)
        qFatal("%s %s: %s", qPrintable(command), qPrintable(arguments.join(' ')),
            process.readAllStandardError().constData());
    return process.readAllStandardOutput();
}

int channelsCount(const QString& path)
{
    const QStringList query{ "-v", "error", "-select_streams", "a:0", "-show_entries", "stream=channels", "-of" };
    return run(QStringLiteral("ffprobe"), query + QStringList{ "csv=p=0", path }).trimmed().toInt();
}

void makeFile(const QString& source, const QString& path, double seconds, const QStringList& arguments)
{
    const QStringList input{ "-f", "lavfi", "-i", source, "-t", QString::number(seconds) };
    SoundMaker::runFfmpeg(input + arguments + QStringList{ "-y", path });
}

} // namespace

namespace SoundMaker {

QByteArray runFfmpeg(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral("ffmpeg"), QStringList{ "-v", "error", "-nostdin" } + arguments);
    if (!process.waitForFinished(-1) || process.exitCode() != 0)
        qFatal("ffmpeg %s: %s", qPrintable(arguments.join(' ')), process.readAllStandardError().constData());
    return process.readAllStandardOutput();
}

void makeNoise(const QString& path, double seconds, const QStringList& arguments)
{
    makeFile(QStringLiteral("anoisesrc=color=pink:seed=7:amplitude=0.8:sample_rate=96000"), path, seconds, arguments);
}

void makeTone(const QString& path, double seconds, const QStringList& arguments, int frequency)
{
    makeFile(QStringLiteral("aevalsrc=0.5*sin(2*PI*%1*t):sample_rate=96000").arg(frequency), path, seconds, arguments);
}

QByteArray reference(const QString& path)
{
    const bool isMono = channelsCount(path) == 1;
    const QStringList mixing = isMono ? QStringList{ "-af", "pan=stereo|c0=c0|c1=c0" } : QStringList{ "-ac", "2" };
    return runFfmpeg(QStringList{ "-i", path, "-map", "0:a:0", "-f", "s32le", "-ar", QString::number(playedRate) }
        + mixing + QStringList{ "-" });
}

QVector<double> leftChannel(const QByteArray& sound)
{
    constexpr double fullAmplitude = 2147483648.0;
    QVector<double> samples;
    samples.reserve(sound.size() / playedFrameSize);
    for (int offset = 0; offset + playedFrameSize <= sound.size(); offset += playedFrameSize)
        samples.append(qFromLittleEndian<qint32>(sound.constData() + offset) / fullAmplitude);
    return samples;
}

double greatestDifference(const QByteArray& first, const QByteArray& second)
{
    const QVector<double> left = leftChannel(first);
    const QVector<double> right = leftChannel(second);
    double greatest = 0;
    for (int index = 0; index < std::min(left.size(), right.size()); ++index)
        greatest = std::max(greatest, std::abs(left.at(index) - right.at(index)));
    return greatest;
}

double peak(const QByteArray& sound)
{
    double greatest = 0;
    for (const double sample : leftChannel(sound))
        greatest = std::max(greatest, std::abs(sample));
    return greatest;
}

} // namespace SoundMaker
