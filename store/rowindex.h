// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/foldedtext.h"
#include "store/indexedview.h"
#include "store/rowset.h"
#include "store/wordindexes.h"

#include <QString>
#include <QStringList>

#include <algorithm>
#include <map>
#include <optional>
#include <vector>

class SqliteStatement;
struct SearchedColumn;
struct sqlite3;

/// By what the rows of one table are found without a statement: their ids, one order of theirs, and the folded texts
/// that lookups search. Each part is read, in one pass over the table, when it is first needed.
///
/// A row has a number in here; a row whose text changes gets a new one, and the old number is dead. The owner sees to
/// it that the table is as it was at the first pass, or tells what has changed by `refresh()`.
///
/// What cannot be answered exactly, or only with more memory than allowed, is refused: the statements have to answer.
/// The functions that read may throw std::bad_alloc; the index is of no more use then.
///
/// Memory per row, in bytes: the id 4, the order 4, library and description their UTF-8 and 10, their words some 20 to
/// 30 where the limits leave as much, and with a lookup in file paths these likewise (path and 5). Limited by `Limits`.
/// Owner: IndexedReads. Thread: the store's.
class RowIndex final
{
public:
    /// The greatest number of bytes held, per row of the table and besides.
    struct Limits
    {
        size_t perRow = 110;
        /// For file paths alone, while lookups search them too.
        size_t perPath = 250;
        size_t besides = 1 << 20;
        /// Of fewer rows no WordIndex is made: their texts are searched in a fraction of a millisecond.
        size_t fewestRowsForWords = 100000;
    };

    RowIndex(sqlite3* handle, int tableId, const Limits& limits);

    /// The fields whose text can be held: library, description, filePath.
    static const QStringList& lookupFields();

    /// Takes in that no other rows than these have changed. False when all is to be read anew.
    bool refresh(std::vector<qint64> changedIds);

    /// The rows of the view; false when it is refused.
    bool findRows(const IndexedView& view, RowSet& rows);
    /// All rows, ascending by this field and the id; null when it is refused. The texts stay when it is for want of
    /// memory; otherwise no row is known any more.
    const std::vector<quint32>* order(const QString& sortField);
    /// Some of the rows, likewise; nothing when it is quicker to take them out of the order of all rows, or a statement
    /// fails.
    std::optional<std::vector<quint32>> sortedRows(const RowSet& rows, const QString& sortField) const;

    qint64 id(size_t row) const { return m_ids[row]; }
    /// The row of an id, or -1.
    qint64 rowOf(qint64 id) const;
    size_t bytes() const;
    /// For tests and benchmarks: waits until the words of the texts are there, if they are being made.
    void waitForWords() { m_words.waitForFinished(); }

    /// Gives all back and answers nothing from now on.
    void refuse();

private:
    /// Rows that are no longer where they stand in the order, and rows to be put where they belong: one that may have
    /// moved is both.
    struct OrderChanges
    {
        std::vector<quint32> leaving;
        std::vector<quint32> coming;
    };
    class Comparison;

    bool prepareTexts(const QStringList& fields);
    bool readTexts(const QStringList& fields);
    bool readRows(const QStringList& fields);
    std::vector<FoldedText*> textsOf(const QStringList& fields);
    template <typename Row>
    static bool appendTexts(const Row& row, const std::vector<FoldedText*>& texts);
    bool readOrder(const QString& sortField);
    bool numberOrder();
    bool takeIds(std::vector<quint32> ids);
    bool beginFirstPass();
    size_t pathBytes() const;
    bool isWithinLimits() const;
    void beginWords();
    void clear();

    qint64 ascendingRowOf(qint64 id) const;
    const RowSet* flaggedRows(const QString& flagsWhere);
    std::vector<SearchedColumn> columns(const QStringList& fields) const;

    bool isSearchedAsBefore(const SqliteStatement& cursor, const QStringList& fields, size_t row) const;
    bool appendRow(const SqliteStatement& cursor, const QStringList& fields, qint64 id);
    void forgetOrder();
    void refreshOrder(const OrderChanges& changes);
    size_t placeInOrder(Comparison& comparison, quint32 row) const;
    bool replaceInOrder(Comparison& comparison, const OrderChanges& changes);
    void removeFromOrder(const std::vector<quint32>& rows);
    void insertIntoOrder(Comparison& comparison, quint32 row);

    sqlite3* m_handle;
    QString m_tableName;
    int m_tableId;
    Limits m_limits;
    size_t m_expectedRows = 0;
    bool m_isRefused = false;
    bool m_isOrderRefused = false;
    bool m_arePathsRefused = false;

    // By row number; ascending, but for those of rows that came or changed after the pass.
    std::vector<quint32> m_ids;
    size_t m_ascendingIds = 0;
    // Rows that are not dead.
    RowSet m_rows;
    std::map<QString, FoldedText> m_texts;
    WordIndexes m_words;
    std::map<QString, RowSet> m_flaggedRows;
    QString m_sortField;
    std::vector<quint32> m_order;
};

// The texts of one more row, which stand from the second column on.
template <typename Row>
bool RowIndex::appendTexts(const Row& row, const std::vector<FoldedText*>& texts)
{
    int column = 0;
    return std::all_of(texts.begin(), texts.end(), [&](FoldedText* text) {
        ++column;
        // What is no text is compared by rules of its own.
        return row.isText(column) && text->append(row.text(column));
    });
}
