// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/database.h"

#include "store/databaseschema.h"
#include "store/databasesettings.h"
#include "store/indexedreads.h"
#include "store/metatypes.h"
#include "store/operationreply.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QMutexLocker>
#include <QSemaphore>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>

#include <memory>

namespace {

const QString connectionName = QStringLiteral("MetaDatabase");
const QString tableDisplayNamesKey = QStringLiteral("tableDisplayNames");

constexpr int threadPollInterval = 50; // milliseconds

// Why a store cannot be opened.
struct OpenFailure
{
    // Empty when there is none.
    QString text;
    bool isLock = false;
};

// What keeps the file from being read, be it whole or not. What is no database, or a damaged one, lacks its tables.
// What another program has locked is told apart: the user would be asked to begin anew.
OpenFailure readFailure(const QSqlDatabase& connection)
{
    constexpr int busy = 5; // SQLITE_BUSY
    constexpr int corrupt = 11; // SQLITE_CORRUPT
    constexpr int notADatabase = 26; // SQLITE_NOTADB
    QSqlQuery query(connection);
    if (query.exec(QStringLiteral("SELECT COUNT(*) FROM sqlite_master")))
        return {};
    const int code = query.lastError().nativeErrorCode().toInt() & 0xff;
    if (code == corrupt || code == notADatabase)
        return {};
    return { Database::tr("Can't open database: %1").arg(query.lastError().text()), code == busy };
}

// Nothing when the connection is ready for use. An existing file is never repaired or extended.
OpenFailure setUpConnection(QSqlDatabase& connection, bool fileExisted)
{
    if (!connection.open())
        return { Database::tr("Can't open database: %1").arg(connection.lastError().text()) };
    OpenFailure failure = fileExisted ? readFailure(connection) : OpenFailure();
    if (!failure.text.isEmpty())
        return failure;
    if (fileExisted && !hasValidSchema(connection))
        return { Database::tr("Invalid database structure") };
    // Before the installation, so that a new file gets the page size.
    applyPragmas(connection);
    if (!fileExisted && !installSchema(connection))
        return { Database::tr("Database installation failed") };
    return {};
}

} // namespace

Database::Database(const QString& databaseFilePath, QObject* parent)
    : QObject(parent)
    , m_databaseFilePath(databaseFilePath)
{
    registerStoreMetaTypes();
}

Database::~Database()
{
    close();
    m_warmUp.stop();
    endPendingReplies();
}

void Database::setBulkOperations(const BulkOperations& operations)
{
    m_bulkOperations = operations;
}

bool Database::isOpened() const
{
    const QMutexLocker locker(&m_mutex);
    return m_opened;
}

QString Database::databaseFilePath() const
{
    return m_databaseFilePath;
}

QString Database::lastError() const
{
    const QMutexLocker locker(&m_mutex);
    return m_lastError;
}

bool Database::isLockedByAnother() const
{
    const QMutexLocker locker(&m_mutex);
    return m_isLockedByAnother;
}

QString Database::tableDisplayName(int tableId) const
{
    const QMutexLocker locker(&m_mutex);
    const QString name = m_tableDisplayNames.value(tableId - 1);
    return name.isEmpty() ? tr("Table%1").arg(tableId) : name;
}

QStringList Database::tableDisplayNames() const
{
    const QMutexLocker locker(&m_mutex);
    return m_tableDisplayNames;
}

bool Database::open()
{
    if (isOpened()) {
        qWarning("Database is already opened");
        return false;
    }
    {
        const QMutexLocker locker(&m_mutex);
        m_lastError.clear();
        m_isLockedByAnother = false;
    }
    auto* reply = new OperationReply;
    QMetaObject::invokeMethod(this, "open", Qt::QueuedConnection, Q_ARG(OperationReply*, reply));
    reply->waitForFinished();
    if (!reply->isFinishedDelivered()) {
        // The application quits; the store's thread will still report to the reply.
        connect(reply, &OperationReply::finished, reply, &QObject::deleteLater);
        return false;
    }
    reply->deleteLater();
    const QMutexLocker locker(&m_mutex);
    if (!reply->hasError())
        return m_opened;
    m_lastError = reply->errorString();
    return false;
}

void Database::open(OperationReply* reply)
{
    if (isOpened()) {
        reply->setError(tr("Database is already opened"));
        return;
    }
    const QString failure = openConnection();
    if (!failure.isEmpty()) {
        reply->setError(failure);
        return;
    }
    reply->finish();
    emit opened();
    m_warmUp.start(m_databaseFilePath);
    refreshTableDisplayNames();
}

