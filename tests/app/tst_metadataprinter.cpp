// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/metadataprinter.h"

#include "store/operationreply.h"
#include "store/valuetext.h"
#include "tests/browse/browsefixture.h"
#include "tests/support/smalldisk.h"
#include "tests/support/testsupport.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QImage>
#include <QPrinter>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextDocumentFragment>
#include <QtTest>

#include <algorithm>

using TestSupport::fillTable;
using TestSupport::SmallDisk;
using TestSupport::StoreFixture;

namespace {

constexpr int pagedTable = 1;
constexpr int emptyTable = 2;
constexpr int testTable = 3;
constexpr int bigTable = 4;
constexpr int rowsOfPagedTable = 200;
constexpr int rowsOfBigTable = 10050;

QByteArray outputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        qFatal("%s failed: %s", qPrintable(program), process.readAllStandardError().constData());
    return process.readAllStandardOutput();
}

// The lines of each page as they stand on it, without margins and empty lines.
QList<QStringList> printedPages(const QString& path)
{
    const QString text = QString::fromUtf8(outputOf(QStringLiteral("pdftotext"), { "-layout", path, "-" }));
    QList<QStringList> pages;
    for (const QString& page : text.split(QLatin1Char('\f'))) {
        QStringList lines;
        for (const QString& line : page.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            lines.append(line.trimmed());
        pages.append(lines);
    }
    pages.removeLast();
    return pages;
}

// All record lines in order: what stands on the pages besides the titles and the numbers at the foot.
QStringList printedLines(const QString& path, int titleLines)
{
    QStringList lines;
    for (const QStringList& page : printedPages(path))
        lines += page.mid(titleLines, page.size() - titleLines - 1);
    return lines;
}

// The first line of the report with as many blanks between its words as their places on the paper tell; the line holds
// a single blank somewhere.
QString spacedFirstLine(const QString& path)
{
    const QRegularExpression pattern(
        QStringLiteral("<word xMin=\"([0-9.]+)\" yMin=\"([0-9.]+)\" xMax=\"([0-9.]+)\" yMax=\"[0-9.]+\">(.*)</word>"));
    const QString boxes = QString::fromUtf8(outputOf(QStringLiteral("pdftotext"), { "-bbox", path, "-" }));
    QStringList words;
    QVector<double> gaps;
    QString top;
    double end = 0;
    for (auto matches = pattern.globalMatch(boxes); matches.hasNext();) {
        const QRegularExpressionMatch word = matches.next();
        if (!top.isEmpty() && word.captured(2) != top)
            break;
        top = word.captured(2);
        gaps.append(word.captured(1).toDouble() - end);
        end = word.captured(3).toDouble();
        words.append(QTextDocumentFragment::fromHtml(word.captured(4)).toPlainText());
    }
    const double blank = *std::min_element(gaps.begin() + 1, gaps.end());
    QString line = words.first();
    for (int index = 1; index < words.size(); ++index)
        line += QString(qRound(gaps.at(index) / blank), QLatin1Char(' ')) + words.at(index);
    return line;
}

// One page as a picture in grey, this many pixels an inch.
QImage picture(const QString& path, int page, int resolution)
{
    const QString name = path + QStringLiteral("-page");
    outputOf(QStringLiteral("pdftoppm"),
        { "-r", QString::number(resolution), "-f", QString::number(page), "-l", QString::number(page), "-gray",
            "-singlefile", path, name });
    return QImage(name + QStringLiteral(".pgm")).convertToFormat(QImage::Format_Grayscale8);
}

// The rectangle of what is not white.
QRect inkOf(const QImage& image)
{
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qGray(image.pixel(x, y)) < 128)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

} // namespace

class MetaDataPrinterTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void recordsAreNumberedThroughAllPages();
    void recordsAreNumberedThroughThePagesOfTheReader();
    void everyPageHasTitleAndNumber();
    void chosenPagesArePrinted_data();
    void chosenPagesArePrinted();
    void pagesThatTheReportHasNotAreAnError();
    void titleStandsInTheMiddle();
    void emptyTitlePrintsNone();
    void lineShowsNameDescriptionAndDuration_data();
    void lineShowsNameDescriptionAndDuration();
    void titleIsPrintedAsItIs();
    void longLineWraps();
    void lineTallerThanThePageStandsAloneAboveTheFoot();
    void marginsAreKept();
    void noRecordsGiveOneBlankPage();
    void printerThatCannotStartIsAnError_data();
    void printerThatCannotStartIsAnError();
    void catalogueIsNeverOverwritten();
    void missingPrinterIsAnError();
    void fullDiskIsAnError();
    void cancelKeepsThePagesBegun();
    void printerObjectDestroyedDuringTheRunEndsPainting();
    void secondRunBeginsAtOne();

private:
    QString print(const QString& path);
    QString printOne(const QString& fileName, const QString& description, double duration = 1.0);
    QString target() const { return m_folder->filePath(QStringLiteral("report.pdf")); }

    StoreFixture m_store;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QPrinter> m_device;
    std::unique_ptr<MetaDataPrinter> m_printer;
};

void MetaDataPrinterTest::initTestCase()
{
    m_store.open();
    fillTable(m_store, pagedTable, rowsOfPagedTable);
    fillTable(m_store, bigTable, rowsOfBigTable);
}

void MetaDataPrinterTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_device = std::make_unique<QPrinter>(QPrinter::HighResolution);
    m_device->setPageSize(QPageSize(QPageSize::A4));
    m_device->setPageOrientation(QPageLayout::Landscape);
    MetaDataPrinter::setUpPage(m_device.get());
    m_device->setOutputFormat(QPrinter::PdfFormat);
    m_printer = std::make_unique<MetaDataPrinter>();
    m_printer->setDatabase(&m_store.database(), pagedTable);
    m_printer->setQueryParameters({ { "sortField", "filePath" } });
}

void MetaDataPrinterTest::cleanup()
{
    m_printer.reset();
    m_device.reset();
    m_folder.reset();
}

// The error text of the whole run.
QString MetaDataPrinterTest::print(const QString& path)
{
    m_device->setOutputFileName(path);
    return TestSupport::await(m_printer->start(m_device.get()))->errorString();
}

// A report of one record; the error text of the run.
QString MetaDataPrinterTest::printOne(const QString& fileName, const QString& description, double duration)
{
    MetaData record = TestSupport::sampleRecord(QStringLiteral("/sounds/") + fileName);
    record.setDescription(description);
    record.setDuration(duration);
    m_store.execute(QStringLiteral("DELETE FROM MetaData3"));
    m_store.insert(testTable, MetaDataList{ record });
    m_printer->setDatabase(&m_store.database(), testTable);
    return print(target());
}

void MetaDataPrinterTest::recordsAreNumberedThroughAllPages()
{
    QCOMPARE(print(target()), QString());

    const QStringList lines = printedLines(target(), 0);
    QCOMPARE(lines.size(), rowsOfPagedTable);
    for (int row = 0; row < rowsOfPagedTable; ++row) {
        const QString name = QString::number(row).rightJustified(8, QLatin1Char('0'));
        QCOMPARE(lines.at(row),
            QStringLiteral("%1. %2.wav - Sound %3 %4")
                .arg(QString::number(row + 1), name, QString::number(row), durationText(1 + row)));
    }
    QVERIFY(printedPages(target()).size() > 2);
}

void MetaDataPrinterTest::recordsAreNumberedThroughThePagesOfTheReader()
{
    m_printer->setDatabase(&m_store.database(), bigTable);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(print(target()), QString());
    qInfo("%d records printed in %lld ms", rowsOfBigTable, timer.elapsed());

    const QStringList lines = printedLines(target(), 0);
    QCOMPARE(lines.size(), rowsOfBigTable);
    for (int row = 0; row < rowsOfBigTable; ++row)
        QVERIFY(lines.at(row).startsWith(QString::number(row + 1) + QLatin1String(". ")));
}

