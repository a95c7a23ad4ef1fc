// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/bulkoperations.h"
#include "store/database.h"
#include "store/metadata.h"
#include "store/operationreply.h"

#include <QSemaphore>
#include <QTemporaryDir>
#include <QThread>

#include <memory>

namespace TestSupport {

/// Waits until the operation has ended and hands its reply over; fails the program after a minute.
/// Thread: the reply's own.
std::unique_ptr<OperationReply> await(OperationReply* reply);

/// A record that every table accepts, named after its path; its other texts are empty, its rating is 1.0.
MetaData sampleRecord(const QString& filePath);

/// Makes a new file with all tables and no records, as the store itself does, but quicker than the store, which waits
/// for the disk after each of its statements.
void makeEmptyDatabase(const QString& filePath);

/// A store on a thread of its own, as the program has it, with a file in a new temporary folder.
///
/// The store is not open at first. Owner: a test. Thread: the test's.
class StoreFixture final
{
public:
    StoreFixture();
    explicit StoreFixture(const BulkOperations& operations);
    /// Closes the store, ends its thread and destroys both.
    ~StoreFixture();
    Q_DISABLE_COPY(StoreFixture)

    Database& database() { return *m_database; }
    QThread& thread() { return m_thread; }
    QString folderPath() const { return m_folder.path(); }
    QString filePath() const { return m_folder.filePath(QStringLiteral("VellumcastDB.dat")); }

    /// Opens the store, with an empty database if there is no file yet, and waits until it has begun what follows that;
    /// fails the program when it cannot.
    void open();
    /// Opens the store where it is closed, and takes all records out of a table; the next one has the id 1 again. Of a
    /// store that several tests share, since making a database takes longer than a test.
    void openEmpty(int tableId);
    /// Writes records into a table, each new one with this time stamp; fails the program when one is refused.
    void insert(int tableId, const MetaDataList& items, qint64 scanTimestamp = 0);
    /// Executes a statement on the store's own connection, in its thread, and returns the driver's error text.
    QString execute(const QString& statement);
    /// The whole table, in the order of the ids.
    MetaDataList records(int tableId);
    /// Destroys the store and its thread early.
    void destroy();

private:
    QTemporaryDir m_folder;
    QThread m_thread;
    std::unique_ptr<Database> m_database;
};

/// Keeps the store's thread busy while it lives, so that what is requested meanwhile stays unanswered.
///
/// Owner and thread: one test. Nothing may wait for the store before the hold is released.
class StoreHold final
{
public:
    explicit StoreHold(Database& store);
    explicit StoreHold(StoreFixture& store);
    ~StoreHold();
    Q_DISABLE_COPY(StoreHold)

    void release();

private:
    std::shared_ptr<QSemaphore> m_released = std::make_shared<QSemaphore>();
    bool m_isReleased = false;
};

} // namespace TestSupport
