// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/metadatareader.h"

#include "tests/scan/permissions.h"
#include "tests/scan/soundfiles.h"
#include "tests/support/testsupport.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

using namespace SoundFiles;

namespace {

QVariantMap recordWithoutSound(const QString& path, const QString& fileName, const QString& fileType)
{
    MetaData record{ QVariantMap() };
    record.setFilePath(path);
    record.setFileName(fileName);
    record.setFileType(fileType);
    return record.toVariantMap();
}

QVariantMap withoutError(const MetaData& record)
{
    MetaData copy = record;
    copy.setError({});
    return copy.toVariantMap();
}

} // namespace

class MetaDataReaderTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void emptyPathIsReported();
    void unreadableFilesAreReported_data();
    void unreadableFilesAreReported();
    void pipesAndDevicesAreNotOpened();
    void directoryNamedLikeAFileIsReported();
    void fileWithoutAudioStreamIsReported();
    void failedRecordHasNothingButItsNames();
    void streamPropertiesComeFromTheFile_data();
    void streamPropertiesComeFromTheFile();
    void upperCaseSuffixSelectsTheFormat();
    void waveDataInAnMp3FileIsReadAsMp3();
    void mp3FileIsReadWhereverItsFirstFrameLies_data();
    void mp3FileIsReadWhereverItsFirstFrameLies();
    void fileWithAnUnknownSuffixIsDetected();
    void descriptionTakesTheFirstSource_data();
    void descriptionTakesTheFirstSource();
    void originReferenceIsComposed_data();
    void originReferenceIsComposed();
    void tagsWinOverTheDictionary();
    void dictionaryFillsMissingTags();
    void yearAndBitrateComeFromTheirOwnKeysOnly();
    void newRecordHasDefaults();
    void severalValuesAreJoinedWithABlank();
    void replacementCharactersAreRemoved();
    void laterOfTwoEntriesThatDifferInCaseWins();
    void fileUnknownToTheTagLibraryIsRead();
    void unusualNamesAreRead_data();
    void unusualNamesAreRead();
    void nothingIsWrittenToTheFile();
    void readOnlyFileIsRead();
    void fileWithoutPermissionIsReported();

private:
    QString write(const QString& name, const QByteArray& contents);

    QScopedPointer<QTemporaryDir> m_folder;
};

void MetaDataReaderTest::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
}

QString MetaDataReaderTest::write(const QString& name, const QByteArray& contents)
{
    QString path = m_folder->filePath(name);
    TestSupport::writeFile(path, contents);
    return path;
}

void MetaDataReaderTest::emptyPathIsReported()
{
    const MetaData record = readMetaData({});

    QCOMPARE(record.error(), QStringLiteral("File name is empty"));
    QCOMPARE(withoutError(record), recordWithoutSound({}, {}, {}));
}

void MetaDataReaderTest::unreadableFilesAreReported_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("contents");
    for (const char* suffix : { "wav", "mp3", "aif", "aiff" }) {
        const QString name = QStringLiteral("take.") + QLatin1String(suffix);
        QTest::addRow("text in .%s", suffix) << name << QByteArray("This is no sound at all.\n").repeated(40);
        QTest::addRow("empty .%s", suffix) << name << QByteArray("");
        QTest::addRow("one byte in .%s", suffix) << name << QByteArray("R");
        QTest::addRow("missing .%s", suffix) << name << QByteArray();
    }
    QTest::newRow("header without chunks") << QStringLiteral("a.wav") << QByteArray("RIFF\4\0\0\0WAVE", 12);
    QTest::newRow("big-endian file") << QStringLiteral("a.wav") << QByteArray("RIFX" + wave().mid(4));
}

void MetaDataReaderTest::unreadableFilesAreReported()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, contents);
    const QString path = contents.isNull() ? m_folder->filePath(name) : write(name, contents);

    const MetaData record = readMetaData(path);

    QCOMPARE(record.filePath(), path);
    if (name == QLatin1String("a.wav"))
        QVERIFY(!record.error().isEmpty());
    else
        QCOMPARE(record.error(), QStringLiteral("Unable to open input"));
}

void MetaDataReaderTest::pipesAndDevicesAreNotOpened()
{
    const QString pipe = m_folder->filePath(QStringLiteral("pipe.wav"));
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const QString device = m_folder->filePath(QStringLiteral("device.wav"));
    QVERIFY(QFile::link(QStringLiteral("/dev/zero"), device));
    const QString loop = m_folder->filePath(QStringLiteral("loop.wav"));
    QVERIFY(QFile::link(loop, loop));

    for (const QString& path : { pipe, device, loop }) {
        QCOMPARE(readMetaData(path).error(), QStringLiteral("Unable to open input"));
        QVERIFY(readTagProperties(path).isEmpty());
    }
}

