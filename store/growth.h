// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstddef>

/// What a large block should hold next, when it holds so many elements and is full: a hundred-and-twenty-eighth more,
/// where containers take as much again. They are held long and grow seldom.
constexpr size_t nextCapacity(size_t size)
{
    return size + std::max(size / 128, size_t(1024));
}

/// Adds an element at the end of a std::vector.
template <typename Vector, typename Value>
void appendSparingly(Vector& vector, Value value)
{
    if (vector.size() == vector.capacity())
        vector.reserve(nextCapacity(vector.size()));
    vector.push_back(value);
}
