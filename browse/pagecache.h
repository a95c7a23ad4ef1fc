// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/metadata.h"

#include <QHash>
#include <QList>

/// The last used pages of a table, ten at most, and which of them are stale.
///
/// A page is up to `pageSize` consecutive records; page p holds the rows from p × pageSize on. A stale page may still
/// be shown until a fresh one arrives or `takeInvalidPages()` removes it.
///
/// Owner: the model. Thread: GUI.
class PageCache final
{
public:
    static constexpr int pageSize = 50;
    static constexpr int maximumPages = 10;

    bool contains(int page) const;
    /// True for a cached page that must be fetched again.
    bool isInvalid(int page) const;
    /// The record at this row, or a null record when its page is not cached or ends before it. Marks the page as used.
    MetaData record(int row) const;
    /// The ids of all cached records by row, stale ones too. Marks no page as used.
    QHash<int, qint64> ids() const;
    /// Puts a changed record in the place of the one with its id, fresh or stale; the row, or -1 when it is not cached.
    /// Marks no page as used.
    int replace(const MetaData& record);
    /// Puts a fresh page in; the least recently used one goes when there are more than ten.
    void insert(int page, const MetaDataList& records);
    /// Marks every cached page as stale.
    void invalidate();
    /// Removes the stale pages and returns their numbers.
    QList<int> takeInvalidPages();
    void clear();

private:
    void markUsed(int page) const;

    QHash<int, MetaDataList> m_pages;
    // The cached pages, the least recently used one first. A page is used while it is read, hence mutable.
    mutable QList<int> m_usedPages;
    QList<int> m_invalidPages;
};