void MetaDataReaderTest::directoryNamedLikeAFileIsReported()
{
    const QString path = m_folder->filePath(QStringLiteral("folder.wav"));
    QVERIFY(QDir().mkpath(path));

    QCOMPARE(readMetaData(path).error(), QStringLiteral("Unable to open input"));
}

void MetaDataReaderTest::fileWithoutAudioStreamIsReported()
{
    const QString path = write(QStringLiteral("picture.y4m"), silentVideo());

    QCOMPARE(readMetaData(path).error(), QStringLiteral("No audio stream found"));
}

void MetaDataReaderTest::failedRecordHasNothingButItsNames()
{
    // The tag alone is fine; without sound behind it nothing of it may be taken.
    const QString path = write(QStringLiteral("Tag Only.MP3"), id3Tag(id3Text("TIT2", "A title")));

    const MetaData record = readMetaData(path);

    QVERIFY(!record.error().isEmpty());
    QCOMPARE(withoutError(record), recordWithoutSound(path, QStringLiteral("Tag Only.MP3"), QStringLiteral("mp3")));
}

void MetaDataReaderTest::streamPropertiesComeFromTheFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("bits");
    QTest::addColumn<double>("duration");
    const QString name = QStringLiteral("take.wav");
    QTest::newRow("16-bit WAVE") << name << wave() << 44100 << 2 << 16 << 0.1;
    QTest::newRow("24-bit WAVE") << name << wave({ 24, 96000, 1, 4800 }) << 96000 << 1 << 24 << 0.05;
    QTest::newRow("8-bit WAVE") << name << wave({ 8, 8000, 1, 8000 }) << 8000 << 1 << 8 << 1.0;
    QTest::newRow("float WAVE") << name << wave({ 32, 48000, 2, 480, SampleKind::Float }) << 48000 << 2 << 32 << 0.01;
    QTest::newRow("16-bit AIFF") << QStringLiteral("take.aif") << aiff() << 44100 << 2 << 16 << 0.1;
    QTest::newRow("24-bit AIFF") << QStringLiteral("take.aiff") << aiff({ 24, 48000, 2, 4800 }) << 48000 << 2 << 24
                                 << 0.1;
    QTest::newRow("MP3") << QStringLiteral("take.mp3") << mp3(40) << 44100 << 2 << 32 << 40 * 1152 / 44100.0;
}

void MetaDataReaderTest::streamPropertiesComeFromTheFile()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, contents);
    QFETCH(double, duration);
    // The length of an MP3 file without a table of contents is estimated from its size.
    const double tolerance = name.endsWith(QLatin1String("mp3")) ? 0.03 : 0.001;

    const MetaData record = readMetaData(write(name, contents));

    QCOMPARE(record.error(), QString());
    QCOMPARE(record.fileName(), name);
    QCOMPARE(record.fileType(), name.section(QLatin1Char('.'), 1));
    QTEST(record.sampleRate(), "sampleRate");
    QTEST(record.channelsCount(), "channels");
    QTEST(record.bitsPerSample(), "bits");
    QVERIFY2(qAbs(record.duration() - duration) < tolerance, qPrintable(QString::number(record.duration())));
}

void MetaDataReaderTest::upperCaseSuffixSelectsTheFormat()
{
    const QString path = write(QStringLiteral("TAKE.WAV"), wave());

    const MetaData record = readMetaData(path);

    QCOMPARE(record.error(), QString());
    QCOMPARE(record.fileType(), QStringLiteral("wav"));
    QCOMPARE(probeStreamInfo(path).value(QStringLiteral("format")).toString(), QStringLiteral("wav"));
    // Left to itself FFmpeg would see what this really is.
    const QString renamed = write(QStringLiteral("RENAMED.AIF"), wave());
    QCOMPARE(readMetaData(renamed).error(), QStringLiteral("Unable to open input"));
}

void MetaDataReaderTest::waveDataInAnMp3FileIsReadAsMp3()
{
    const QString path = write(QStringLiteral("renamed.mp3"), wave({ 16, 44100, 2, 44100 }));

    const QVariantMap probe = probeStreamInfo(path);
    const MetaData record = readMetaData(path);

    QCOMPARE(record.error(), QString());
    QCOMPARE(probe.value(QStringLiteral("format")).toString(), QStringLiteral("mp3"));
    QVERIFY(record.channelsCount() <= 0);
}

