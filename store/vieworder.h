// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/rowset.h"

#include <QString>

#include <vector>

/// The rows of one view in its own order, from the first on, as many as were asked for so far: the first page of a
/// lookup with a million hits takes a look at some hundred rows only.
///
/// Memory per row of the view: 4 bytes, once a page was asked for. Owner: IndexedReads. Thread: the store's.
class ViewOrder final
{
public:
    bool isOf(const QString& sortField, bool isDescending) const
    {
        return !m_sortField.isEmpty() && m_sortField == sortField && m_isDescending == isDescending;
    }
    /// Of no view.
    void clear();
    void begin(const QString& sortField, bool isDescending);
    /// All rows of the view at once, ascending by its field and the id.
    void set(std::vector<quint32> ascendingRows);
    /// Sees to it that there are so many of the view's rows, if it has as many. `order` are all rows of the table,
    /// ascending by the view's field and the id, each time the same; may throw std::bad_alloc.
    void extend(const std::vector<quint32>& order, const RowSet& viewRows, size_t count);

    const std::vector<quint32>& rows() const { return m_rows; }
    size_t bytes() const { return m_rows.capacity() * sizeof(quint32); }

private:
    QString m_sortField;
    bool m_isDescending = false;
    std::vector<quint32> m_rows;
    // How many rows of the table have been looked at.
    size_t m_seenRows = 0;
};
