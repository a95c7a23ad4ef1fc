// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/metadatareader.h"
#include "scan/scanoperation.h"
#include "scan/storeoperations.h"
#include "tests/scan/corpus.h"
#include "tests/scan/operationrecorder.h"
#include "tests/support/messagerecorder.h"
#include "tests/support/storefixture.h"

#include <QHash>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <cstdio>
#include <unistd.h>

using TestSupport::StoreFixture;

namespace {

constexpr int tableId = 1;

// Sends the standard error output of this process into a file while it lives.
class ErrorOutputFile
{
public:
    explicit ErrorOutputFile(const QString& path)
        : m_output(::dup(STDERR_FILENO))
    {
        if (!std::freopen(qPrintable(path), "w", stderr))
            qFatal("Cannot redirect the error output");
    }
    ~ErrorOutputFile()
    {
        std::fflush(stderr);
        ::dup2(m_output, STDERR_FILENO);
        ::close(m_output);
    }
    Q_DISABLE_COPY(ErrorOutputFile)

private:
    int m_output;
};

QString textOf(const QVariantMap& entry, const char* key)
{
    return entry.value(QLatin1String(key)).toString();
}

// A block of texts whose characters were stored without loss; empty when the file has no such block.
QVariantMap blockOf(const QVariantMap& entry, const QString& prefix)
{
    const QVariantMap blocks = entry.value(QStringLiteral("tags")).toMap();
    const QVariantMap encodings = entry.value(QStringLiteral("encodings")).toMap();
    for (auto block = blocks.cbegin(); block != blocks.cend(); ++block) {
        if (block.key().startsWith(prefix))
            return encodings.contains(block.key()) ? QVariantMap() : block.value().toMap();
    }
    return {};
}

bool hasBlock(const QVariantMap& entry, const QString& prefix)
{
    const QStringList names = entry.value(QStringLiteral("tags")).toMap().keys();
    return std::any_of(names.cbegin(), names.cend(), [&](const QString& name) { return name.startsWith(prefix); });
}

// The title that the reader finds. An ID3 tag comes first. Without one the tag library gives nothing of a WAVE or
// AIFF file and FFmpeg reads the container's own texts; a file with several blocks is left out.
QString expectedTitle(const QVariantMap& entry)
{
    if (hasBlock(entry, QStringLiteral("ID3v2")))
        return textOf(blockOf(entry, QStringLiteral("ID3v2")), "TIT2");
    if (hasBlock(entry, QStringLiteral("bext")))
        return {};
    if (textOf(entry, "container") == QLatin1String("wav"))
        return textOf(blockOf(entry, QStringLiteral("INFO")), "INAM");
    return textOf(blockOf(entry, QStringLiteral("AIFF text")), "NAME");
}

} // namespace

class CorpusScanTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyListedFileGivesARowOrAWarning();
    void nothingElseGivesARow();
    void brokenFilesGiveNoRow();
    void rowsSayWhatWasPutIntoTheFiles();
    void titlesAndReferencesSurvive();
    void errorOutputStaysEmpty();
    void manyThreadsReadTheSameAsOne();

private:
    QTemporaryDir m_folder;
    QString m_corpus;
    QList<QVariantMap> m_entries;
    QHash<QString, MetaData> m_rows;
    QStringList m_warnings;
    QByteArray m_errorOutput;
};

void CorpusScanTest::initTestCase()
{
    m_corpus = m_folder.filePath(QStringLiteral("sounds"));
    Corpus::generate(m_corpus, 2000, 0.05);
    m_entries = Corpus::entries(m_corpus);
    StoreFixture store(scanBulkOperations());
    store.open();
    const QString output = m_folder.filePath(QStringLiteral("stderr"));
    {
        const ErrorOutputFile redirected(output);
        OperationReply* reply = store.database().scan(tableId, { m_corpus }, {});
        const OperationRecorder recorder(reply);
        const auto ended = TestSupport::await(reply);
        QVERIFY2(!ended->hasError(), qPrintable(ended->errorString()));
        m_warnings = recorder.sortedWarnings();
    }
    QFile file(output);
    QVERIFY(file.open(QIODevice::ReadOnly));
    m_errorOutput = file.readAll();
    for (const MetaData& record : store.records(tableId))
        m_rows.insert(record.filePath(), record);
}

void CorpusScanTest::everyListedFileGivesARowOrAWarning()
{
    int listed = 0;
    for (const QVariantMap& entry : m_entries) {
        if (!entry.value(QStringLiteral("listed")).toBool())
            continue;
        ++listed;
        const QString path = textOf(entry, "path");
        const auto isOfThisFile = [&path](const QString& warning) {
            return warning.endsWith(": " + path);
        };
        const auto warnings = std::count_if(m_warnings.cbegin(), m_warnings.cend(), isOfThisFile);
        QVERIFY2(warnings + int(m_rows.contains(path)) == 1, qPrintable(path));
    }
    QVERIFY(listed > 2000);
    QVERIFY(m_warnings.size() > 50);
}

