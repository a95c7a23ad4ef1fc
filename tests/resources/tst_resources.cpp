// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/resources.h"
#include "scan/libraryrules.h"

#include <QFile>
#include <QImage>
#include <QRegExp>
#include <QRegularExpression>
#include <QSet>
#include <QTextDocument>
#include <QtTest>

namespace {

constexpr int rulesCount = 712;
const char byteOrderMark[] = "\xEF\xBB\xBF";

QByteArray contents(const QString& name)
{
    QFile file(":/Resources/" + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

LibraryRules defaultRules()
{
    return parseLibraryRules(QString::fromUtf8(contents("LibraryEvaluationRules.txt").mid(3)));
}

// A file name that carries the code which the pattern asks for, with as few digits as it allows.
QString sampleName(const QString& pattern)
{
    QString code = pattern;
    code.replace(QLatin1String("\\s"), QLatin1String(" "));
    code.replace(QRegularExpression("\\\\d\\{2,2?\\}"), QStringLiteral("99"));
    code.replace(QLatin1String("\\d{1,}"), QLatin1String("9"));
    return code.startsWith('^') ? code.mid(1) + " gate.wav" : "Gate" + code + " gate.wav";
}

int firstMatch(const LibraryRules& rules, const QString& fileName)
{
    for (int index = 0; index < rules.size(); ++index) {
        if (rules.at(index).pattern.indexIn(fileName) >= 0)
            return index;
    }
    return -1;
}

int countOfShape(const QString& shape)
{
    const QRegularExpression expression(QRegularExpression::anchoredPattern(shape));
    int count = 0;
    const LibraryRules rules = defaultRules();
    for (const LibraryRule& rule : rules)
        count += expression.match(rule.pattern.pattern()).hasMatch() ? 1 : 0;
    return count;
}

} // namespace

class ResourcesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void pictureHasItsSize_data();
    void pictureHasItsSize();
    void wordMarkStaysSharpAtTwiceItsUsualHeight();
    void everyFrameOfTheBusySheetDiffersFromTheNext();
    void pageIsReadableText_data();
    void pageIsReadableText();
    void acknowledgementsNameWhatIsUsed();
    void rulesAreUtf8TextWithWindowsLineEnds();
    void everyLineIsOneValidRule();
    void noPatternStandsTwice();
    void ruleShapesHaveTheirProportions_data();
    void ruleShapesHaveTheirProportions();
    void everyRuleIsReachable();
    void ordinaryFileNamesHaveNoLibrary_data();
    void ordinaryFileNamesHaveNoLibrary();
};

void ResourcesTest::initTestCase()
{
    initialiseResources();
}

void ResourcesTest::pictureHasItsSize_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");

    QTest::newRow("busy sheet") << "Preloader.png" << QSize(240, 20);
    QTest::newRow("sharp busy sheet") << "Preloader@2x.png" << QSize(480, 40);
    QTest::newRow("magnifier") << "Search.png" << QSize(16, 16);
    QTest::newRow("sharp magnifier") << "Search@2x.png" << QSize(32, 32);
    QTest::newRow("sharp word mark") << "Vellumcast@2x.png" << 2 * QImage(":/Resources/Vellumcast.png").size();
    for (const int size : { 16, 32, 48, 128, 256 })
        QTest::addRow("icon %d", size) << QString("ApplicationIcon-%1.png").arg(size) << QSize(size, size);
}

void ResourcesTest::pictureHasItsSize()
{
    QFETCH(QString, name);

    const QImage image(":/Resources/" + name);

    QTEST(image.size(), "size");
    QVERIFY(image.hasAlphaChannel());
    QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
}

void ResourcesTest::wordMarkStaysSharpAtTwiceItsUsualHeight()
{
    const QImage picture(":/Resources/Vellumcast.png");

    QVERIFY(picture.height() >= 2 * 24);
    QVERIFY(picture.width() > 3 * picture.height());
    QVERIFY(picture.hasAlphaChannel());
    QCOMPARE(picture.pixelColor(0, 0).alpha(), 0);
}

void ResourcesTest::everyFrameOfTheBusySheetDiffersFromTheNext()
{
    const QImage sheet(":/Resources/Preloader.png");
    const int frames = sheet.width() / 20;

    QCOMPARE(frames, 12);
    for (int frame = 0; frame < frames; ++frame) {
        const QImage current = sheet.copy(frame * 20, 0, 20, 20);
        const QImage next = sheet.copy((frame + 1) % frames * 20, 0, 20, 20);
        QVERIFY2(current != next, qPrintable(QString::number(frame)));
    }
}

