// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/audio/soundserver.h"

#include "tests/audio/soundmaker.h"

#include <QFile>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <csignal>

namespace {

constexpr double silence = 0.0005; // of full amplitude
constexpr int silentFrames = 480;
constexpr int patience = 20000; // milliseconds

// Without "norewinds" a device takes two seconds at a time.
QStringList testDevice()
{
    return { "module-null-sink", "sink_name=test", "norewinds=1", "rate=96000", "channels=2", "format=s32le" };
}

} // namespace

SoundServer::SoundServer()
{
    const QString socket = m_folder.filePath(QStringLiteral("native"));
    qputenv("PULSE_RUNTIME_PATH", QFile::encodeName(m_folder.path()));
    qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(socket));
    m_process.setStandardErrorFile(m_folder.filePath(QStringLiteral("server.log")));
    // Its file with the process's number is how pacmd finds it.
    m_process.start(QStringLiteral("pulseaudio"),
        { "-n", "--daemonize=no", "--exit-idle-time=-1", "--disallow-exit", "-L",
            "module-native-protocol-unix auth-anonymous=1 socket=" + socket, "-L", "module-cli-protocol-unix", "-L",
            testDevice().join(QLatin1Char(' ')), "-L", "module-null-sink sink_name=slow" });
    if (!QTest::qWaitFor([this] { return isAnswering(); }, patience))
        qFatal("pulseaudio does not start");
    choose(QStringLiteral("test"));
}

SoundServer::~SoundServer()
{
    kill();
}

bool SoundServer::isAnswering() const
{
    return ask({ "list", "short", "sinks" }).contains("slow");
}

QByteArray SoundServer::ask(const QStringList& arguments) const
{
    QProcess question;
    question.start(QStringLiteral("pactl"), arguments);
    const bool isAnswered = question.waitForFinished() && question.exitCode() == 0;
    return isAnswered ? question.readAllStandardOutput() : QByteArray();
}

void SoundServer::control(const QStringList& arguments)
{
    if (QProcess::execute(QStringLiteral("pactl"), arguments) != 0)
        qFatal("pactl refuses %s", qPrintable(arguments.join(QLatin1Char(' '))));
}

void SoundServer::choose(const QString& device)
{
    control({ QStringLiteral("set-default-sink"), device });
}

void SoundServer::putToSleep(const QString& device)
{
    control({ QStringLiteral("suspend-sink"), device, QStringLiteral("1") });
}

void SoundServer::letGoOn(const QString& device)
{
    control({ QStringLiteral("suspend-sink"), device, QStringLiteral("0") });
}

void SoundServer::removeDevices()
{
    control({ "unload-module", "module-null-sink" });
}

void SoundServer::addDevice()
{
    control(QStringList{ "load-module" } + testDevice());
}

// pactl cannot do this.
void SoundServer::endStreams()
{
    const QList<QByteArray> streams = ask({ "list", "short", "sink-inputs" }).split('\n');
    for (const QByteArray& stream : streams) {
        const QString number = QString::fromLatin1(stream.left(stream.indexOf('\t')));
        if (!number.isEmpty() && QProcess::execute(QStringLiteral("pacmd"), { "kill-sink-input", number }) != 0)
            qFatal("pacmd cannot end stream %s", qPrintable(number));
    }
}

void SoundServer::freeze()
{
    ::kill(pid_t(m_process.processId()), SIGSTOP);
}

void SoundServer::wake()
{
    ::kill(pid_t(m_process.processId()), SIGCONT);
}

void SoundServer::kill()
{
    m_process.kill();
    m_process.waitForFinished();
}

SoundRecording::SoundRecording()
{
    m_process.start(QStringLiteral("parec"),
        { "--device=test.monitor", "--format=s32le", "--rate=96000", "--channels=2", "--latency-msec=20", "--raw" });
    if (!QTest::qWaitFor([this] { return !sound().isEmpty(); }, patience))
        qFatal("nothing is recorded");
}

SoundRecording::~SoundRecording()
{
    m_process.kill();
    m_process.waitForFinished();
}

QByteArray SoundRecording::sound()
{
    m_sound += m_process.readAllStandardOutput();
    return m_sound;
}

bool SoundRecording::waitForSound(double seconds)
{
    return QTest::qWaitFor(
        [this, seconds] {
            int frames = 0;
            for (const SoundSpan& span : soundSpans(sound()))
                frames += span.length();
            return frames >= seconds * SoundMaker::playedRate;
        },
        patience);
}

bool SoundRecording::waitForSilence(double seconds)
{
    return QTest::qWaitFor(
        [this, seconds] {
            const int size = int(seconds * SoundMaker::playedRate) * SoundMaker::playedFrameSize;
            return sound().size() >= size && soundSpans(sound().right(size)).isEmpty();
        },
        patience);
}

QVector<SoundSpan> soundSpans(const QByteArray& sound)
{
    const QVector<double> samples = SoundMaker::leftChannel(sound);
    QVector<SoundSpan> spans;
    for (int index = 0; index < samples.size(); ++index) {
        if (std::abs(samples.at(index)) < silence)
            continue;
        if (spans.isEmpty() || index - spans.last().end >= silentFrames)
            spans.append({ index, index });
        spans.last().end = index + 1;
    }
    return spans;
}

QVector<int> periods(const QByteArray& sound, const SoundSpan& span)
{
    const QVector<double> samples = SoundMaker::leftChannel(sound);
    QVector<int> distances;
    int lastCrossing = -1;
    for (int index = span.begin + 1; index < span.end; ++index) {
        if (samples.at(index - 1) >= 0 || samples.at(index) < 0)
            continue;
        if (lastCrossing >= 0)
            distances.append(index - lastCrossing);
        lastCrossing = index;
    }
    return distances;
}