void MetaDataReaderTest::mp3FileIsReadWhereverItsFirstFrameLies_data()
{
    QTest::addColumn<QByteArray>("contents");
    const QByteArray tag = id3Tag(id3Text("TIT2", "A title"));
    const QByteArray junk = QByteArray("no frame ").repeated(10000);
    for (const int size : { 20000, 40000, 60000 }) {
        QTest::addRow("%d bytes of junk", size) << mp3(200, junk.left(size));
        QTest::addRow("%d bytes of junk behind a tag", size) << mp3(200, tag + junk.left(size));
    }
    QTest::newRow("zeros that the tag does not count") << mp3(200, tag + QByteArray(70000, '\0'));
    QTest::newRow("junk without an end") << mp3(0, tag + junk);
}

void MetaDataReaderTest::mp3FileIsReadWhereverItsFirstFrameLies()
{
    QFETCH(QByteArray, contents);

    const MetaData record = readMetaData(write(QStringLiteral("a.mp3"), contents));

    QCOMPARE(record.error(), QString());
    const bool hasFrames = contents.endsWith('\0');
    QCOMPARE(record.sampleRate(), hasFrames ? 44100 : 0);
}

void MetaDataReaderTest::fileWithAnUnknownSuffixIsDetected()
{
    for (const char* name : { "take", "take.xyz" }) {
        const QString path = write(QLatin1String(name), wave());

        QCOMPARE(readMetaData(path).error(), QString());
        QCOMPARE(probeStreamInfo(path).value(QStringLiteral("format")).toString(), QStringLiteral("wav"));
        QCOMPARE(readMetaData(path).bitsPerSample(), 16);
    }
}

void MetaDataReaderTest::descriptionTakesTheFirstSource_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<QString>("description");
    const QByteArray described = id3UserText("description", " as described ");
    const QByteArray noted = id3Comment("   ");
    const QByteArray titled = id3Text("TIT2", "the title");
    const auto tagged = [](const QByteArray& frames) {
        return mp3(20, id3Tag(frames));
    };
    const QString mpeg = QStringLiteral("a.mp3");
    const QString wav = QStringLiteral("a.wav");
    QTest::newRow("tag comment, trimmed") << mpeg << tagged(described + titled + id3Comment("  spoken \t")) << "spoken";
    QTest::newRow("blank tag comment") << mpeg << tagged(described + noted + titled) << " as described ";
    QTest::newRow("dictionary description") << mpeg << tagged(described + titled) << " as described ";
    // Blanks are a comment to the dictionary, which is not trimmed.
    QTest::newRow("dictionary comment") << mpeg << tagged(noted + titled) << "   ";
    QTest::newRow("dictionary comment without a tag")
        << wav << wave({}, infoChunk({ { "ICMT", " noted " } })) << " noted ";
    QTest::newRow("dictionary title") << mpeg << tagged(titled) << "the title";
    QTest::newRow("WAVE with only a genre")
        << wav << wave({}, infoChunk({ { "IGNR", "the genre" } })) << "a.wav (No description found)";
    QTest::newRow("AIFF with only a genre")
        << QStringLiteral("a.aif") << aiff({}, id3Chunk(id3Text("TCON", "the genre"), true)) << "the genre";
    QTest::newRow("MP3 with only a genre")
        << QStringLiteral("a.mp3") << mp3(20, id3Tag(id3Text("TCON", "the genre"))) << "a.mp3 (No description found)";
    QTest::newRow("nothing") << QStringLiteral("50%1 %2.wav") << wave() << "50%1 %2.wav (No description found)";
}

void MetaDataReaderTest::descriptionTakesTheFirstSource()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, contents);

    const MetaData record = readMetaData(write(name, contents));

    QCOMPARE(record.error(), QString());
    QTEST(record.description(), "description");
}

