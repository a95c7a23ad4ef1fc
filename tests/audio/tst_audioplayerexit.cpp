// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/audio/soundmaker.h"
#include "tests/audio/soundserver.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

class AudioPlayerExitTest : public QObject
{
    Q_OBJECT

private slots:
    void programEndsCleanlyWhilePlaying();
};

void AudioPlayerExitTest::programEndsCleanlyWhilePlaying()
{
    constexpr int exits = 100;
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("tone.wav"));
    SoundMaker::makeTone(file, 10);
    const SoundServer server;

    for (int count = 0; count < exits; ++count) {
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(QStringLiteral(VELLUMCAST_PLAYER_PROGRAM), { file, QString::number(count * 2) });

        QVERIFY(program.waitForFinished());

        const QByteArray output = program.readAll();
        QVERIFY2(program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0 && output.isEmpty(),
            output + QByteArray::number(program.exitCode()) + " after " + QByteArray::number(count * 2) + " ms");
    }
}

QTEST_GUILESS_MAIN(AudioPlayerExitTest)
#include "tst_audioplayerexit.moc"