void ResourcesTest::pageIsReadableText_data()
{
    QTest::addColumn<QString>("name");

    for (const char* name : { "Acknowledgements.html", "WarrantyDisclaimer.html" })
        QTest::newRow(name) << name;
}

void ResourcesTest::pageIsReadableText()
{
    QFETCH(QString, name);
    const QString page = QString::fromUtf8(contents(name));
    QTextDocument document;

    document.setHtml(page);

    QVERIFY(document.toPlainText().size() > 100);
    QVERIFY(!document.toPlainText().contains('<'));
    // The palette gives the colours, on a light ground and on a dark one.
    QVERIFY(!page.contains("color", Qt::CaseInsensitive));
}

void ResourcesTest::acknowledgementsNameWhatIsUsed()
{
    const QByteArray page = contents("Acknowledgements.html");

    for (const char* name : { "Qt", "FFmpeg", "TagLib", "SQLite", "Lesser General Public License", "public domain" })
        QVERIFY2(page.simplified().contains(name), name);
}

void ResourcesTest::rulesAreUtf8TextWithWindowsLineEnds()
{
    const QByteArray text = contents("LibraryEvaluationRules.txt");

    QVERIFY(text.startsWith(byteOrderMark));
    QCOMPARE(QString::fromUtf8(text).toUtf8(), text.mid(3));
    QVERIFY(text.endsWith("\r\n"));
    QCOMPARE(text.count('\n'), rulesCount);
    QCOMPARE(text.count('\r'), rulesCount);
    QCOMPARE(text.count("\r\n"), rulesCount);
    QVERIFY(!text.contains("\r\n\r\n"));
}

void ResourcesTest::everyLineIsOneValidRule()
{
    const LibraryRules rules = defaultRules();

    QCOMPARE(rules.size(), rulesCount);
    for (const LibraryRule& rule : rules) {
        QVERIFY2(rule.pattern.isValid(), qPrintable(rule.pattern.pattern()));
        QVERIFY2(!rule.pattern.pattern().isEmpty(), qPrintable(rule.name));
        QVERIFY2(rule.name.size() >= 3, qPrintable(rule.name));
    }
}

void ResourcesTest::noPatternStandsTwice()
{
    QSet<QString> patterns;
    const LibraryRules rules = defaultRules();
    for (const LibraryRule& rule : rules)
        patterns.insert(rule.pattern.pattern());

    QCOMPARE(patterns.size(), rulesCount);
}

void ResourcesTest::ruleShapesHaveTheirProportions_data()
{
    QTest::addColumn<QString>("shape");
    QTest::addColumn<int>("count");

    QTest::newRow("blank, code, digits, underscore") << R"(\\s[A-Z]+[0-9]+_)" << 270;
    QTest::newRow("blank, code, digits") << R"(\\s[A-Z]+[0-9]+)" << 180;
    QTest::newRow("digit counts after a blank") << R"(\\s[A-Z]+\\d\{[12],2?\}_?)" << 84;
    QTest::newRow("anchored") << R"(\^[A-Z]+\\d\{2,2?\}-?)" << 72;
    QTest::newRow("between underscore and hyphen") << R"(_[A-Z]+[0-9]*-|_[A-Z]+_)" << 106;
}

void ResourcesTest::ruleShapesHaveTheirProportions()
{
    QFETCH(QString, shape);

    QTEST(countOfShape(shape), "count");
}

void ResourcesTest::everyRuleIsReachable()
{
    const LibraryRules rules = defaultRules();

    for (int index = 0; index < rules.size(); ++index) {
        const QString name = sampleName(rules.at(index).pattern.pattern());
        QVERIFY2(firstMatch(rules, name) == index, qPrintable(rules.at(index).pattern.pattern() + " by " + name));
    }
}

void ResourcesTest::ordinaryFileNamesHaveNoLibrary_data()
{
    QTest::addColumn<QString>("fileName");

    for (const char* name : { "Door slam 01.wav", "kick_808.wav", "LOOP 120 BPM.mp3", "01 - Rain.aiff", "a.wav" })
        QTest::newRow(name) << name;
}

void ResourcesTest::ordinaryFileNamesHaveNoLibrary()
{
    QFETCH(QString, fileName);

    QVERIFY(evaluateLibrary(fileName, defaultRules()).isNull());
}

QTEST_MAIN(ResourcesTest)
#include "tst_resources.moc"
