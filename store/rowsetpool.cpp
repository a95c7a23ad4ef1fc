// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/rowsetpool.h"

#include <QMutexLocker>
#include <QThread>

#include <algorithm>

RowSetPool::RowSetPool(size_t size)
    : m_sets(size_t(QThread::idealThreadCount()), RowSet(size))
    , m_freeCount(int(m_sets.size()))
{
    for (RowSet& rows : m_sets)
        m_free.push_back(&rows);
    m_fewestFree = m_free.size();
}

void RowSetPool::uniteInto(RowSet& rows) const
{
    for (size_t used = m_fewestFree; used < m_sets.size(); ++used)
        rows.unite(m_sets[used]);
}

RowSet* RowSetPool::take()
{
    m_freeCount.acquire();
    const QMutexLocker lock(&m_mutex);
    RowSet* rows = m_free.back();
    m_free.pop_back();
    m_fewestFree = std::min(m_fewestFree, m_free.size());
    return rows;
}

void RowSetPool::giveBack(RowSet* rows)
{
    {
        const QMutexLocker lock(&m_mutex);
        m_free.push_back(rows);
    }
    m_freeCount.release();
}
