// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/rowranges.h"

#include "store/rowset.h"

#include <QtConcurrent>

#include <algorithm>
#include <vector>

namespace {

// The texts of so many fit into a processor's own cache.
constexpr size_t rowsPerRange = 4 * 1024;
static_assert(rowsPerRange % RowSet::bitsInWord == 0);

// Fewer are done before another thread has begun.
constexpr size_t fewestRanges = 8;

std::vector<RowRange> rangesOf(size_t rows)
{
    std::vector<RowRange> ranges;
    for (size_t begin = 0; begin < rows; begin += rowsPerRange)
        ranges.push_back({ begin, std::min(begin + rowsPerRange, rows) });
    return ranges;
}

} // namespace

void forEachRowRange(size_t rows, const std::function<void(const RowRange&)>& visit)
{
    const std::vector<RowRange> ranges = rangesOf(rows);
    if (ranges.size() < fewestRanges)
        std::for_each(ranges.begin(), ranges.end(), visit);
    else
        QtConcurrent::blockingMap(ranges, visit);
}
