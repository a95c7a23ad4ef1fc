// SPDX-License-Identifier: GPL-3.0-or-later
// What opening a file for playing costs beside a wave of 24 bits, and a far seek in an MP3 beside one in a wave.

#include "audio/audiodecoder.h"
#include "audio/audiosource.h"
#include "bench/benchratio.h"
#include "tests/audio/soundmaker.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QThreadPool>

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

namespace {

constexpr int rounds = 30;
constexpr int chunkSize = 307200; // bytes
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
    return BenchRatio::processorTime(1, [&]() {
        for (int opening = 0; opening < openings; ++opening)
            opened(path);
    }) / openings;
}

enum class Place
{
    Unknown, // in a file that was just opened
    Passed // before one that was sought already
};

double seekTime(const QString& path, double seconds, Place place)
{
    const auto decoder = opened(path);
    decoder->decode(chunkSize);
    if (place == Place::Passed)
        decoder->seek(seconds * 0.95);
    return BenchRatio::processorTime(1, [&]() {
        decoder->seek(seconds * 0.9);
        decoder->decode(chunkSize);
    });
}

// As the player has it: its output takes the first chunk at once, and another one is decoded on the thread pool.
double seekTimeWhilePlaying(const QString& path, double seconds)
{
    AudioSource source;
    if (!source.open(path) || source.read(chunkSize).size() != chunkSize)
        qFatal("%s cannot be played", qPrintable(path));
    QCoreApplication::processEvents();
    QThreadPool::globalInstance()->waitForDone();
    return BenchRatio::processorTime(1, [&]() {
        source.seek(seconds * 0.9);
        source.read(chunkSize);
    });
}

// The best of each, measured in turn: a virtual machine is now quicker, now slower.
void compare(const QString& name, const QString& path, const QString& wavePath, double limit,
    const std::function<double(const QString&)>& measure)
{
    double figure = std::numeric_limits<double>::max();
    double baseline = figure;
    for (int round = 0; round < rounds; ++round) {
        baseline = std::min(baseline, measure(wavePath));
        figure = std::min(figure, measure(path));
    }
    BenchRatio::print(name, "us", figure, baseline, limit);
}

void measureSeeks(const QTemporaryDir& folder, const char* length, double seconds)
{
    const QString wavePath = makeFile(folder, formats.at(1), seconds);
    for (const std::size_t index : { std::size_t(4), std::size_t(5), std::size_t(6) }) {
        const QString path = makeFile(folder, formats.at(index), seconds);
        const auto name = [&](const char* what) {
            return QStringLiteral("%1, %2: %3")
                .arg(QLatin1String(what), QLatin1String(length), QLatin1String(formats.at(index).name));
        };
        compare(name("first far seek while playing"), path, wavePath, 3,
            [=](const QString& file) { return seekTimeWhilePlaying(file, seconds); });
        compare(name("the same, at once after opening"), path, wavePath, 3,
            [=](const QString& file) { return seekTime(file, seconds, Place::Unknown); });
        compare(name("the same, to a passed place"), path, wavePath, 3,
            [=](const QString& file) { return seekTime(file, seconds, Place::Passed); });
    }
}

} // namespace

int main(int argumentsCount, char** arguments)
{
    const QCoreApplication application(argumentsCount, arguments);
    const QTemporaryDir folder;
    const QString baseline = makeFile(folder, formats.front(), shortSeconds);
    for (const Format& format : formats)
        compare(QStringLiteral("opening: %1").arg(format.name), makeFile(folder, format, shortSeconds), baseline, 2,
            openingTime);
    measureSeeks(folder, "five minutes", usualSeconds);
    measureSeeks(folder, "an hour", longSeconds);
    return 0;
}