void MetaDataReaderTest::originReferenceIsComposed_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<QString>("originReference");
    const QString wav = QStringLiteral("a.wav");
    const QString mpeg = QStringLiteral("a.mp3");
    const QByteArray broadcast = broadcastChunk("", "X17");
    const QByteArray north = id3Text("TPUB", "North");
    const QByteArray volume = id3Text("TOAL", "Vol2");
    const QByteArray encodedBy = id3Text("TENC", "Nobody");
    const QByteArray encoder = id3Text("TSSE", "Encoder 3");
    // FFmpeg drops the ID3 tag of a WAVE file that also has texts of its own.
    QTest::newRow("all of a WAVE file") << wav
                                        << wave({},
                                               id3Chunk(north + volume + id3UserText("originator_reference", "X17")))
                                        << "North Vol2 X17";
    QTest::newRow("originator only") << wav << wave({}, broadcast) << "X17";
    QTest::newRow("publisher only") << mpeg << mp3(20, id3Tag(north + encodedBy + encoder)) << "North";
    QTest::newRow("volume without publisher") << mpeg << mp3(20, id3Tag(volume)) << "";
    QTest::newRow("volume with encoded-by") << mpeg << mp3(20, id3Tag(volume + encodedBy + encoder)) << "Nobody";
    QTest::newRow("encoder") << mpeg << mp3(20, id3Tag(encoder)) << "Encoder 3";
    QTest::newRow("encoder and originator")
        << wav << wave({}, broadcast + infoChunk({ { "ISFT", "Recorder" } })) << "Recorder X17";
    QTest::newRow("originator of an MP3 file")
        << mpeg << mp3(20, id3Tag(id3UserText("originator_reference", "X17"))) << "";
    QTest::newRow("nothing") << wav << wave() << "";
}

void MetaDataReaderTest::originReferenceIsComposed()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, contents);

    const MetaData record = readMetaData(write(name, contents));

    QCOMPARE(record.error(), QString());
    QTEST(record.originReference(), "originReference");
}

void MetaDataReaderTest::tagsWinOverTheDictionary()
{
    // Of two blocks of texts in one file the tag library takes the ID3 one, FFmpeg the other.
    const QByteArray frames = id3Text("TIT2", "tag title") + id3Text("TPE1", "tag artist")
        + id3Text("TALB", "tag album") + id3Text("TCON", "tag genre") + id3Comment("tag comment");
    const QByteArray texts = infoChunk({ { "INAM", "info title" }, { "IART", "info artist" }, { "IPRD", "info album" },
        { "IGNR", "info genre" }, { "ICMT", "info comment" } });
    const QString path = write(QStringLiteral("a.wav"), wave({}, id3Chunk(frames) + texts));

    const MetaData record = readMetaData(path);

    QCOMPARE(record.title(), QStringLiteral("tag title"));
    QCOMPARE(record.artist(), QStringLiteral("tag artist"));
    QCOMPARE(record.album(), QStringLiteral("tag album"));
    QCOMPARE(record.genre(), QStringLiteral("tag genre"));
    QCOMPARE(record.comments(), QStringLiteral("tag comment"));
}

void MetaDataReaderTest::dictionaryFillsMissingTags()
{
    // Of an AIFF file the tag library reads the ID3 tag only.
    const QByteArray texts = chunk("NAME", "the name", true) + chunk("ANNO", "the note", true);
    const QString path = write(QStringLiteral("a.aiff"), aiff({}, texts));

    const MetaData record = readMetaData(path);

    QVERIFY(readTagProperties(path).isEmpty());
    QCOMPARE(record.title(), QStringLiteral("the name"));
    QCOMPARE(record.comments(), QStringLiteral("the note"));
    QCOMPARE(record.description(), QStringLiteral("the note"));
}

void MetaDataReaderTest::yearAndBitrateComeFromTheirOwnKeysOnly()
{
    const MetaData dated = readMetaData(write(QStringLiteral("a.mp3"), mp3(20, id3Tag(id3Text("TDRC", "1999")))));
    const MetaData named = readMetaData(
        write(QStringLiteral("b.mp3"), mp3(20, id3Tag(id3UserText("YEAR", "2001") + id3UserText("BITRATE", "320")))));

    QCOMPARE(dated.year(), QString());
    QCOMPARE(dated.bitrate(), QString());
    QCOMPARE(named.year(), QStringLiteral("2001"));
    QCOMPARE(named.bitrate(), QStringLiteral("320"));
}

void MetaDataReaderTest::newRecordHasDefaults()
{
    const MetaData record = readMetaData(write(QStringLiteral("a.wav"), wave()));

    QCOMPARE(record.rating(), 1.0);
    QCOMPARE(record.playlist(), 0);
    QCOMPARE(record.library(), QString());
    QCOMPARE(record.id(), qint64(0));
    QCOMPARE(record.scanTimestamp(), qint64(0));
}

