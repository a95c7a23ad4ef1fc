// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/mediainput.h"

#include "tests/scan/soundfiles.h"
#include "tests/support/testsupport.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

using namespace SoundFiles;

Q_DECLARE_METATYPE(MediaInput::Failure)

class MediaInputTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void openInputTellsItsProperties();
    void dictionaryKeysAreLowerCase();
    void failuresTellTheirStep_data();
    void failuresTellTheirStep();
    void failedInputCanOpenAnotherFile();
    void closedInputCanOpenAnotherFile();
    void inputCanBeMoved();
    void suffixTableForcesFormats();
    void pipeIsRefusedWithoutWaiting();
    void playlistOpensNoOtherFile();
    void tailsWithoutEndAreNotWalkedThrough_data();
    void tailsWithoutEndAreNotWalkedThrough();
    void sizesBeyondTheFileAreSurvived_data();
    void sizesBeyondTheFileAreSurvived();

private:
    QString write(const QString& name, const QByteArray& contents);

    QScopedPointer<QTemporaryDir> m_folder;
};

void MediaInputTest::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
}

QString MediaInputTest::write(const QString& name, const QByteArray& contents)
{
    QString path = m_folder->filePath(name);
    TestSupport::writeFile(path, contents);
    return path;
}

void MediaInputTest::openInputTellsItsProperties()
{
    MediaInput input;

    QVERIFY(input.open(write("a.wav", wave({ 24, 48000, 2, 4800 }))));

    QVERIFY(input.isOpen());
    QCOMPARE(input.failure(), MediaInput::Failure::None);
    QCOMPARE(input.formatName(), QStringLiteral("wav"));
    QCOMPARE(input.sampleRate(), 48000);
    QCOMPARE(input.channelsCount(), 2);
    QCOMPARE(input.bitsPerSample(), 24);
    QCOMPARE(input.duration(), 0.1);
    QVERIFY(input.formatContext() && input.codecContext() && input.stream());
}

void MediaInputTest::dictionaryKeysAreLowerCase()
{
    MediaInput input;
    QVERIFY(input.open(write("a.mp3", mp3(20, id3Tag(id3UserText("Mood", "Dark \xe9!") + id3Text("TIT2", "Night"))))));

    const auto metadata = input.metadata();

    QVERIFY(metadata.contains({ QStringLiteral("mood"), QStringLiteral("Dark !") }));
    QVERIFY(metadata.contains({ QStringLiteral("title"), QStringLiteral("Night") }));
}

void MediaInputTest::failuresTellTheirStep_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<MediaInput::Failure>("failure");
    QTest::addColumn<QString>("errorText");
    QByteArray unknownCodec = wave();
    unknownCodec.replace(20, 2, "\x77\x77");
    QByteArray noChannels = wave();
    noChannels.replace(22, 2, QByteArray(2, '\0'));
    QTest::newRow("missing") << "a.wav" << QByteArray() << MediaInput::Failure::OpenInput
                             << "No such file or directory";
    QTest::newRow("text") << "a.wav" << QByteArray("no sound") << MediaInput::Failure::OpenInput
                          << "Invalid data found when processing input";
    QTest::newRow("no sound") << "a.y4m" << silentVideo() << MediaInput::Failure::FindAudioStream << "";
    QTest::newRow("unknown codec") << "a.wav" << unknownCodec << MediaInput::Failure::FindDecoder << "";
    QTest::newRow("no channels") << "a.wav" << noChannels << MediaInput::Failure::OpenCodec << "Invalid argument";
}

void MediaInputTest::failuresTellTheirStep()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, contents);
    const QString path = contents.isNull() ? m_folder->filePath(name) : write(name, contents);
    MediaInput input;

    QVERIFY(!input.open(path));

    QVERIFY(!input.isOpen());
    QTEST(input.failure(), "failure");
    QTEST(input.errorText(), "errorText");
}

void MediaInputTest::failedInputCanOpenAnotherFile()
{
    MediaInput input;
    QVERIFY(!input.open(write("a.wav", "no sound")));

    QVERIFY(input.open(write("b.wav", wave())));

    QCOMPARE(input.failure(), MediaInput::Failure::None);
    QCOMPARE(input.errorText(), QString());
}

void MediaInputTest::closedInputCanOpenAnotherFile()
{
    MediaInput input;
    QVERIFY(input.open(write("a.wav", wave())));

    input.close();
    QVERIFY(!input.isOpen());

    QVERIFY(input.open(write("b.aif", aiff())));
    QCOMPARE(input.formatName(), QStringLiteral("aiff"));
}