void MetaDataPrinterTest::everyPageHasTitleAndNumber()
{
    m_printer->setTitle(QStringLiteral("Harbour sounds"));

    QCOMPARE(print(target()), QString());

    const QList<QStringList> pages = printedPages(target());
    for (int page = 0; page < pages.size(); ++page) {
        QCOMPARE(pages.at(page).first(), QStringLiteral("Harbour sounds"));
        QCOMPARE(pages.at(page).last(), QString::number(page + 1));
    }
    QCOMPARE(printedLines(target(), 1).size(), rowsOfPagedTable);
}

void MetaDataPrinterTest::chosenPagesArePrinted_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::newRow("first") << 1 << 1;
    QTest::newRow("second") << 2 << 2;
    QTest::newRow("some") << 2 << 4;
    QTest::newRow("to the end and beyond") << 3 << 9999;
}

void MetaDataPrinterTest::chosenPagesArePrinted()
{
    QFETCH(int, from);
    QFETCH(int, to);
    m_printer->setTitle(QStringLiteral("Title"));
    const QString whole = m_folder->filePath(QStringLiteral("whole.pdf"));
    QCOMPARE(print(whole), QString());
    const QList<QStringList> pages = printedPages(whole);
    QVERIFY(pages.size() > 4);
    m_device->setPrintRange(QPrinter::PageRange);
    m_device->setFromTo(from, to);

    QCOMPARE(print(target()), QString());

    QCOMPARE(printedPages(target()), pages.mid(from - 1, to - from + 1));
}

void MetaDataPrinterTest::pagesThatTheReportHasNotAreAnError()
{
    m_device->setPrintRange(QPrinter::PageRange);
    m_device->setFromTo(500, 600);

    QCOMPARE(print(target()), QStringLiteral("The report has no such pages"));
}

void MetaDataPrinterTest::titleStandsInTheMiddle()
{
    m_store.execute(QStringLiteral("DELETE FROM MetaData3"));
    m_store.insert(testTable, MetaDataList{ TestSupport::sampleRecord(QStringLiteral("/a.wav")) });
    m_printer->setDatabase(&m_store.database(), testTable);
    m_printer->setTitle(QStringLiteral("A title of some width"));

    QCOMPARE(print(target()), QString());

    const QImage page = picture(target(), 1, 254);
    const QRect line = inkOf(page);
    // The title is the upper of the two lines.
    const QRect title = inkOf(page.copy(0, 0, page.width(), line.top() + 40));
    QVERIFY2(title.width() > 300, qPrintable(QString::number(title.width())));
    QVERIFY2(qAbs(title.center().x() - (200 + 1800 / 2)) < 10, qPrintable(QString::number(title.center().x())));
}

void MetaDataPrinterTest::emptyTitlePrintsNone()
{
    m_printer->setTitle(QString());

    QCOMPARE(print(target()), QString());

    QCOMPARE(printedPages(target()).first().first(), QStringLiteral("1. 00000000.wav - Sound 0 00:01"));
    QVERIFY(!outputOf(QStringLiteral("pdftotext"), { target(), "-" }).contains("Untitled"));
}

