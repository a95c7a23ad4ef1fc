// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/id3defuser.h"

#include "scan/metadatareader.h"
#include "tests/scan/soundfiles.h"
#include "tests/support/testsupport.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <taglib/fileref.h>
#include <taglib/tag.h>
#include <taglib/tpropertymap.h>
#include <taglib/tstringlist.h>

#include <sys/resource.h>

using namespace SoundFiles;

namespace {

// The most bytes that this process has used so far.
qint64 peakMemory()
{
    rusage usage = {};
    if (::getrusage(RUSAGE_SELF, &usage) != 0)
        qFatal("Cannot read the memory use");
    return qint64(usage.ru_maxrss) * 1024;
}

// What the tag library says of a file that is left as it is.
QVariantMap plainTags(const QString& path)
{
    const TagLib::FileRef reference(QFile::encodeName(path).constData());
    QVariantMap tags;
    const TagLib::PropertyMap properties = reference.tag()->properties();
    for (const auto& [name, values] : properties)
        tags.insert(TStringToQString(name).toLower(), TStringToQString(values.toString(" ")));
    return tags;
}

QByteArray oldText(const char* identifier, const QByteArray& text)
{
    return id3OldFrame(identifier, '\0' + text);
}

// Has as many bytes behind its head as asked for.
QByteArray oldComment(const QByteArray& text, int size)
{
    return id3OldFrame("COMM", (QByteArray("\0eng\0", 5) + text).leftJustified(size, '.'));
}

} // namespace

/// Reads the tags of whole files, as the reader of a scan does.
class Id3DefuserTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void endlessChaptersDoNotCrashTheTagReader();
    void chapterLikeTextStaysAsItIs();
    void chapterLikeTextWithEscapedLettersStaysAsItIs();
    void compressedLookingTextStaysAsItIs_data();
    void compressedLookingTextStaysAsItIs();
    void compressedTextIsRead();
    void compressedFramesDoNotEatMemory_data();
    void compressedFramesDoNotEatMemory();

private:
    QString write(const QString& name, const QByteArray& contents);

    QScopedPointer<QTemporaryDir> m_folder;
};

void Id3DefuserTest::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
}

QString Id3DefuserTest::write(const QString& name, const QByteArray& contents)
{
    QString path = m_folder->filePath(name);
    TestSupport::writeFile(path, contents);
    return path;
}

void Id3DefuserTest::endlessChaptersDoNotCrashTheTagReader()
{
    const QByteArray frames = id3Text("TIT2", "A title") + nestedChapters(100000) + id3Text("TPE1", "An artist");
    const QString mpeg = write(QStringLiteral("a.mp3"), mp3(20, id3Tag(frames)));
    const QString waveFile = write(QStringLiteral("a.wav"), wave({}, id3Chunk(frames)));

    for (const QString& path : { mpeg, waveFile }) {
        const QVariantMap tags = readTagProperties(path);
        QCOMPARE(tags.value(QStringLiteral("title")).toString(), QStringLiteral("A title"));
        QCOMPARE(tags.value(QStringLiteral("artist")).toString(), QStringLiteral("An artist"));
    }
}

void Id3DefuserTest::chapterLikeTextStaysAsItIs()
{
    const QByteArray frames
        = id3Text("TIT2", "CHAPTER CTOC CHAP") + id3Comment("CHAP CTOCTOCTOC") + id3Text("TPE1", "X");
    const QString mpeg = write(QStringLiteral("a.mp3"), mp3(20, id3Tag(frames)));

    const MetaData record = readMetaData(mpeg);

    QCOMPARE(record.title(), QStringLiteral("CHAPTER CTOC CHAP"));
    QCOMPARE(record.comments(), QStringLiteral("CHAP CTOCTOCTOC"));
}

// In Latin-1 and its kin, bytes of 255 are letters.
void Id3DefuserTest::chapterLikeTextWithEscapedLettersStaysAsItIs()
{
    const QByteArray frames = oldText("TIT2", "CHAPTER \xff\xe7\xfb\xea") + oldText("TPE1", "CTOC\xff\xff\xff");
    const QString path = write("a.mp3", mp3(20, id3OldTag(frames)));

    const QVariantMap tags = readTagProperties(path);

    QCOMPARE(tags, plainTags(path));
    QCOMPARE(tags.value("title").toString(), QString::fromLatin1("CHAPTER \xff\xe7\xfb\xea"));
}

void Id3DefuserTest::compressedLookingTextStaysAsItIs_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<QStringList>("keys");
    const QByteArray comment = oldComment("Box (Stereo) ", 511);
    const QByteArray title = oldText("TIT2", "A title");
    const QByteArray artist = oldText("TPE1", "An artist");
    const QByteArray picture = id3OldFrame("APIC", QByteArray("\0image/png\0\3\0", 13).leftJustified(20000, 'P'));
    const QByteArray texts = infoChunk({ { "ICMT", "info comment" }, { "INAM", "info title" } });
    const QByteArray userText = id3OldFrame("TXXX", QByteArray("\0n\0Box (Stereo) ", 16).leftJustified(118, '.'));
    const auto tagged = [](const QByteArray& frames) {
        return mp3(20, id3OldTag(frames));
    };
    QTest::newRow("WAVE with texts and a picture")
        << "a.wav"
        << wave({}, texts + chunk("id3 ", id3OldTag(title + comment + artist + oldText("TCON", "A genre") + picture)))
        << QStringList{ "title", "comment", "artist", "genre" };
    QTest::newRow("padding") << "a.mp3" << tagged(comment + title + artist + QByteArray(5000, '\0'))
                             << QStringList{ "comment", "title", "artist" };
    QTest::newRow("long comment") << "a.mp3" << tagged(oldComment("Box (Stereo)", 11000)) << QStringList{ "comment" };
    QTest::newRow("many texts") << "a.mp3" << tagged(userText.repeated(40) + oldComment("Box (Stereo) ", 118))
                                << QStringList{ "comment" };
    QTest::newRow("address of 255 letters")
        << "a.mp3" << tagged(id3OldFrame("WOAR", QByteArray("http://x ").leftJustified(255, '8')) + title + picture)
        << QStringList{ "title" };
    QTest::newRow("escaped") << "a.mp3"
                             << mp3(20, id3OldTag(comment + oldComment("x \xff \xff", 767) + title + picture, true))
                             << QStringList{ "comment", "title" };
}