void MediaInputTest::inputCanBeMoved()
{
    MediaInput first;
    QVERIFY(first.open(write("a.wav", wave())));
    MediaInput second;
    QVERIFY(second.open(write("b.aif", aiff())));

    second = std::move(first);
    const MediaInput third(std::move(second));

    QCOMPARE(third.formatName(), QStringLiteral("wav"));
    QCOMPARE(third.sampleRate(), 44100);
}

void MediaInputTest::suffixTableForcesFormats()
{
    initialiseFfmpeg();

    for (const char* suffix : { "mp3", "wav", "aif", "aiff", "WAV", "Aiff" })
        QVERIFY2(inputFormatForSuffix(QLatin1String(suffix)), suffix);
    QCOMPARE(inputFormatForSuffix("aif"), inputFormatForSuffix("aiff"));
    for (const char* suffix : { "", "flac", "xyz", "wave" })
        QVERIFY2(!inputFormatForSuffix(QLatin1String(suffix)), suffix);
}

void MediaInputTest::pipeIsRefusedWithoutWaiting()
{
    const QString path = m_folder->filePath("pipe.wav");
    QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    MediaInput input;

    QVERIFY(!input.open(path));

    QCOMPARE(input.failure(), MediaInput::Failure::OpenInput);
    QVERIFY(!input.errorText().isEmpty());
}

void MediaInputTest::playlistOpensNoOtherFile()
{
    write("sound.mp3", mp3(200));
    const QString path
        = write("list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:5\n#EXTINF:5,\nsound.mp3\n#EXT-X-ENDLIST\n");
    MediaInput input;

    QVERIFY(!input.open(path));
}

void MediaInputTest::tailsWithoutEndAreNotWalkedThrough_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<bool>("isReadable");
    QTest::addColumn<int>("sampleRate");
    QTest::newRow("WAVE") << "a.wav" << wave() << true << 44100;
    QTest::newRow("AIFF") << "a.aif" << aiff() << true << 44100;
    QTest::newRow("MP3") << "a.mp3" << mp3() << true << 44100;
    QTest::newRow("nothing, as WAVE") << "a.wav" << QByteArray() << false << 0;
    // A sound of which nothing is known.
    QTest::newRow("nothing, as MP3") << "a.mp3" << QByteArray() << true << 0;
    QTest::newRow("nothing, detected") << "a" << QByteArray() << false << 0;
}

void MediaInputTest::tailsWithoutEndAreNotWalkedThrough()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, head);
    const QString path = write(name, head);
    // Eight gigabytes of zeros, which are empty chunks to a WAVE reader; they take no room on the disk.
    QVERIFY(QFile::resize(path, qint64(8) << 30));
    MediaInput input;

    QTEST(input.open(path), "isReadable");

    QTEST(input.isOpen() ? input.sampleRate() : 0, "sampleRate");
}

void MediaInputTest::sizesBeyondTheFileAreSurvived_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("contents");
    const QByteArray head = wave().left(36);
    const QByteArray sound = wave().mid(36);
    const QByteArray hugeSize("\xf0\xff\xff\xff", 4);
    QTest::newRow("list") << "a.wav" << QByteArray(head + "LIST" + hugeSize + "INFOICMT" + hugeSize + sound);
    QTest::newRow("broadcast chunk") << "a.wav" << QByteArray(head + "bext" + hugeSize + sound);
    QTest::newRow("sound") << "a.wav" << QByteArray(head + "data" + hugeSize + QByteArray(400, '\0'));
    QTest::newRow("AIFF text") << "a.aif" << QByteArray(aiff().left(38) + "NAME\x7f\xff\xff\xff" + aiff().mid(38));
    QTest::newRow("tag") << "a.mp3" << QByteArray(QByteArray("ID3\4\0\0\x7f\x7f\x7f\x7f", 10) + mp3());
    QTest::newRow("picture") << "a.mp3"
                             << mp3(20, id3Tag(QByteArray("APIC\x7f\x7f\x7f\x7f\0\0\0", 11) + QByteArray(64, 'x')));
}

void MediaInputTest::sizesBeyondTheFileAreSurvived()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, contents);
    MediaInput input;

    // Whether anything can be made of it is FFmpeg's to say; it says why not.
    if (!input.open(write(name, contents)))
        QVERIFY(!input.errorText().isEmpty());
    else
        QCOMPARE(input.sampleRate(), 44100);
}

QTEST_GUILESS_MAIN(MediaInputTest)
#include "tst_mediainput.moc"
