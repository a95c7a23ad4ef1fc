// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/vieworder.h"

#include <algorithm>

namespace {

// Looked at without asking whether they are enough.
constexpr size_t blockSize = 1024;

} // namespace

void ViewOrder::clear()
{
    *this = ViewOrder();
}

void ViewOrder::begin(const QString& sortField, bool isDescending)
{
    clear();
    m_sortField = sortField;
    m_isDescending = isDescending;
}

void ViewOrder::set(std::vector<quint32> ascendingRows)
{
    m_rows = std::move(ascendingRows);
    if (m_isDescending)
        std::reverse(m_rows.begin(), m_rows.end());
}

void ViewOrder::extend(const std::vector<quint32>& order, const RowSet& viewRows, size_t count)
{
    const auto greatestSize = size_t(viewRows.count());
    m_rows.reserve(greatestSize + blockSize);
    while (m_rows.size() < std::min(count, greatestSize) && m_seenRows < order.size()) {
        const size_t blockEnd = std::min(m_seenRows + blockSize, order.size());
        size_t size = m_rows.size();
        m_rows.resize(size + blockSize);
        // Each row is written, and stays if the next one does not take its place.
        for (; m_seenRows < blockEnd; ++m_seenRows) {
            const quint32 row = order[m_isDescending ? order.size() - 1 - m_seenRows : m_seenRows];
            m_rows[size] = row;
            size += viewRows.contains(row) ? 1 : 0;
        }
        m_rows.resize(size);
    }
}
