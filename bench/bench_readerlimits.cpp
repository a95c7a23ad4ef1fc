// SPDX-License-Identifier: GPL-3.0-or-later
// What reading a file costs beside the tag library alone, beside both libraries as they come, and beside reading bytes;
// and what a whole scan costs beside reading. Processor time per file of the generated library.

#include "bench/benchcorpus.h"
#include "bench/benchmpd.h"
#include "bench/benchratio.h"
#include "bench/benchscanner.h"
#include "scan/metadatareader.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <taglib/fileref.h>
#include <taglib/tag.h>
#include <taglib/tpropertymap.h>

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace {

constexpr int rounds = 5;

void readBytes(const QByteArray& path)
{
    std::array<char, 65536> bytes;
    struct stat status = {};
    ::stat(path.constData(), &status);
    const int descriptor = ::open(path.constData(), O_RDONLY);
    if (descriptor < 0)
        return;
    if (::read(descriptor, bytes.data(), bytes.size()) < 0)
        std::perror("read");
    ::close(descriptor);
}

std::size_t readTags(const QByteArray& path)
{
    const TagLib::FileRef file(path.constData(), true, TagLib::AudioProperties::Average);
    return file.isNull() || !file.tag() ? 0 : file.tag()->properties().size();
}

void openDecoder(const AVFormatContext& format)
{
    const int index
        = av_find_best_stream(const_cast<AVFormatContext*>(&format), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    const AVCodec* decoder = index < 0 ? nullptr : avcodec_find_decoder(format.streams[index]->codecpar->codec_id);
    if (!decoder)
        return;
    AVCodecContext* codec = avcodec_alloc_context3(decoder);
    avcodec_parameters_to_context(codec, format.streams[index]->codecpar);
    avcodec_open2(codec, decoder, nullptr);
    avcodec_free_context(&codec);
}

// As the manuals have it.
void probePlainly(const QByteArray& path)
{
    const QString suffix = QFileInfo(QFile::decodeName(path)).suffix().toLower();
    const QByteArray name = suffix.startsWith("aif") ? QByteArray("aiff") : suffix.toLatin1();
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, path.constData(), av_find_input_format(name.constData()), nullptr) < 0)
        return;
    if (avformat_find_stream_info(format, nullptr) >= 0)
        openDecoder(*format);
    avformat_close_input(&format);
}

double timePerFile(const std::function<void(const QString&)>& read)
{
    const QStringList& files = BenchCorpus::files();
    return BenchRatio::processorTime(rounds, [&]() {
        for (const QString& file : files)
            read(file);
    }) / files.size();
}

void compareReaders()
{
    const double own = timePerFile([](const QString& file) { readMetaData(file); });
    const double tags = timePerFile([](const QString& file) { readTags(QFile::encodeName(file)); });
    const double plain = timePerFile([](const QString& file) {
        probePlainly(QFile::encodeName(file));
        readTags(QFile::encodeName(file));
    });
    const double bytes = timePerFile([](const QString& file) { readBytes(QFile::encodeName(file)); });
    BenchRatio::print("reading a file, beside the tag library alone", "us a file", own, tags, 3);
    BenchRatio::print("reading a file, beside both libraries used plainly", "us a file", own, plain, 1);
    BenchRatio::print("reading a file, beside 64 KiB of its bytes", "us a file", own, bytes, 100);
}

// The scan's microseconds a file, of all processors and as they pass.
void compareWithMpd(double processorTime, double passedTime)
{
    const std::optional<MpdScan> mpd = scanWithMpd(BenchCorpus::folder());
    if (!mpd) {
        std::puts("mpd is not installed, and was not compared with.");
        return;
    }
    const double toMicroseconds = 1e6 / BenchCorpus::files().size();
    BenchRatio::print(
        "scan into an empty table, beside mpd", "us a file", processorTime, mpd->processorTime * toMicroseconds, 0.35);
    BenchRatio::print(
        "the same as time passes, beside mpd", "us a file", passedTime, mpd->passedTime * toMicroseconds, 0.2);
    std::printf("mpd took up %d of %d files.\n", mpd->songs, BenchCorpus::files().size());
}

void compareScans()
{
    BenchScanner scanner;
    scanner.scan();
    const double read = timePerFile([](const QString& file) { readMetaData(file); });
    const int files = BenchCorpus::files().size();
    const double again = BenchRatio::processorTime(rounds, [&]() { scanner.scan(); }) / files;
    double empty = 0;
    double passed = 0;
    for (int round = 0; round < rounds; ++round) {
        scanner.clear();
        const double time
            = BenchRatio::processorTime(1, [&]() { passed = BenchRatio::passedTime(1, [&]() { scanner.scan(); }); });
        empty = round == 0 ? time / files : std::min(empty, time / files);
    }
    BenchRatio::print("scan into an empty table, beside reading alone", "us a file", empty, read, 2);
    BenchRatio::print("scan of a known folder, beside reading alone", "us a file", again, read, 2);
    std::printf("scan into an empty table: %.0f files a second\n", files / passed * 1e6);
    compareWithMpd(empty, passed / files);
}

} // namespace

int main(int argumentsCount, char** arguments)
{
    const QCoreApplication application(argumentsCount, arguments);
    av_log_set_level(AV_LOG_QUIET);
    compareReaders();
    compareScans();
    return 0;
}