void CorpusScanTest::nothingElseGivesARow()
{
    QSet<QString> others(m_rows.keyBegin(), m_rows.keyEnd());
    for (const QVariantMap& entry : m_entries) {
        if (entry.value(QStringLiteral("listed")).toBool())
            others.remove(textOf(entry, "path"));
    }

    // Links are followed; the one that leads back to its own folder is not.
    const QString extras = m_corpus + QStringLiteral("/Extras/Links/");
    QCOMPARE(others,
        QSet<QString>({ extras + "link to a file.wav", extras + "link to a folder/through a folder link.wav" }));
}

void CorpusScanTest::brokenFilesGiveNoRow()
{
    int broken = 0;
    for (const QVariantMap& entry : m_entries) {
        // With "readable" null it is FFmpeg's to say what it still makes of the file; permissions do not stop root.
        const QVariant readable = entry.value(QStringLiteral("readable"));
        if (readable.isNull() || readable.toBool() || entry.value(QStringLiteral("rootOnly")).toBool())
            continue;
        ++broken;
        QVERIFY2(!m_rows.contains(textOf(entry, "path")), qPrintable(textOf(entry, "path")));
    }
    QVERIFY(broken > 25);
}

void CorpusScanTest::rowsSayWhatWasPutIntoTheFiles()
{
    for (const QVariantMap& entry : m_entries) {
        if (textOf(entry, "kind") != QLatin1String("audio") || !entry.value(QStringLiteral("listed")).toBool()
            || !entry.value(QStringLiteral("readable")).toBool())
            continue;
        const QByteArray path = textOf(entry, "path").toUtf8();
        const MetaData row = m_rows.value(textOf(entry, "path"));
        QVERIFY2(!row.isNull(), path.constData());
        QVERIFY2(row.sampleRate() == entry.value(QStringLiteral("sampleRate")).toInt(), path.constData());
        QVERIFY2(row.channelsCount() == entry.value(QStringLiteral("channels")).toInt(), path.constData());
        // MP3 stores no such number; the decoder's samples have 32 bits.
        const QVariant bits = entry.value(QStringLiteral("bits"));
        QVERIFY2(row.bitsPerSample() == (bits.isNull() ? 32 : bits.toInt()), path.constData());
        // Unknown to the header in some files; FFmpeg then estimates it.
        const QVariant duration = entry.value(QStringLiteral("duration"));
        const double tolerance = entry.value(QStringLiteral("tolerance")).toDouble() + 0.001;
        QVERIFY2(duration.isNull() || std::abs(row.duration() - duration.toDouble()) <= tolerance, path.constData());
        QVERIFY2(row.rating() == 1.0 && !row.description().isEmpty(), path.constData());
    }
}

void CorpusScanTest::titlesAndReferencesSurvive()
{
    int titles = 0;
    int references = 0;
    for (const QVariantMap& entry : m_entries) {
        const MetaData row = m_rows.value(textOf(entry, "path"));
        if (row.isNull() || textOf(entry, "kind") != QLatin1String("audio"))
            continue;
        if (const QString title = expectedTitle(entry); !title.isEmpty()) {
            QCOMPARE(row.title(), title);
            ++titles;
        }
        const QString reference = textOf(
            entry.value(QStringLiteral("tags")).toMap().value(QStringLiteral("bext")).toMap(), "OriginatorReference");
        if (!reference.isEmpty()) {
            QVERIFY2(row.originReference().endsWith(reference), qPrintable(row.filePath()));
            ++references;
        }
    }
    QVERIFY(titles > 300);
    QVERIFY(references > 300);
}

void CorpusScanTest::errorOutputStaysEmpty()
{
    QCOMPARE(QString::fromUtf8(m_errorOutput), QString());
}

void CorpusScanTest::manyThreadsReadTheSameAsOne()
{
    QStringList paths;
    for (const QVariantMap& entry : std::as_const(m_entries)) {
        if (entry.value(QStringLiteral("listed")).toBool() && paths.size() < 100)
            paths.append(textOf(entry, "path"));
    }
    QThreadPool pool;
    pool.setMaxThreadCount(8);
    QVector<QVariantMap> together(paths.size());
    for (int index = 0; index < paths.size(); ++index) {
        QVariantMap* result = &together[index];
        pool.start([result, path = paths.at(index)]() { *result = readMetaData(path).toVariantMap(); });
    }
    pool.waitForDone();

    for (int index = 0; index < paths.size(); ++index)
        QCOMPARE(together.at(index), readMetaData(paths.at(index)).toVariantMap());
}

QTEST_GUILESS_MAIN(CorpusScanTest)
#include "tst_corpusscan.moc"
