// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/pagecache.h"

#include <memory>

PageCache::PageCache()
    : m_pages(maximumPages)
{
}

bool PageCache::contains(int page) const
{
    return m_pages.contains(page);
}

bool PageCache::isInvalid(int page) const
{
    return m_invalidPages.contains(page) && m_pages.contains(page);
}

MetaData PageCache::record(int row) const
{
    const MetaDataList* records = m_pages.object(row / pageSize);
    return records ? records->value(row % pageSize) : MetaData();
}

void PageCache::insert(int page, const MetaDataList& records)
{
    m_invalidPages.removeAll(page);
    m_pages.insert(page, std::make_unique<MetaDataList>(records).release());
}

void PageCache::invalidate()
{
    m_invalidPages = m_pages.keys();
}

QList<int> PageCache::takeInvalidPages()
{
    QList<int> removed;
    removed.swap(m_invalidPages);
    for (const int page : qAsConst(removed))
        m_pages.remove(page);
    return removed;
}

void PageCache::clear()
{
    m_pages.clear();
    m_invalidPages.clear();
}
