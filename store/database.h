// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/bulkoperations.h"
#include "store/filewarmup.h"
#include "store/metadata.h"

#include <QMutex>
#include <QObject>
#include <QPointer>
#include <QSqlDatabase>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

#include <functional>
#include <memory>

class IndexedReads;
class OperationReply;

/// The catalogue's store: one SQLite file with fifteen metadata tables and a settings table.
///
/// Created without a parent, moved to a thread of its own and then opened. Each operation is a queued call into that
/// thread and returns at once a new `OperationReply` without parent, which the caller owns and releases with
/// `deleteLater()` after `finished()`; operations run one at a time in the order requested. An operation on a store
/// that is not open ends with "Database is not opened"; so does one that is still waiting when the store closes or is
/// destroyed.
///
/// Table identifiers run from 1 to 15. Query parameters are those of store/querycomposer.h; `pullMetaData` also takes
/// "singleField" (one of `allFieldNames()`).
///
/// Owner: the main window. Thread: the store's own thread; public methods and slots may be called from any thread
/// unless said otherwise. The mutex is held only to read or write members, never through an operation's body.
class Database : public QObject
{
    Q_OBJECT

public:
    explicit Database(const QString& databaseFilePath, QObject* parent = nullptr);
    /// Closes the store and ends the warm-up read. Thread: any, once no operation is under way.
    ~Database() override;

    /// Hands over the bodies of scan, evaluateLibraries and replace. Call before `open()`.
    void setBulkOperations(const BulkOperations& operations);

    bool isOpened() const;
    QString databaseFilePath() const;
    /// Text of the last failed synchronous `open()`, empty after a success and when the application quit before the
    /// outcome was known.
    QString lastError() const;
    /// True when that `open()` found the file locked by another program: it may be whole, and open once that is done.
    bool isLockedByAnother() const;
    /// The name that the user gave to a table, or "Table%1".
    QString tableDisplayName(int tableId) const;
    /// The stored names, index 0 for table 1; may be shorter than fifteen, entries may be empty.
    QStringList tableDisplayNames() const;

    /// Reads files and folders into a table. Reports warnings; see scan/scanoperation.h.
    OperationReply* scan(int tableId, const QStringList& paths, const QString& libraryEvaluationRules);
    /// Result "rowsCount" (int).
    OperationReply* getRowsCount(int tableId, const QVariantMap& parameters);
    /// Result "items": a `MetaDataList`, or with "singleField" a `QVariantList` of that column, in row order.
    OperationReply* pullMetaData(int tableId, const QVariantMap& parameters);
    /// Writes records; a record that is refused is dropped silently, the reply never has an error of its own.
    OperationReply* pushMetaData(int tableId, const MetaDataList& items);
    /// Deletes all of these records or none.
    OperationReply* deleteMetaData(int tableId, const QVariantList& ids);
    /// Marks all of these records, or none, with `value` (1 on the playlist, 0 off it).
    OperationReply* setMetaDataPlaylist(int tableId, const QVariantList& ids, int value);
    /// Result "row" (int): the zero-based row at which the record stands, or would stand, in the view.
    OperationReply* lookupMetaDataRow(int tableId, int metaDataId, const QVariantMap& parameters);
    /// Result "replacementsCount" (int).
    OperationReply* evaluateLibraries(int tableId, const QString& libraryEvaluationRules);
    /// Result "replacementsCount" (int).
    OperationReply* replace(int tableId, const QStringList& fields, const QString& before, const QString& after,
        Qt::CaseSensitivity caseSensitivity, const QVariantMap& parameters);
    OperationReply* clearTable(int tableId);
    /// Rewrites the whole file; cannot be canceled.
    OperationReply* rebuild();

signals:
    /// After each successful open. Emitted in the store's thread, like the other two.
    void opened();
    void closed();
    /// After each refresh of the names, also when they are the same.
    void tableDisplayNamesChanged();

public slots:
    /// Opens the file, creating it with its tables when it does not exist, and waits for the outcome. False when it
    /// is open already or cannot be opened; see `lastError()`. Runs a local event loop, deaf to user input.
    bool open();
    /// Closes the file after all that was requested before. From another thread it runs a local event loop, deaf to
    /// user input, until the store's thread has done so.
    void close();
    /// Stores the names of the tables; they must not contain ";".
    void setTableDisplayNames(const QStringList& value);
    /// Reads the names of the tables again.
    void refreshTableDisplayNames();

private slots:
    void open(OperationReply* reply);
    void scan(OperationReply* reply, int tableId, const QStringList& paths, const QString& libraryEvaluationRules);
    void getRowsCount(OperationReply* reply, int tableId, const QVariantMap& parameters);
    void pullMetaData(OperationReply* reply, int tableId, const QVariantMap& parameters);
    void pushMetaData(OperationReply* reply, int tableId, const MetaDataList& items);
    void deleteMetaData(OperationReply* reply, int tableId, const QVariantList& ids);
    void setMetaDataPlaylist(OperationReply* reply, int tableId, const QVariantList& ids, int value);
    void lookupMetaDataRow(OperationReply* reply, int tableId, int metaDataId, const QVariantMap& parameters);
    void evaluateLibraries(OperationReply* reply, int tableId, const QString& libraryEvaluationRules);
    void replace(OperationReply* reply, int tableId, const QStringList& fields, const QString& before,
        const QString& after, Qt::CaseSensitivity caseSensitivity, const QVariantMap& parameters);
    void clearTable(OperationReply* reply, int tableId);
    void rebuild(OperationReply* reply);

private:
    template <typename... Arguments>
    OperationReply* request(const char* operation, const Arguments&... arguments);
    void run(OperationReply* reply, const std::function<void(const QSqlDatabase&)>& body);
    template <typename Operation, typename... Arguments>
    void runBulkOperation(const Operation& operation, OperationReply* reply, const Arguments&... arguments);
    bool isInStoreThread() const;
    QSqlDatabase connection() const;

    QString openConnection();
    void closeConnection();
    void closeFromOtherThread();
    void closeWithoutThread();
    void endPendingReplies();

    const QString m_databaseFilePath;
    BulkOperations m_bulkOperations;
    FileWarmUp m_warmUp;
    // While open; used in the store's thread only.
    std::unique_ptr<IndexedReads> m_indexedReads;

    mutable QMutex m_mutex;
    // What follows is guarded by the mutex. The connection is used in the store's thread only.
    QSqlDatabase m_connection;
    QStringList m_tableDisplayNames;
    QString m_lastError;
    bool m_isLockedByAnother = false;
    bool m_opened = false;
    // Requested, but not begun: they have to be answered when the thread ends before their turn.
    QList<QPointer<OperationReply>> m_pendingReplies;
};
