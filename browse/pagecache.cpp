// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/pagecache.h"

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
    const int page = row / pageSize;
    if (!contains(page))
        return {};
    markUsed(page);
    return m_pages.value(page).value(row % pageSize);
}

void PageCache::markUsed(int page) const
{
    // Most reads are of the page that was read last.
    if (!m_usedPages.isEmpty() && m_usedPages.last() == page)
        return;
    m_usedPages.removeOne(page);
    m_usedPages.append(page);
}

QHash<int, qint64> PageCache::ids() const
{
    QHash<int, qint64> ids;
    for (auto page = m_pages.begin(); page != m_pages.end(); ++page) {
        for (int index = 0; index < page->size(); ++index)
            ids.insert(page.key() * pageSize + index, page->at(index).id());
    }
    return ids;
}

int PageCache::replace(const MetaData& record)
{
    const int row = ids().key(record.id(), -1);
    if (row >= 0)
        m_pages[row / pageSize][row % pageSize] = record;
    return row;
}

void PageCache::insert(int page, const MetaDataList& records)
{
    m_invalidPages.removeAll(page);
    m_pages.insert(page, records);
    markUsed(page);
    if (m_pages.size() > maximumPages)
        m_pages.remove(m_usedPages.takeFirst());
}

void PageCache::invalidate()
{
    m_invalidPages = m_pages.keys();
}

QList<int> PageCache::takeInvalidPages()
{
    QList<int> removed;
    removed.swap(m_invalidPages);
    for (const int page : qAsConst(removed)) {
        m_pages.remove(page);
        m_usedPages.removeOne(page);
    }
    return removed;
}

void PageCache::clear()
{
    m_pages.clear();
    m_usedPages.clear();
    m_invalidPages.clear();
}
