// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/rowranges.h"

#include "store/rowset.h"

#include <QThread>
#include <QtConcurrent>

#include <algorithm>
#include <vector>

namespace {

// Fewer are done before another thread has begun.
constexpr size_t fewestRows = 32 * 1024;

// A processor that is busy with something else leaves its ranges to the others.
constexpr size_t rangesPerThread = 4;

std::vector<RowRange> rangesOf(size_t rows)
{
    const size_t wanted = size_t(std::max(QThread::idealThreadCount(), 1)) * rangesPerThread;
    const size_t words = rows / RowSet::bitsInWord / wanted + 1;
    const size_t step = std::max(words * RowSet::bitsInWord, fewestRows);
    std::vector<RowRange> ranges;
    for (size_t begin = 0; begin < rows; begin += step)
        ranges.push_back({ begin, std::min(begin + step, rows) });
    return ranges;
}

} // namespace

void forEachRowRange(size_t rows, const std::function<void(const RowRange&)>& visit)
{
    const std::vector<RowRange> ranges = rangesOf(rows);
    if (ranges.size() == 1)
        visit(ranges.front());
    else
        QtConcurrent::blockingMap(ranges, visit);
}
