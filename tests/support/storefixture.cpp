// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/storefixture.h"

#include "store/databaseschema.h"
#include "store/recordwriter.h"
#include "store/transaction.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTimer>

namespace {

constexpr int awaitTimeout = 60000; // milliseconds

// Runs a function in the store's thread and waits for it.
template <typename Function>
void runInThreadOf(Database& database, Function function)
{
    QMetaObject::invokeMethod(&database, function, Qt::BlockingQueuedConnection);
}

// Writes what the store would write for a new file, but without waiting for the disk after each statement.
void installTemplate(const QString& filePath)
{
    const QString name = QStringLiteral("StoreTemplate");
    {
        QSqlDatabase connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        connection.setDatabaseName(filePath);
        if (!connection.open())
            qFatal("Cannot open %s", qPrintable(filePath));
        QSqlQuery(connection).exec(QStringLiteral("PRAGMA synchronous=OFF"));
        applyPragmas(connection);
        if (!installSchema(connection))
            qFatal("Cannot install the schema");
    }
    QSqlDatabase::removeDatabase(name);
}

// An empty database, made once for all stores of a test program.
QString templateFilePath()
{
    static const QTemporaryDir folder;
    static const QString path = folder.filePath(QStringLiteral("template.dat"));
    if (!QFileInfo::exists(path))
        installTemplate(path);
    return path;
}

QSqlDatabase storeConnection()
{
    return QSqlDatabase::database(QStringLiteral("MetaDatabase"), false);
}

} // namespace

std::unique_ptr<OperationReply> TestSupport::await(OperationReply* reply)
{
    QTimer::singleShot(awaitTimeout, reply, []() { qFatal("The operation does not end"); });
    reply->waitForFinished();
    return std::unique_ptr<OperationReply>(reply);
}

void TestSupport::makeEmptyDatabase(const QString& filePath)
{
    if (!QFile::copy(templateFilePath(), filePath))
        qFatal("Cannot make %s", qPrintable(filePath));
}

MetaData TestSupport::sampleRecord(const QString& filePath)
{
    const QFileInfo file(filePath);
    const auto empty = QStringLiteral("");
    MetaData record({ { QStringLiteral("filePath"), filePath }, { QStringLiteral("fileName"), file.fileName() },
        { QStringLiteral("fileType"), file.suffix() + empty }, { QStringLiteral("library"), empty },
        { QStringLiteral("description"), empty }, { QStringLiteral("rating"), 1.0 },
        { QStringLiteral("duration"), 1.0 } });
    record.setSampleRate(48000);
    record.setChannelsCount(2);
    record.setBitsPerSample(16);
    return record;
}

TestSupport::StoreFixture::StoreFixture()
    : StoreFixture(BulkOperations())
{
}

TestSupport::StoreFixture::StoreFixture(const BulkOperations& operations)
    : m_database(std::make_unique<Database>(filePath()))
{
    m_database->setBulkOperations(operations);
    m_database->moveToThread(&m_thread);
    m_thread.start();
}

TestSupport::StoreFixture::~StoreFixture()
{
    destroy();
}

void TestSupport::StoreFixture::destroy()
{
    if (m_database)
        m_database->close();
    m_thread.quit();
    m_thread.wait();
    m_database.reset();
}

void TestSupport::StoreFixture::open()
{
    if (!QFileInfo::exists(filePath()))
        makeEmptyDatabase(filePath());
    if (!m_database->open())
        qFatal("Cannot open the store: %s", qPrintable(m_database->lastError()));
    // It tells of the opening before it has the file read ahead. A thread of the pool that was started for that later
    // on would have the store's rights, whatever a test has taken from its own meanwhile.
    runInThreadOf(*m_database, []() {});
}

void TestSupport::StoreFixture::openEmpty(int tableId)
{
    if (!m_database->isOpened())
        open();
    const QString table = QStringLiteral("MetaData%1").arg(tableId);
    for (const char* statement : { "DELETE FROM %1", "DELETE FROM sqlite_sequence WHERE name='%1'" }) {
        const QString errorText = execute(QString::fromLatin1(statement).arg(table));
        if (!errorText.isEmpty())
            qFatal("Cannot empty %s: %s", qPrintable(table), qPrintable(errorText));
    }
}

void TestSupport::StoreFixture::insert(int tableId, const MetaDataList& items, qint64 scanTimestamp)
{
    runInThreadOf(*m_database, [&]() {
        Transaction transaction(storeConnection());
        if (!transaction.begin())
            qFatal("Cannot begin: %s", qPrintable(transaction.errorText()));
        const MetaDataList failedItems = writeMetaData(storeConnection(), tableId, items, scanTimestamp, false);
        if (!failedItems.isEmpty())
            qFatal("Cannot insert: %s", qPrintable(failedItems.first().error()));
        if (!transaction.commit())
            qFatal("Cannot commit: %s", qPrintable(transaction.errorText()));
    });
}

QString TestSupport::StoreFixture::execute(const QString& statement)
{
    QString errorText;
    runInThreadOf(*m_database, [&]() {
        QSqlQuery query(storeConnection());
        if (!query.exec(statement))
            errorText = query.lastError().text();
    });
    return errorText;
}

MetaDataList TestSupport::StoreFixture::records(int tableId)
{
    const auto reply = await(m_database->pullMetaData(tableId, {}));
    return reply->result(QStringLiteral("items")).value<MetaDataList>();
}

TestSupport::StoreHold::StoreHold(Database& store)
{
    QMetaObject::invokeMethod(
        &store, [released = m_released]() { released->acquire(); }, Qt::QueuedConnection);
}

TestSupport::StoreHold::StoreHold(StoreFixture& store)
    : StoreHold(store.database())
{
}

TestSupport::StoreHold::~StoreHold()
{
    release();
}

void TestSupport::StoreHold::release()
{
    if (m_isReleased)
        return;
    m_isReleased = true;
    m_released->release();
}
