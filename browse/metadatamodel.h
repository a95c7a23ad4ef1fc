// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "browse/advanceditemdelegate.h"
#include "browse/pagecache.h"
#include "store/metadata.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>
#include <QVector>

#include <memory>

class Database;
class FieldsCollection;
class OperationReply;

/// The table model behind the main table: any row of a very large metadata table, from a small cache of pages.
///
/// Knows the number of rows and keeps ten pages of fifty records; a row that is not cached is empty at first and its
/// page is asked of the store 100 ms after the last such miss, if the view says that it is on screen. Lookup, filters
/// and sorting are parameters of the store's queries; each change is a new *generation* of the query: replies of an
/// older one are dropped. After a requery of the same table its old rows may be shown until fresh ones arrive; rows of
/// one table are never shown as another's.
///
/// Owner: the view. Thread: GUI; nothing here waits for the store save the destructor, which ends collections that are
/// under way.
class MetaDataModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        FilePathColumn,
        FileNameColumn,
        TypeColumn,
        LibraryColumn,
        DescriptionColumn,
        DurationColumn,
        RatingColumn,
        ColumnsCount
    };

    enum Role
    {
        /// Header: the record field that the column shows.
        FieldNameRole = Qt::UserRole + 1,
        /// Cell: the whole record as a `MetaData`.
        RecordRole = Qt::UserRole + 2,
        /// Header: true for a column that may be hidden.
        HideableRole = Qt::UserRole + 3,
        /// Cell: the words of the lookup to highlight.
        HighlightedWordsRole = AdvancedItemDelegate::HighlightedWordsRole,
        /// Cell: opacity of the text, 0 to 1, when it is not 1.
        OpacityRole = AdvancedItemDelegate::OpacityRole,
        /// Cell: a second text at the right end.
        TrailingTextRole = AdvancedItemDelegate::TrailingTextRole
    };

    explicit MetaDataModel(QObject* parent = nullptr);
    /// Cancels the collections under way and waits for their ends.
    ~MetaDataModel() override;

    /// The store to read, not owned, may be null; and the table to show, 1 to 15. Always requeries.
    void setDatabase(Database* database, int tableId);
    Database* database() const;
    /// Always requeries.
    void setTableId(int tableId);
    int tableId() const { return m_tableId; }
    /// Requeries when the text is new.
    void setLookup(const QString& text);
    /// Requeries when the flag is new.
    void setFilePathLookupEnabled(bool enabled);
    /// Requeries when a flag is new.
    void setFilters(bool lastScannedOnly, bool playlistOnly);

    /// Rows reported now; -1 before the first answer.
    int rowsCount() const { return m_rowsCount; }
    /// True once `rowsCount()` is known to be the true count.
    bool isRowsCountActual() const { return m_isRowsCountActual; }
    /// True while a page or a count is being asked of the store.
    bool isProcessing() const { return m_pendingRequests > 0 || m_isCountPending; }
    /// True from a requery until its first page has arrived or failed.
    bool isRequeryPending() const;
    /// Grows whenever store, table, lookup, filters or order are set, not by `requery()`: the numbers of one query's
    /// rows mean nothing in another.
    int queryNumber() const { return m_queryNumber; }
    /// False while the rows are still those of an earlier query, and after the current one has failed.
    bool isQueryShown() const { return m_shownQuery == m_queryNumber; }
    /// The store's error text when the current query has failed and so is not shown; else empty. Such a query's rows
    /// are not asked for any more: what is cached of the rows before it stays, the others are empty.
    QString queryError() const { return m_queryError; }
    /// The parameters of the current view for the store: filters and lookup, and the order.
    QVariantMap queryParameters() const;
    /// False when the row's record is not cached, or stale since a requery: then it must not be acted on.
    bool isRowFresh(int row) const;
    /// The ids of the records that are cached, and so may be shown, by row; stale ones among them.
    QHash<int, qint64> shownIds() const { return m_cache.ids(); }
    /// The record as it was last read; null when it is not cached, or stale since a requery.
    MetaData freshRecord(qint64 metaDataId) const;
    /// Shows a changed record at once where the cached one with its id stands; the store is not told.
    void showChangedRecord(const MetaData& record);

    /// Collects one field of the rows of these indexes; result "items" is a `QVariantList` in no fixed order. The
    /// caller owns the reply.
    /// Errors: "Index list is empty" and "Database is not opened", both set before this returns; "Unable to receive
    /// MetaData page", also when another query was asked meanwhile; "Canceled".
    OperationReply* collectFields(const QModelIndexList& indexes, const QString& fieldName);
    /// Asks the store where a record stands in the current view; result "row". The caller owns the reply, which is
    /// null without a store.
    OperationReply* lookupRow(qint64 metaDataId);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override;
    bool dropMimeData(
        const QMimeData* data, Qt::DropAction action, int row, int column, const QModelIndex& parent) override;

