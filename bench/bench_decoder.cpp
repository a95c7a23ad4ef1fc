// SPDX-License-Identifier: GPL-3.0-or-later
// Decoding to what is played: seconds of sound per second, and how long the first chunk takes after opening and after a
// seek. The files are made by the ffmpeg command.

#include "audio/audiosource.h"
#include "tests/audio/soundmaker.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QTemporaryDir>

#include <iterator>

namespace {

constexpr double decodedSeconds = 30;
constexpr double hour = 3600; // seconds

struct Format
{
    const char* name;
    const char* suffix;
    const char* arguments;
};

constexpr Format formats[] = {
    { "wav, 16 bit, 44.1 kHz", "wav", "-ar 44100 -ac 2 -c:a pcm_s16le" },
    { "wav, 24 bit, 48 kHz", "wav", "-ar 48000 -ac 2 -c:a pcm_s24le" },
    { "wav, 24 bit, 96 kHz", "wav", "-ar 96000 -ac 2 -c:a pcm_s24le" },
    { "wav, float, 192 kHz", "wav", "-ar 192000 -ac 2 -c:a pcm_f32le" },
    { "aiff, 24 bit, 48 kHz", "aif", "-ar 48000 -ac 2 -c:a pcm_s24be" },
    { "mp3, 320 kbit/s", "mp3", "-ar 44100 -ac 2 -b:a 320k" },
    { "mp3, variable rate", "mp3", "-ar 44100 -ac 2 -q:a 2" },
};
constexpr int wavFormat = 0;
constexpr int constantMp3Format = 5;
constexpr int variableMp3Format = 6;

QString soundFile(int format, double seconds)
{
    static const QTemporaryDir folder;
    const Format& chosen = formats[format];
    QString path
        = folder.filePath(QStringLiteral("%1-%2.%3")
                              .arg(QString::number(format), QString::number(seconds), QLatin1String(chosen.suffix)));
    if (!QFile::exists(path))
        SoundMaker::makeNoise(path, seconds, QString::fromLatin1(chosen.arguments).split(QLatin1Char(' ')));
    return path;
}

void decodeWhole(benchmark::State& state)
{
    const auto format = int(state.range(0));
    state.SetLabel(formats[format].name);
    const QString path = soundFile(format, decodedSeconds);
    for ([[maybe_unused]] auto _ : state) {
        AudioDecoder decoder;
        decoder.setOutputSampleRate(SoundMaker::playedRate);
        decoder.setOutputChannels(2);
        decoder.setOutputSampleFormat(2);
        decoder.setFileName(path);
        decoder.open();
        while (!decoder.atEnd())
            benchmark::DoNotOptimize(decoder.decode(307200));
    }
    state.counters["times real time"]
        = benchmark::Counter(decodedSeconds, benchmark::Counter::kIsIterationInvariantRate);
}

void openToFirstChunk(benchmark::State& state)
{
    const auto format = int(state.range(0));
    state.SetLabel(formats[format].name);
    const QString path = soundFile(format, decodedSeconds);
    for ([[maybe_unused]] auto _ : state) {
        AudioSource source;
        source.open(path);
        source.decodeNextChunk();
    }
}

// Each time in a file that was just opened, at a place near its end: nothing of it is known yet.
void seekToFirstChunk(benchmark::State& state)
{
    const auto format = int(state.range(0));
    state.SetLabel(formats[format].name);
    const QString path = soundFile(format, hour);
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        AudioSource source;
        source.open(path);
        source.decodeNextChunk();
        state.ResumeTiming();
        source.seek(hour * 0.9);
        source.decodeNextChunk();
    }
}

} // namespace

BENCHMARK(decodeWhole)->DenseRange(0, int(std::size(formats)) - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(openToFirstChunk)->DenseRange(0, int(std::size(formats)) - 1)->Unit(benchmark::kMillisecond);
BENCHMARK(seekToFirstChunk)
    ->Arg(wavFormat)
    ->Arg(constantMp3Format)
    ->Arg(variableMp3Format)
    ->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
