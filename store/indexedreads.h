// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/changewatch.h"
#include "store/rowindex.h"
#include "store/vieworder.h"

#include <QVariantList>
#include <QVariantMap>

#include <memory>
#include <optional>

class OperationReply;
class QSqlDatabase;

/// Answers the reads for which a statement has to walk a whole table (lookups, pages far from the start, places of
/// records) from a RowIndex, with the very results of the statements of store/readoperations.h.
///
/// Each function returns false, with nothing done to the reply, when the statement has to answer: it is as quick, the
/// parameters are for SQLite alone to judge, the table is too large for the memory allowed, or something failed. The
/// index of one table is held, that of the last read; another table's read gives it back. Each answer is as new as the
/// file: changes are asked for first, see ChangeWatch.
///
/// Memory: that of the RowIndex, and at most 5 bytes a row for the rows of the last view; 120 bytes a row in all, and
/// with a lookup in file paths up to 250 more.
/// Owner: Database, from open to close. Thread: the store's; the connection given is always the same.
class IndexedReads final
{
public:
    explicit IndexedReads(const QSqlDatabase& connection, const RowIndex::Limits& limits = RowIndex::Limits());

    bool getRowsCount(
        const QSqlDatabase& connection, OperationReply* reply, int tableId, const QVariantMap& parameters);
    bool pullMetaData(
        const QSqlDatabase& connection, OperationReply* reply, int tableId, const QVariantMap& parameters);
    bool lookupMetaDataRow(const QSqlDatabase& connection, OperationReply* reply, int tableId, qint64 metaDataId,
        const QVariantMap& parameters);

    /// What is held at the moment.
    size_t bytes() const;
    /// For tests and benchmarks: waits for what is made in the background to quicken lookups.
    void waitForWords();

private:
    template <typename Answer>
    std::optional<QVariant> answer(
        const QSqlDatabase& connection, int tableId, const QVariantMap& parameters, const Answer& findAnswer);
    void chooseTable(int tableId);
    bool bringUpToDate();
    void forgetView();

    const RowSet* matchingRows(const IndexedView& view);
    const std::vector<quint32>* orderOf(const IndexedView& view);
    bool orderMatchingRows(const IndexedView& view, size_t count);
    std::optional<std::vector<qint64>> idsOfPage(const IndexedView& view, size_t offset, size_t limit);
    std::optional<QVariant> countRows(const IndexedView& view);
    std::optional<QVariant> readPage(
        const QSqlDatabase& connection, const IndexedView& view, const QVariantMap& parameters);
    std::optional<QVariant> findPlace(const IndexedView& view, qint64 id);

    sqlite3* m_handle;
    RowIndex::Limits m_limits;
    std::unique_ptr<ChangeWatch> m_watch;
    int m_tableId = 0;
    std::unique_ptr<RowIndex> m_index;
    // It was never brought up to date.
    bool m_isIndexNew = true;

    // The rows of the last filtered view, in the order of the ids and in its own.
    std::optional<QString> m_viewWhere;
    RowSet m_viewRows;
    ViewOrder m_viewOrder;
};