void MetaDataReaderTest::severalValuesAreJoinedWithABlank()
{
    const QByteArray artists = QByteArray("First") + '\0' + "Second";
    const QString path = write(QStringLiteral("a.mp3"), mp3(20, id3Tag(id3Text("TPE1", artists))));

    QCOMPARE(readMetaData(path).artist(), QStringLiteral("First Second"));
}

void MetaDataReaderTest::replacementCharactersAreRemoved()
{
    // A single byte of Latin-1 is no UTF-8.
    const QString path = write(QStringLiteral("a.wav"), wave({}, broadcastChunk("Caf\xe9 bar", "")));

    QCOMPARE(probeStreamInfo(path).value(QStringLiteral("metadata/comment")).toString(), QStringLiteral("Caf bar"));
}

void MetaDataReaderTest::laterOfTwoEntriesThatDifferInCaseWins()
{
    // FFmpeg tells letters outside ASCII apart by their case.
    const QByteArray frames = id3UserText("\xc3\xa9", "small") + id3UserText("\xc3\x89", "capital");
    const QString path = write(QStringLiteral("a.mp3"), mp3(20, id3Tag(frames)));

    const QVariantMap probe = probeStreamInfo(path);

    QCOMPARE(probe.value(QStringLiteral("metadata/\u00e9")).toString(), QStringLiteral("capital"));
    QVERIFY(!probe.contains(QStringLiteral("metadata/\u00c9")));
}

void MetaDataReaderTest::fileUnknownToTheTagLibraryIsRead()
{
    const QString path = write(QStringLiteral("a.au"), sunAudio());

    const MetaData record = readMetaData(path);

    QVERIFY(readTagProperties(path).isEmpty());
    QCOMPARE(record.error(), QString());
    QCOMPARE(record.sampleRate(), 8000);
}

void MetaDataReaderTest::unusualNamesAreRead_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("letters outside ASCII") << QStringLiteral("\u00dcbung \u96f7\u9cf4 \u0413\u0440\u043e\u043c.wav");
    QTest::newRow("blanks") << QStringLiteral("  two  blanks .wav");
    QTest::newRow("quotes") << QStringLiteral("He said \"Go\", 'now'.wav");
    QTest::newRow("line feed") << QStringLiteral("first line\nsecond line.wav");
    QTest::newRow("percent signs") << QStringLiteral("100%3_%4 %20.wav");
    QTest::newRow("like an address") << QStringLiteral("http:concat:x|y.wav");
    QTest::newRow("backslash") << QStringLiteral("back\\slash.wav");
}

void MetaDataReaderTest::unusualNamesAreRead()
{
    QFETCH(QString, name);

    const MetaData record = readMetaData(write(name, wave({}, infoChunk({ { "IART", "somebody" } }))));

    QCOMPARE(record.error(), QString());
    QCOMPARE(record.fileName(), name);
    QCOMPARE(record.artist(), QStringLiteral("somebody"));
}

void MetaDataReaderTest::nothingIsWrittenToTheFile()
{
    const QByteArray contents = mp3(20, id3Tag(id3Text("TIT2", "A title")));
    const QString path = write(QStringLiteral("a.mp3"), contents);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    const QDateTime longAgo = QDateTime::fromSecsSinceEpoch(1000000000);
    QVERIFY(file.setFileTime(longAgo, QFileDevice::FileModificationTime));
    file.close();

    QCOMPARE(readMetaData(path).title(), QStringLiteral("A title"));

    QCOMPARE(QFileInfo(path).lastModified(), longAgo);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), contents);
}

void MetaDataReaderTest::readOnlyFileIsRead()
{
    const QString path = write(QStringLiteral("a.mp3"), mp3(20, id3Tag(id3Text("TIT2", "A title"))));
    QVERIFY(QFile::setPermissions(path, QFileDevice::ReadOwner));

    QCOMPARE(readMetaData(path).title(), QStringLiteral("A title"));
}

void MetaDataReaderTest::fileWithoutPermissionIsReported()
{
    const QString path = write(QStringLiteral("a.wav"), wave());
    QVERIFY(QFile::setPermissions(path, {}));
    const PermissionsCount permissionsCount;

    QCOMPARE(readMetaData(path).error(), QStringLiteral("Unable to open input"));
    QVERIFY(readTagProperties(path).isEmpty());
}

QTEST_GUILESS_MAIN(MetaDataReaderTest)
#include "tst_metadatareader.moc"