// The text of the failure; empty when the store is open.
QString Database::openConnection()
{
    if (m_databaseFilePath.isEmpty())
        return tr("Database file is not specified");
    const QFileInfo file(m_databaseFilePath);
    file.dir().mkpath(QStringLiteral("."));
    const bool existed = file.exists();
    OpenFailure failure;
    {
        QSqlDatabase connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName);
        connection.setDatabaseName(m_databaseFilePath);
        failure = setUpConnection(connection, existed);
        if (failure.text.isEmpty()) {
            m_indexedReads = std::make_unique<IndexedReads>(connection);
            const QMutexLocker locker(&m_mutex);
            m_connection = connection;
            m_opened = true;
            return QString();
        }
    }
    // At once: the file may be renamed and a new one opened in its place.
    QSqlDatabase::removeDatabase(connectionName);
    const QMutexLocker locker(&m_mutex);
    m_isLockedByAnother = failure.isLock;
    return failure.text;
}

void Database::close()
{
    if (!isOpened())
        return;
    if (isInStoreThread())
        closeConnection();
    else if (thread()->isRunning())
        closeFromOtherThread();
    else
        closeWithoutThread();
}

void Database::closeConnection()
{
    {
        const QMutexLocker locker(&m_mutex);
        if (!m_opened)
            return;
        m_opened = false;
        m_tableDisplayNames.clear();
        m_indexedReads.reset();
        m_connection.close();
        m_connection = QSqlDatabase();
        QSqlDatabase::removeDatabase(connectionName);
    }
    emit closed();
}

// Waits for the call itself: two threads may close at once, and only the first of the two calls emits closed().
void Database::closeFromOtherThread()
{
    const auto closing = std::make_shared<QSemaphore>();
    QEventLoop loop;
    connect(thread(), &QThread::finished, &loop, &QEventLoop::quit);
    const auto closeAndQuit = [this, &loop, closing]() {
        closeConnection();
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
        closing->release();
    };
    QMetaObject::invokeMethod(this, closeAndQuit, Qt::QueuedConnection);
    // A thread that ended before the loop was connected to it does not say so again.
    if (thread()->isRunning())
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    // The loop ends before the call when the application quits or the store's thread ends.
    while (!closing->tryAcquire(1, threadPollInterval)) {
        if (!thread()->isRunning()) {
            closeWithoutThread();
            return;
        }
    }
}

// The store's thread has ended: what waits for it will never run.
void Database::closeWithoutThread()
{
    QCoreApplication::removePostedEvents(this, QEvent::MetaCall);
    closeConnection();
    endPendingReplies();
}

void Database::endPendingReplies()
{
    QList<QPointer<OperationReply>> replies;
    {
        const QMutexLocker locker(&m_mutex);
        replies.swap(m_pendingReplies);
    }
    for (const QPointer<OperationReply>& reply : qAsConst(replies)) {
        if (reply)
            reply->setError(tr("Database is not opened"));
    }
}

void Database::setTableDisplayNames(const QStringList& value)
{
    if (!isOpened())
        return;
    if (!isInStoreThread()) {
        QMetaObject::invokeMethod(this, "setTableDisplayNames", Qt::QueuedConnection, Q_ARG(QStringList, value));
        return;
    }
    if (writeSettingsValue(connection(), tableDisplayNamesKey, value.join(QLatin1Char(';')).toUtf8())) {
        const QMutexLocker locker(&m_mutex);
        m_tableDisplayNames = value;
    }
    refreshTableDisplayNames();
}

void Database::refreshTableDisplayNames()
{
    if (!isOpened())
        return;
    if (!isInStoreThread()) {
        QMetaObject::invokeMethod(this, "refreshTableDisplayNames", Qt::QueuedConnection);
        return;
    }
    const QString names = QString::fromUtf8(readSettingsValue(connection(), tableDisplayNamesKey));
    {
        const QMutexLocker locker(&m_mutex);
        m_tableDisplayNames = names.split(QLatin1Char(';'));
    }
    emit tableDisplayNamesChanged();
}

bool Database::isInStoreThread() const
{
    return QThread::currentThread() == thread();
}

QSqlDatabase Database::connection() const
{
    const QMutexLocker locker(&m_mutex);
    return m_connection;
}
