// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/pagecache.h"

#include <QtTest>

#include <algorithm>

namespace {

MetaDataList pageOf(int page, int records = PageCache::pageSize)
{
    MetaDataList items;
    for (int position = 0; position < records; ++position) {
        MetaData record;
        record.setId(page * PageCache::pageSize + position + 1);
        items.append(record);
    }
    return items;
}

QList<int> sorted(QList<int> pages)
{
    std::sort(pages.begin(), pages.end());
    return pages;
}

} // namespace

class PageCacheTest : public QObject
{
    Q_OBJECT

private slots:
    void emptyCacheHasNoRecords();
    void recordsAreFoundByRow();
    void rowsPastTheEndOfAShortPageAreNull();
    void eleventhPageEvictsTheLeastRecentlyUsedOne();
    void readingAPageKeepsItInTheCache();
    void idsChangeNothingAboutWhatGoesNext();
    void replacingARecordChangesNothingAboutWhatGoesNext();
    void insertReplacesAPage();
    void invalidPagesAreStillShown();
    void freshPageIsNoLongerInvalid();
    void invalidPagesAreTakenOnce();
    void evictedPageIsNotInvalid();
    void clearForgetsPagesAndMarks();
};

void PageCacheTest::emptyCacheHasNoRecords()
{
    PageCache cache;

    QVERIFY(cache.record(0).isNull());
    QVERIFY(!cache.contains(0));
    QVERIFY(!cache.isInvalid(0));
    QVERIFY(cache.takeInvalidPages().isEmpty());
}

void PageCacheTest::recordsAreFoundByRow()
{
    PageCache cache;

    cache.insert(0, pageOf(0));
    cache.insert(3, pageOf(3));

    QCOMPARE(cache.record(0).id(), 1);
    QCOMPARE(cache.record(49).id(), 50);
    QCOMPARE(cache.record(150).id(), 151);
    QCOMPARE(cache.record(199).id(), 200);
    QVERIFY(cache.record(50).isNull());
    QVERIFY(cache.record(149).isNull());
}

void PageCacheTest::rowsPastTheEndOfAShortPageAreNull()
{
    PageCache cache;

    cache.insert(1, pageOf(1, 7));

    QCOMPARE(cache.record(56).id(), 57);
    QVERIFY(cache.record(57).isNull());
    QVERIFY(cache.contains(1));
}

void PageCacheTest::eleventhPageEvictsTheLeastRecentlyUsedOne()
{
    PageCache cache;

    for (int page = 0; page <= PageCache::maximumPages; ++page)
        cache.insert(page, pageOf(page));

    QVERIFY(!cache.contains(0));
    for (int page = 1; page <= PageCache::maximumPages; ++page)
        QVERIFY(cache.contains(page));
}

void PageCacheTest::readingAPageKeepsItInTheCache()
{
    PageCache cache;
    for (int page = 0; page < PageCache::maximumPages; ++page)
        cache.insert(page, pageOf(page));

    QCOMPARE(cache.record(0).id(), 1);
    cache.insert(10, pageOf(10));

    QVERIFY(cache.contains(0));
    QVERIFY(!cache.contains(1));
}

void PageCacheTest::idsChangeNothingAboutWhatGoesNext()
{
    PageCache cache;
    for (int page = 0; page < PageCache::maximumPages; ++page)
        cache.insert(page, pageOf(page));

    // The pages have no order of their own: by chance one of many looks may leave the right one.
    for (int page = 0; page < PageCache::maximumPages; ++page) {
        QCOMPARE(cache.ids().size(), PageCache::maximumPages * PageCache::pageSize);
        cache.insert(PageCache::maximumPages + page, pageOf(PageCache::maximumPages + page));
        QVERIFY(!cache.contains(page));
    }
}

void PageCacheTest::replacingARecordChangesNothingAboutWhatGoesNext()
{
    PageCache cache;
    for (int page = 0; page < PageCache::maximumPages; ++page)
        cache.insert(page, pageOf(page));
    MetaData changed = pageOf(0).at(7);
    changed.setDescription("changed");

    QCOMPARE(cache.replace(changed), 7);
    cache.insert(10, pageOf(10));
    QVERIFY(!cache.contains(0));

    changed.setId(pageOf(1).at(3).id());
    QCOMPARE(cache.replace(changed), 53);
    QCOMPARE(cache.record(53).description(), QString("changed"));
}

void PageCacheTest::insertReplacesAPage()
{
    PageCache cache;
    cache.insert(0, pageOf(0));

    cache.insert(0, pageOf(4, 2));

    QCOMPARE(cache.record(0).id(), 201);
    QVERIFY(cache.record(2).isNull());
}

void PageCacheTest::invalidPagesAreStillShown()
{
    PageCache cache;
    cache.insert(2, pageOf(2));

    cache.invalidate();

    QVERIFY(cache.isInvalid(2));
    QVERIFY(cache.contains(2));
    QCOMPARE(cache.record(100).id(), 101);
}

void PageCacheTest::freshPageIsNoLongerInvalid()
{
    PageCache cache;
    cache.insert(1, pageOf(1));
    cache.insert(2, pageOf(2));
    cache.invalidate();

    cache.insert(2, pageOf(2));

    QVERIFY(!cache.isInvalid(2));
    QCOMPARE(cache.takeInvalidPages(), QList<int>{ 1 });
    QVERIFY(cache.contains(2));
}

void PageCacheTest::invalidPagesAreTakenOnce()
{
    PageCache cache;
    cache.insert(0, pageOf(0));
    cache.insert(5, pageOf(5));
    cache.invalidate();

    QCOMPARE(sorted(cache.takeInvalidPages()), QList<int>({ 0, 5 }));

    QVERIFY(!cache.contains(0));
    QVERIFY(!cache.contains(5));
    QVERIFY(cache.takeInvalidPages().isEmpty());
}

void PageCacheTest::evictedPageIsNotInvalid()
{
    PageCache cache;
    cache.insert(100, pageOf(100));
    cache.invalidate();

    for (int page = 0; page < PageCache::maximumPages; ++page)
        cache.insert(page, pageOf(page));

    QVERIFY(!cache.contains(100));
    QVERIFY(!cache.isInvalid(100));
}

void PageCacheTest::clearForgetsPagesAndMarks()
{
    PageCache cache;
    cache.insert(1, pageOf(1));
    cache.invalidate();

    cache.clear();

    QVERIFY(!cache.contains(1));
    QVERIFY(cache.record(50).isNull());
    QVERIFY(cache.takeInvalidPages().isEmpty());
}

QTEST_GUILESS_MAIN(PageCacheTest)

#include "tst_pagecache.moc"
