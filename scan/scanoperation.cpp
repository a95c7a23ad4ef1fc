// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/scanoperation.h"

#include "scan/libraryrules.h"
#include "scan/medialister.h"
#include "scan/metadatareader.h"
#include "scan/pathspellings.h"
#include "store/operationreply.h"
#include "store/querycomposer.h"
#include "store/recordwriter.h"
#include "store/transaction.h"
#include "store/transactionstate.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDebug>
#include <QFile>
#include <QtConcurrent>

#include <functional>
#include <utility>

#include <sys/stat.h>

namespace {

// Large enough to keep every core busy, small enough for smooth progress and prompt cancellation.
constexpr int batchSize = 40;

void appendRecord(MetaDataList& records, const MetaData& record)
{
    records.append(record);
}

// One file, whichever of its names it goes by.
class FileIdentity
{
public:
    explicit FileIdentity(const QString& path) { m_isKnown = look(path, m_status); }

    bool isOf(const QString& path) const
    {
        struct stat status = {};
        return m_isKnown && look(path, status) && status.st_dev == m_status.st_dev && status.st_ino == m_status.st_ino;
    }

private:
    static bool look(const QString& path, struct stat& status)
    {
        return ::stat(QFile::encodeName(path).constData(), &status) == 0;
    }

    struct stat m_status = {};
    bool m_isKnown = false;
};

// Reads the files batch by batch, one batch ahead: while a batch is being written, the pool reads the next.
class BatchReader
{
public:
    // The database's own file is not opened: the system gives up all locks that a process holds on a file as soon as
    // the process closes it, also those that SQLite took for the transaction.
    BatchReader(const QStringList& files, const QString& databaseFilePath)
        : m_files(files)
        , m_read([database = FileIdentity(databaseFilePath)](
                     const QString& path) { return database.isOf(path) ? unreadMetaData(path) : readMetaData(path); })
    {
        startReading();
    }
    ~BatchReader()
    {
        m_reading.cancel();
        m_reading.waitForFinished();
    }
    Q_DISABLE_COPY(BatchReader)

    bool atEnd() const { return m_taken == m_files.size(); }
    // How many files have been given out.
    int taken() const { return m_taken; }
    // The next batch, its records in the order in which the files were read.
    MetaDataList next();

private:
    void startReading();

    const QStringList& m_files;
    std::function<MetaData(const QString&)> m_read;
    int m_taken = 0;
    int m_started = 0;
    QFuture<MetaDataList> m_reading;
};

MetaDataList BatchReader::next()
{
    MetaDataList records = m_reading.result();
    m_taken = m_started;
    startReading();
    return records;
}

void BatchReader::startReading()
{
    if (m_started == m_files.size())
        return;
    const QStringList batch = m_files.mid(m_started, batchSize);
    m_started += batch.size();
    m_reading = QtConcurrent::mappedReduced<MetaDataList>(
        batch, m_read, appendRecord, QtConcurrent::UnorderedReduce | QtConcurrent::SequentialReduce);
}

QStringList warningsOf(const MetaDataList& failedRecords)
{
    QStringList warnings;
    for (const MetaData& record : failedRecords)
        warnings.append(QStringLiteral("%1: %2").arg(record.error(), record.filePath()));
    return warnings;
}

class Scan
{
    Q_DECLARE_TR_FUNCTIONS(Scan)

public:
    Scan(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QString& rules)
        : m_connection(connection)
        , m_reply(reply)
        , m_tableId(tableId)
        , m_rules(parseLibraryRules(rules))
    {
    }

    void run(const QStringList& paths);

private:
    QStringList listFiles(const QStringList& paths);
    QString writeFiles(const QStringList& files);
    QStringList writeBatch(RecordWriter& writer, MetaDataList records);
    void warnOfSpellings(const MetaDataList& records);
    void finish(Transaction& transaction, const QString& errorText);

    const QSqlDatabase& m_connection;
    OperationReply* m_reply;
    int m_tableId;
    LibraryRules m_rules;
    PathSpellings m_spellings;
    qint64 m_scanTimestamp = QDateTime::currentMSecsSinceEpoch();
};

void Scan::run(const QStringList& paths)
{
    const QStringList files = listFiles(paths);
    if (m_reply->isCanceled()) {
        m_reply->setError(tr("Canceled"));
        return;
    }
    m_reply->setProgress(0, files.size());
    Transaction transaction(m_connection);
    if (!transaction.beginWriting(metaDataTableName(m_tableId))) {
        m_reply->setError(tr("Unable to begin scan transaction: %1").arg(transaction.errorText()));
        return;
    }
    finish(transaction, writeFiles(files));
}

QStringList Scan::listFiles(const QStringList& paths)
{
    m_reply->setProgress(0, -1);
    QStringList unreadFolders;
    QStringList files = listMediaFiles(
        paths, mediaFileFilters(), [this]() { return m_reply->isCanceled(); }, &unreadFolders);
    QStringList warnings;
    for (const QString& folder : std::as_const(unreadFolders))
        warnings.append(QStringLiteral("%1: %2").arg(tr("Unable to list folder"), folder));
    m_reply->addWarnings(warnings);
    if (files.isEmpty() && !m_reply->isCanceled())
        m_reply->cancel();
    return files;
}

// Gives the text of what forbids a commit; none when all went well, also when it was canceled.
QString Scan::writeFiles(const QStringList& files)
{
    BatchReader reader(files, m_connection.databaseName());
    RecordWriter writer(m_connection, m_tableId, m_scanTimestamp, true);
    while (!reader.atEnd() && !m_reply->isCanceled()) {
        const QStringList warnings = writeBatch(writer, reader.next());
        m_reply->setProgress(reader.taken(), files.size());
        m_reply->addWarnings(warnings);
        // The commit then fails, and says so.
        if (!warnings.isEmpty() && !isTransactionActive(m_connection))
            return QString();
    }
    m_reply->addWarnings(warningsOf(writer.finish([this]() { return m_reply->isCanceled(); })));
    return writer.finishError();
}

QStringList Scan::writeBatch(RecordWriter& writer, MetaDataList records)
{
    applyLibraryRules(records, m_rules);
    warnOfSpellings(records);
    return warningsOf(writer.write(records));
}

void Scan::warnOfSpellings(const MetaDataList& records)
{
    for (const MetaData& record : records) {
        if (record.error().isEmpty() && m_spellings.add(record.filePath())) {
            qWarning().noquote()
                << "Another file of this scan has the same path but for the case of its letters; both share one record:"
                << record.filePath();
        }
    }
}

// The reply is ended last: its owner may release it as soon as it has ended.
void Scan::finish(Transaction& transaction, const QString& errorText)
{
    const bool isCanceled = m_reply->isCanceled();
    const bool isWanted = !isCanceled && errorText.isEmpty();
    const bool isFinalized = isWanted ? transaction.commit() : transaction.rollback();
    if (!isFinalized || !errorText.isEmpty())
        m_reply->setError(tr("Unable to finalize scan transaction: %1")
                              .arg(errorText.isEmpty() ? transaction.errorText() : errorText));
    else if (isCanceled)
        m_reply->setError(tr("Canceled"));
    else
        m_reply->finish();
}

} // namespace

void runScan(
    const QSqlDatabase& connection, OperationReply* reply, int tableId, const QStringList& paths, const QString& rules)
{
    Scan(connection, reply, tableId, rules).run(paths);
}
