// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/metadata.h"

#include <QObject>
#include <QPointer>
#include <QVariantMap>

class Database;
class OperationReply;

/// Reads every record of a view, front to back, in pages of 10,000, and hands each page to a subclass.
///
/// A run has a reply of its own: `start()` returns it before anything is asked of the store, its progress counts the
/// records handled, and canceling it ends the run at the next page. The end of the records is a page that is not full;
/// their count only scales the progress. What a subclass writes is prepared, filled, completed and released through
/// four hooks; only the outcome of `completeOutput()` makes a run a success.
///
/// Errors of a run: "Rows count reply error: %1", "Unable to receive MetaData page: %1", "Canceled", and those that the
/// subclass reports with `fail()`.
///
/// Owner: the command that runs it; it owns the reply too. Thread: GUI; nothing here waits for the store.
class MetaDataHandler : public QObject
{
    Q_OBJECT

public:
    /// The most records that one page holds.
    static constexpr int pageSize = 10000;

    explicit MetaDataHandler(QObject* parent = nullptr);
    /// A run that is under way ends with "Canceled".
    ~MetaDataHandler() override;

    /// The store to read, not owned, and the table, 1 to 15.
    void setDatabase(Database* database, int tableId);
    /// Filters, lookup and order of the records; see store/querycomposer.h. Ranges of rows are ignored.
    void setQueryParameters(const QVariantMap& parameters);

    /// Begins a run at the first record and returns its reply, which the caller owns. An earlier run that is still
    /// under way ends with "Canceled".
    Q_INVOKABLE OperationReply* start();

protected:
    /// Prepares the output of a run, before any request; may fail the run. Does nothing unless overridden.
    virtual void beginOutput();
    /// Takes the next records, in the order of the view; may fail the run. An empty list comes where the page before
    /// was full and the last.
    virtual void handlePage(const MetaDataList& items) = 0;
    /// Makes the output whole, after the last page; may still fail the run. Does nothing unless overridden.
    virtual void completeOutput();
    /// Lets go of the output, completed or not, before anybody is told of the end. The destructor of a subclass that
    /// overrides it does the same, for a run that is still under way.
    virtual void releaseOutput();

    /// The store that is read; null when it is gone.
    Database* database() const;
    /// Ends the run with this error text, which must not be empty, once the hook that calls it has returned.
    void fail(const QString& errorText);

private slots:
    void requestItemsCount();
    void handleItemsCountReply();
    void requestNextPage();
    void handlePageReply();
    void finalizeReply();

private:
    enum class Phase
    {
        Idle,
        Counting,
        Reading
    };

    bool isCanceled() const;
    void endRun(const QString& errorText);
    void requestLater(void (MetaDataHandler::*request)());
    void follow(OperationReply* request, void (MetaDataHandler::*handler)());

    QPointer<Database> m_database;
    int m_tableId = 1;
    QVariantMap m_parameters;
    // The caller may delete it at any time; the run then ends as if it had been canceled.
    QPointer<OperationReply> m_reply;
    // The store's answer that the run waits for; null between two requests.
    QPointer<OperationReply> m_request;
    Phase m_phase = Phase::Idle;
    QString m_failure;
    int m_itemsCount = 0;
    int m_handledItems = 0;
    int m_nextPage = 0;
};
