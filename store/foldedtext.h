// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/likepattern.h"
#include "store/rowranges.h"
#include "store/rowset.h"

#include <QByteArray>

#include <string_view>
#include <vector>

/// One text column in memory, folded, row after row, made to be searched from end to end.
///
/// Memory per row: the text's UTF-8 and 5 bytes. Owner: a RowIndex. Thread: the store's.
class FoldedText final
{
public:
    FoldedText();

    /// Makes room; may throw std::bad_alloc, as `append()` may.
    void reserve(size_t rows);
    /// Adds the text of the next row, up to its first NUL, where LIKE ends too. False, with nothing added, when it is
    /// not UTF-8, of which only SQLite can tell how it compares, or when the column would pass a gigabyte.
    bool append(std::string_view text);
    /// Gives back what was reserved in vain.
    void squeeze();

    size_t rows() const { return m_starts.size() - 1; }
    std::string_view row(size_t index) const;
    size_t bytes() const;

    /// Adds all rows of the range that match to `hits`, which has the size of the column. Ranges that begin at
    /// multiples of `RowSet::bitsInWord` may be searched by different threads at once.
    void find(const LikePattern& pattern, const RowRange& range, RowSet& hits) const;
    bool isMatch(const LikePattern& pattern, size_t index) const;

private:
    bool holdsAnchor(std::string_view anchor, size_t index) const;
    size_t rowAt(size_t position, size_t from) const;

    // Each text ends with a NUL, which no term contains, so that no match spans two rows.
    QByteArray m_text;
    // Where each row begins, and the end.
    std::vector<quint32> m_starts;
};
