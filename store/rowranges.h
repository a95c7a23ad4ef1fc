// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>

/// Rows of one table from `begin` on, up to but without `end`.
struct RowRange
{
    size_t begin = 0;
    size_t end = 0;
};

/// Calls `visit` with ranges that make up all rows, in no order: many of them at once on all processors. Each range
/// begins at a multiple of `RowSet::bitsInWord`, and ends at one or with the rows. Returns when all calls have; they
/// must not throw. Thread: any.
void forEachRowRange(size_t rows, const std::function<void(const RowRange&)>& visit);
