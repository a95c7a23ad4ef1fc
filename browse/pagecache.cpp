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

QHash<int, qint64> PageCache::ids() const
{
    QHash<int, qint64> ids;
    const QList<int> pages = m_pages.keys();
    for (const int page : pages) {
        const MetaDataList& records = *m_pages[page];
        for (int index = 0; index < records.size(); ++index)
            ids.insert(page * pageSize + index, records.at(index).id());
    }
    return ids;
}

int PageCache::replace(const MetaData& record)
{
    const int row = ids().key(record.id(), -1);
    if (row >= 0)
        (*m_pages[row / pageSize])[row % pageSize] = record;
    return row;
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