void MetaDataPrinterTest::lineShowsNameDescriptionAndDuration_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("description");
    QTest::addColumn<double>("duration");
    QTest::addColumn<QString>("line");
    QTest::newRow("plain") << "gull.wav"
                           << "One gull" << 125.2 << "1. gull.wav - One gull 02:06";
    QTest::newRow("long sound") << "gull.wav"
                                << "One gull" << 3725.0 << "1. gull.wav - One gull 62:05";
    QTest::newRow("no description") << "gull.wav"
                                    << "" << 1.0 << "1. gull.wav -  00:01";
    QTest::newRow("two blanks") << "two  blanks.wav"
                                << "x  y" << 1.0 << "1. two  blanks.wav - x  y 00:01";
    QTest::newRow("markup") << "a<b>&amp;.wav"
                            << "<i>R&B</i>" << 1.0 << "1. a<b>&amp;.wav - <i>R&B</i> 00:01";
    QTest::newRow("place holders") << "50%1 %3_%4.wav"
                                   << "%2" << 1.0 << "1. 50%1 %3_%4.wav - %2 00:01";
    QTest::newRow("umlauts") << "Möwe.wav"
                             << "naïve façade" << 1.0 << "1. Möwe.wav - naïve façade 00:01";
}

void MetaDataPrinterTest::lineShowsNameDescriptionAndDuration()
{
    QFETCH(QString, name);
    QFETCH(QString, description);
    QFETCH(double, duration);
    QFETCH(QString, line);
    QCOMPARE(printOne(name, description, duration), QString());

    QCOMPARE(spacedFirstLine(target()), line);
    QCOMPARE(printedLines(target(), 0), QStringList(line.simplified()));
}

void MetaDataPrinterTest::titleIsPrintedAsItIs()
{
    m_printer->setTitle(QStringLiteral("<b>R&B</b>  %1 and on"));

    QCOMPARE(print(target()), QString());

    QCOMPARE(spacedFirstLine(target()), QStringLiteral("<b>R&B</b>  %1 and on"));
}

void MetaDataPrinterTest::longLineWraps()
{
    QStringList words;
    for (int number = 0; number < 60; ++number)
        words.append(QStringLiteral("word%1").arg(number));

    QCOMPARE(printOne(QStringLiteral("long.wav"), words.join(QLatin1Char(' '))), QString());

    const QStringList lines = printedLines(target(), 0);
    QVERIFY(lines.size() > 3);
    QCOMPARE(lines.join(QLatin1Char(' ')), QStringLiteral("1. long.wav - %1 00:01").arg(words.join(QLatin1Char(' '))));
    // Nothing stands in the right margin of 10 mm.
    const QImage page = picture(target(), 1, 72);
    QVERIFY(inkOf(page).right() <= page.width() - 28);
}

void MetaDataPrinterTest::lineTallerThanThePageStandsAloneAboveTheFoot()
{
    MetaDataList records;
    for (int number = 0; number < 3; ++number)
        records.append(TestSupport::sampleRecord(QStringLiteral("/tall/%1.wav").arg(number)));
    records[1].setDescription(QStringLiteral("tower ").repeated(3000));
    m_store.execute(QStringLiteral("DELETE FROM MetaData3"));
    m_store.insert(testTable, records);
    m_printer->setDatabase(&m_store.database(), testTable);

    QCOMPARE(print(target()), QString());

    const QList<QStringList> pages = printedPages(target());
    QCOMPARE(pages.size(), 3);
    QCOMPARE(pages.at(0), QStringList({ "1. 0.wav - 00:01", "1" }));
    QVERIFY(pages.at(1).first().startsWith(QLatin1String("2. 1.wav - tower tower")));
    QCOMPARE(pages.at(2), QStringList({ "3. 2.wav - 00:01", "3" }));
    // The foot shows the number alone: one narrow digit.
    const QImage page = picture(target(), 2, 254);
    const QRect foot = inkOf(page.copy(0, page.height() - 100 - 38, page.width(), 138));
    QVERIFY2(foot.width() > 5 && foot.width() < 40, qPrintable(QString::number(foot.width())));
}

