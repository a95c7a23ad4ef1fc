// SPDX-License-Identifier: GPL-3.0-or-later
// What opening a file for playing costs beside a wave of 24 bits, and a far seek in an MP3 beside one in a wave.

#include "audio/audiodecoder.h"
#include "bench/benchratio.h"
#include "tests/audio/soundmaker.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>
#include <vector>

namespace {

constexpr int rounds = 30;
constexpr int chunkSize = 307200; // bytes
constexpr std::chrono::milliseconds seekPreparation(10); // for each chunk, as in playing
constexpr double shortSeconds = 30;
constexpr double usualSeconds = 300;
constexpr double longSeconds = 3600;

struct Format
{
    const char* name;
    const char* fileName;
    const char* arguments;
};

const std::vector<Format> formats{
    // The rest of opening is the resampler's, whose filter depends on the rate: one rate for all.
    { "wav, 24 bit", "a.wav", "-ar 44100 -ac 2 -c:a pcm_s24le" },
    { "wav, 16 bit", "b.wav", "-ar 44100 -ac 2 -c:a pcm_s16le" },
    { "wav, float", "c.wav", "-ar 44100 -ac 2 -c:a pcm_f32le" },
    { "aiff, 24 bit", "d.aif", "-ar 44100 -ac 2 -c:a pcm_s24be" },
    { "mp3, 320 kbit/s", "e.mp3", "-ar 44100 -ac 2 -b:a 320k" },
    { "mp3, variable rate", "f.mp3", "-ar 44100 -ac 2 -q:a 2" },
    { "mp3, variable rate without its table", "g.mp3", "-ar 44100 -ac 2 -q:a 2 -write_xing 0" },
};

std::unique_ptr<AudioDecoder> opened(const QString& path)
{
    auto decoder = std::make_unique<AudioDecoder>();
    decoder->setOutputSampleRate(SoundMaker::playedRate);
    decoder->setOutputChannels(2);
    decoder->setOutputSampleFormat(2);
    decoder->setFileName(path);
    if (!decoder->open())
        qFatal("%s: %s", qPrintable(path), qPrintable(decoder->errorString()));
    return decoder;
}

QString makeFile(const QTemporaryDir& folder, const Format& format, double seconds)
{
    QString path = folder.filePath(QString::number(seconds) + QLatin1String(format.fileName));
    SoundMaker::makeNoise(path, seconds, QString::fromLatin1(format.arguments).split(QLatin1Char(' ')));
    return path;
}

double openingTime(const QString& path)
{
    constexpr int openings = 20;
    return BenchRatio::processorTime(rounds, [&]() {
        for (int opening = 0; opening < openings; ++opening)
            opened(path);
    }) / openings;
}

enum class Place
{
    Unknown, // in a file that was just opened
    Prepared, // in one that was listened to for two chunks
    Passed // before one that was sought already
};

double seekTime(const QString& path, double seconds, Place place)
{
    double least = 0;
    for (int round = 0; round < rounds / 3; ++round) {
        const auto decoder = opened(path);
        decoder->decode(chunkSize);
        for (int chunk = 0; place == Place::Prepared && chunk < 2; ++chunk) {
            decoder->decode(chunkSize);
            decoder->prepareSeek(seekPreparation);
        }
        if (place == Place::Passed)
            decoder->seek(seconds * 0.95);
        const double time = BenchRatio::processorTime(1, [&]() {
            decoder->seek(seconds * 0.9);
            decoder->decode(chunkSize);
        });
        least = round == 0 ? time : std::min(least, time);
    }
    return least;
}

void measureSeeks(const QTemporaryDir& folder, const char* length, double seconds)
{
    const double wave = seekTime(makeFile(folder, formats.at(1), seconds), seconds, Place::Unknown);
    for (const std::size_t index : { std::size_t(4), std::size_t(5), std::size_t(6) }) {
        const QString path = makeFile(folder, formats.at(index), seconds);
        const auto measure = [&](const char* what, Place place) {
            BenchRatio::print(
                QStringLiteral("%1, %2: %3")
                    .arg(QLatin1String(what), QLatin1String(length), QLatin1String(formats.at(index).name)),
                "us", seekTime(path, seconds, place), wave, 3);
        };
        measure("far seek to the first chunk", Place::Unknown);
        measure("the same after 0.8 s of playing", Place::Prepared);
        measure("the same to a passed place", Place::Passed);
    }
}

} // namespace

int main(int argumentsCount, char** arguments)
{
    const QCoreApplication application(argumentsCount, arguments);
    const QTemporaryDir folder;
    double baseline = 0;
    for (const Format& format : formats) {
        const QString path = makeFile(folder, format, shortSeconds);
        const double time = openingTime(path);
        baseline = baseline > 0 ? baseline : time;
        BenchRatio::print(QStringLiteral("opening: %1").arg(format.name), "us", time, baseline, 2);
    }
    measureSeeks(folder, "five minutes", usualSeconds);
    measureSeeks(folder, "an hour", longSeconds);
    return 0;
}