signals:
    /// The count is known, or no longer; or `queryError()` is another.
    void actualRowsCountChanged();
    /// The first request of a burst went out. Alternates with `processingFinished()`.
    void processingStarted();
    /// The last request under way was answered (queued).
    void processingFinished();
    /// Asks whether any of these rows is on screen; to be connected directly.
    void rangeVisibilityCheck(int topRow, int bottomRow, bool& visible);
    /// The store or the table changed.
    void tableChaged();
    /// Inside the reset that a requery's first page brings.
    void requeried();
    /// The last collection under way has ended.
    void fieldsCollectionContextsReleased();

public slots:
    /// Asks for the first page again; the reset happens when it arrives.
    void requery();
    void requestRowsCount();
    void handleRowsCountReply();
    void requestPages();
    void handleModelPageReply();
    void cleanInvalidPages();
    void handleFieldsCollectionPageReply();
    void releaseFieldsCollectionContext();

private:
    QVariantMap filterParameters() const;
    MetaData recordAt(int row) const;
    QVariant displayText(const MetaData& record, int column) const;
    QVariant highlightedWords(int column) const;
    void schedulePageRequest(int page) const;
    void requestPage(int page);
    void requestNextCollectionPage(FieldsCollection& collection);
    void applyInitialPage(int page, const MetaDataList& items);
    void applyPage(int page, const MetaDataList& items);
    void emitRowsChanged(int page, int items);
    void handleFailedInitialPage(const QString& errorText);
    int generationToCount() const;
    void requestFinished();
    void announceProcessingFinished();
    void showOtherTable();
    void askNewQuery();

    QPointer<Database> m_database;
    int m_tableId = 1;
    int m_rowsCount = -1;
    bool m_isRowsCountActual = false;
    bool m_isCountPending = false;
    bool m_isCountWanted = false;
    // Of the query that is asked for, of the one whose first page came or failed last, and of the one whose rows are
    // shown: -1 while there are none of this table.
    int m_generation = 0;
    int m_answeredGeneration = 0;
    int m_shownGeneration = -1;
    QVariantMap m_shownFilter;
    // Of the query that is asked for, and of the one whose rows are shown.
    int m_queryNumber = 0;
    int m_shownQuery = 0;
    QString m_queryError;

    bool m_lastScannedOnly = false;
    bool m_playlistOnly = false;
    QString m_lookup;
    QStringList m_lookupWords;
    bool m_isFilePathLookupEnabled = false;
    QString m_sortField;
    int m_sortOrder = Qt::AscendingOrder;

    PageCache m_cache;
    // Misses are noted while a cell is read, hence mutable.
    mutable QVector<int> m_requestQueue;
    QVector<int> m_pendingPages;
    int m_pendingRequests = 0;
    bool m_isProcessingAnnounced = false;
    mutable QTimer m_requestTimer;
    mutable QTimer m_cleanTimer;
    std::vector<std::unique_ptr<FieldsCollection>> m_collections;
};
