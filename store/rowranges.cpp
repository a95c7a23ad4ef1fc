// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/rowranges.h"

#include "store/rowset.h"

#include <QFutureSynchronizer>
#include <QThread>
#include <QtConcurrent>

#include <algorithm>
#include <atomic>

namespace {

// The texts of so many fit into a processor's own cache.
constexpr size_t rowsPerRange = 4 * 1024;
static_assert(rowsPerRange % RowSet::bitsInWord == 0);

// Fewer are done before another thread has begun.
constexpr size_t fewestRanges = 8;

} // namespace

void forEachRowRange(size_t rows, const std::function<void(const RowRange&)>& visit)
{
    std::atomic<size_t> next = 0;
    const auto visitRanges = [&]() {
        for (size_t begin = next.fetch_add(rowsPerRange); begin < rows; begin = next.fetch_add(rowsPerRange))
            visit({ begin, std::min(begin + rowsPerRange, rows) });
    };
    // This thread begins at once. Those that have not begun when all is done are not waited for.
    QFutureSynchronizer<void> others;
    for (int i = 1; i < QThread::idealThreadCount() && rows > (fewestRanges - 1) * rowsPerRange; ++i)
        others.addFuture(QtConcurrent::run(visitRanges));
    visitRanges();
}
