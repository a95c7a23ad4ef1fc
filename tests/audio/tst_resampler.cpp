// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/resampler.h"

#include <QtTest>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
}

namespace {

const Resampler::Output played{ 96000, 2, 2 };

CodecContextPointer codec(int sampleRate, int channels)
{
    CodecContextPointer context(avcodec_alloc_context3(nullptr));
    context->sample_rate = sampleRate;
    context->sample_fmt = AV_SAMPLE_FMT_S16;
    context->ch_layout.order = AV_CHANNEL_ORDER_UNSPEC;
    context->ch_layout.nb_channels = channels;
    return context;
}

FramePointer silentFrame(int sampleRate, int channels, int samples)
{
    FramePointer frame(av_frame_alloc());
    frame->sample_rate = sampleRate;
    frame->format = AV_SAMPLE_FMT_S16;
    frame->nb_samples = samples;
    av_channel_layout_default(&frame->ch_layout, channels);
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        qFatal("no memory");
    memset(frame->data[0], 0, size_t(samples) * size_t(channels) * 2);
    return frame;
}

} // namespace

class ResamplerTest : public QObject
{
    Q_OBJECT

private slots:
    void unusableSourcesAreRefused_data();
    void unusableSourcesAreRefused();
    void unknownLayoutsAreTakenAsTheUsualOnes();
    void flushedSamplesCompleteTheCount();
    void framesOfAnotherFormatAreNotAccepted();
    void restartForgetsWhatWasHeldBack();
};

void ResamplerTest::unusableSourcesAreRefused_data()
{
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<int>("channels");
    QTest::newRow("no rate") << 0 << 2;
    QTest::newRow("negative rate") << -1 << 2;
    QTest::newRow("no channels") << 44100 << 0;
    QTest::newRow("neither") << 0 << 0;
    QTest::newRow("more channels than can be mixed") << 44100 << 65;
}

void ResamplerTest::unusableSourcesAreRefused()
{
    QFETCH(int, sampleRate);
    QFETCH(int, channels);
    Resampler resampler;

    QVERIFY(!resampler.open(*codec(sampleRate, channels), played));

    QVERIFY(resampler.flush().isEmpty());
}

void ResamplerTest::unknownLayoutsAreTakenAsTheUsualOnes()
{
    Resampler resampler;

    for (int channels = 1; channels <= 8; ++channels)
        QVERIFY2(resampler.open(*codec(44100, channels), played), qPrintable(QString::number(channels)));
}

void ResamplerTest::flushedSamplesCompleteTheCount()
{
    Resampler resampler;
    QVERIFY(resampler.open(*codec(44100, 1), played));
    const FramePointer frame = silentFrame(44100, 1, 4410);

    const QByteArray first = resampler.convert(*frame, 0, 1000);
    const QByteArray second = resampler.convert(*frame, 1000, 3410);
    const QByteArray held = resampler.flush();

    QVERIFY(!held.isEmpty());
    QCOMPARE(first.size() + second.size() + held.size(), 9600 * resampler.bytesPerOutputFrame());
}

void ResamplerTest::framesOfAnotherFormatAreNotAccepted()
{
    Resampler resampler;
    QVERIFY(resampler.open(*codec(44100, 1), played));

    QVERIFY(resampler.accepts(*silentFrame(44100, 1, 10)));
    QVERIFY(!resampler.accepts(*silentFrame(44100, 2, 10)));
    QVERIFY(!resampler.accepts(*silentFrame(48000, 1, 10)));
    QVERIFY(resampler.reopen(*silentFrame(48000, 2, 10)));
    QVERIFY(resampler.accepts(*silentFrame(48000, 2, 10)));
}

void ResamplerTest::restartForgetsWhatWasHeldBack()
{
    Resampler resampler;
    QVERIFY(resampler.open(*codec(44100, 1), played));
    resampler.convert(*silentFrame(44100, 1, 4410), 0, 4410);

    resampler.restart();

    QVERIFY(resampler.flush().isEmpty());
}

QTEST_GUILESS_MAIN(ResamplerTest)
#include "tst_resampler.moc"