void Id3DefuserTest::compressedLookingTextStaysAsItIs()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, contents);
    QFETCH(QStringList, keys);
    const QString path = write(name, contents);

    const QVariantMap tags = readTagProperties(path);

    QCOMPARE(tags, plainTags(path));
    for (const QString& key : keys)
        QVERIFY2(!tags.value(key).toString().isEmpty(), qPrintable(key));
}

void Id3DefuserTest::compressedTextIsRead()
{
    const QByteArray picture = id3Frame("APIC", QByteArray("\0image/png\0\3\0", 13).leftJustified(20000, 'P'));
    QByteArray longText;
    for (int number = 0; number < 400; ++number)
        longText += QByteArray::number(number * number) + ' ';
    const QByteArray frames
        = id3CompressedText("TIT2", "a packed title") + id3CompressedText("TALB", longText) + picture;
    const QByteArray oldFrames = id3OldFrame("TIT2", id3Packed("a packed title"), '\x80')
        + id3OldFrame("TALB", id3Packed(longText), '\x80') + picture;

    for (const QByteArray& tag : { id3Tag(frames), id3OldTag(oldFrames), id3OldTag(oldFrames, true) }) {
        const QVariantMap tags = readTagProperties(write("a.wav", wave({}, chunk("id3 ", tag))));
        QCOMPARE(tags.value("title").toString(), QStringLiteral("a packed title"));
        QCOMPARE(tags.value("album").toString(), QString::fromLatin1(longText));
    }
}

void Id3DefuserTest::compressedFramesDoNotEatMemory_data()
{
    QTest::addColumn<QByteArray>("tag");
    QTest::addColumn<bool>("isEndOfTag");
    const QByteArray megabytes = QByteArray(200 * 1024 * 1024, 'a');
    const QByteArray title = id3Text("TIT2", "A title");
    const QByteArray artist = id3Text("TPE1", "An artist");
    const auto between = [&](const QByteArray& frames) {
        return id3Tag(title + frames + artist);
    };
    QTest::newRow("one") << between(id3CompressedText("TALB", megabytes)) << false;
    QTest::newRow("many") << between(id3CompressedText("TALB", megabytes.left(2 * 1024 * 1024)).repeated(300)) << false;
    QTest::newRow("in a chapter") << between(
        id3Frame("CHAP", QByteArray("a\0", 2) + QByteArray(16, '\0') + id3CompressedText("TIT2", megabytes)))
                                  << false;
    const QByteArray packed = id3Packed(megabytes);
    const auto oldBetween = [&](const QByteArray& body, bool isEscaped) {
        return id3OldTag(
            oldText("TIT2", "A title") + id3OldFrame("TALB", body, '\x80') + oldText("TPE1", "An artist"), isEscaped);
    };
    QTest::newRow("version 3") << oldBetween(packed, false) << false;
    QTest::newRow("escaped") << oldBetween(packed, true) << false;
    // Where its size is escaped, a frame cannot be put out of action but by ending the tag.
    QTest::newRow("escaped size") << oldBetween(packed.leftJustified(0x3FFFF, '\0'), true) << true;
    QByteArray shortFrame = oldBetween(packed, false);
    shortFrame.replace(shortFrame.indexOf("TALB") + 4, 4, QByteArray("\0\0\0\x14", 4));
    QTest::newRow("size too small") << shortFrame << true;
    QByteArray oldName = oldBetween(packed, false);
    oldName.replace("TALB", QByteArray("TAL\0", 4));
    QTest::newRow("name of three letters") << oldName << false;
    QByteArray escapedLength = packed;
    escapedLength.replace(0, 4, "\xff\xff\xff\xff");
    QTest::newRow("escaped length") << oldBetween(escapedLength, true) << false;
    QByteArray escapedBody = escapedLength;
    escapedBody.replace("\xff", QByteArray("\xff\0", 2));
    QByteArray escapedFrame = id3Frame("TALB", escapedBody);
    escapedFrame[9] = '\x0b';
    QTest::newRow("escaped body in version 4") << between(escapedFrame) << false;
}

void Id3DefuserTest::compressedFramesDoNotEatMemory()
{
    QFETCH(QByteArray, tag);
    QFETCH(bool, isEndOfTag);
    const QString path = write("a.wav", wave({}, chunk("id3 ", tag)));
    const qint64 before = peakMemory();

    const QVariantMap tags = readTagProperties(path);

    // Unpacked they would take several gigabytes.
    QVERIFY(peakMemory() - before < qint64(1) << 30);
    QCOMPARE(tags.value("title").toString(), QStringLiteral("A title"));
    QCOMPARE(tags.value("artist").toString(), isEndOfTag ? QString() : QStringLiteral("An artist"));
}

QTEST_GUILESS_MAIN(Id3DefuserTest)
#include "tst_id3defuser.moc"