void MetaDataPrinterTest::marginsAreKept()
{
    QCOMPARE(print(target()), QString());

    // At 254 pixels an inch a millimetre has ten; the paper is 210 mm by 297 mm.
    const QImage page = picture(target(), 1, 254);
    const QRect ink = inkOf(page);
    QVERIFY(page.height() > page.width());
    QVERIFY2(ink.left() >= 195 && ink.left() <= 220, qPrintable(QString::number(ink.left())));
    QVERIFY2(ink.top() >= 95 && ink.top() <= 150, qPrintable(QString::number(ink.top())));
    QVERIFY2(ink.bottom() >= 2970 - 170 && ink.bottom() <= 2970 - 98, qPrintable(QString::number(ink.bottom())));
    // The number stands in the middle of the space between the margins.
    const QRect number = inkOf(page.copy(0, 2970 - 160, page.width(), 160));
    QVERIFY2(qAbs(number.center().x() - (200 + 1800 / 2)) < 10, qPrintable(QString::number(number.center().x())));
}

void MetaDataPrinterTest::noRecordsGiveOneBlankPage()
{
    m_printer->setDatabase(&m_store.database(), emptyTable);

    QCOMPARE(print(target()), QString());

    QCOMPARE(printedPages(target()), QList<QStringList>({ QStringList() }));
}

void MetaDataPrinterTest::printerThatCannotStartIsAnError_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing folder") << "missing/report.pdf";
    QTest::newRow("a folder") << ".";
}

void MetaDataPrinterTest::printerThatCannotStartIsAnError()
{
    QFETCH(QString, path);
    QCOMPARE(print(m_folder->path() + QLatin1Char('/') + path), QStringLiteral("Unable to start printing"));
}

void MetaDataPrinterTest::catalogueIsNeverOverwritten()
{
    QCOMPARE(print(m_store.filePath()), QStringLiteral("Unable to start printing"));

    QCOMPARE(TestSupport::firstValue(m_store.filePath(), QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(),
        rowsOfPagedTable);
}

void MetaDataPrinterTest::missingPrinterIsAnError()
{
    QCOMPARE(TestSupport::await(m_printer->start(nullptr))->errorString(), QStringLiteral("Unable to start printing"));
}

void MetaDataPrinterTest::fullDiskIsAnError()
{
    QCOMPARE(print(target()), QString());
    const qint64 size = QFileInfo(target()).size();
    const SmallDisk disk(size - 4096);
    const QString path = disk.filePath(QStringLiteral("report.pdf"));

    QCOMPARE(print(path), QStringLiteral("Unable to write file: ") + path);
}

void MetaDataPrinterTest::cancelKeepsThePagesBegun()
{
    m_printer->setDatabase(&m_store.database(), bigTable);
    m_device->setOutputFileName(target());
    OperationReply* reply = m_printer->start(m_device.get());
    connect(reply, &OperationReply::progress, reply, [reply](int value, int) {
        if (value > 0)
            reply->cancel();
    });

    QCOMPARE(TestSupport::await(reply)->errorString(), QStringLiteral("Canceled"));

    QCOMPARE(printedLines(target(), 0).size(), 10000);
}

void MetaDataPrinterTest::printerObjectDestroyedDuringTheRunEndsPainting()
{
    m_printer->setDatabase(&m_store.database(), bigTable);
    m_device->setOutputFileName(target());
    OperationReply* reply = m_printer->start(m_device.get());
    connect(reply, &OperationReply::progress, reply, [this](int, int total) {
        if (total > 0)
            m_printer.reset();
    });

    QCOMPARE(TestSupport::await(reply)->errorString(), QStringLiteral("Canceled"));

    m_device.reset();
    QCOMPARE(printedPages(target()).size(), 1);
}

void MetaDataPrinterTest::secondRunBeginsAtOne()
{
    QCOMPARE(print(target()), QString());
    const QList<QStringList> first = printedPages(target());

    QCOMPARE(print(target()), QString());

    QCOMPARE(printedPages(target()), first);
}

QTEST_MAIN(MetaDataPrinterTest)
#include "tst_metadataprinter.moc"
