// SPDX-License-Identifier: GPL-3.0-or-later
// What the model asks of the store, and what it does with the answers.
#include "browse/fieldscollection.h"
#include "browse/metadatamodel.h"
#include "store/database.h"
#include "store/operationreply.h"

#include <QDebug>

#include <algorithm>

namespace {

const char pageProperty[] = "pageIndex";
const char initialProperty[] = "initial";
const char generationProperty[] = "generation";
const char contextProperty[] = "context";

// A store's reply goes by itself after its end, also when the model has gone before.
OperationReply* selfDeleting(OperationReply* reply)
{
    QObject::connect(reply, &OperationReply::finished, reply, &QObject::deleteLater);
    return reply;
}

} // namespace

void MetaDataModel::requery()
{
    // Also without a store: what is still under way was asked of another one.
    ++m_generation;
    if (m_database)
        requestPage(-1);
}

void MetaDataModel::schedulePageRequest(int page) const
{
    if (page < 0 || !m_database || m_pendingPages.contains(page) || m_requestQueue.contains(page))
        return;
    m_requestQueue.append(page);
    m_requestTimer.start();
    m_cleanTimer.stop();
}

void MetaDataModel::requestPages()
{
    m_requestTimer.stop();
    if (!m_database)
        return;
    const auto isHidden = [this](int page) {
        bool visible = false;
        const int firstRow = page * PageCache::pageSize;
        emit rangeVisibilityCheck(firstRow, firstRow + PageCache::pageSize - 1, visible);
        return !visible;
    };
    QVector<int> wanted;
    wanted.swap(m_requestQueue);
    // A query that has failed has no other pages either.
    if (!m_queryError.isEmpty())
        wanted.clear();
    wanted.erase(std::remove_if(wanted.begin(), wanted.end(), isHidden), wanted.end());
    if (wanted.isEmpty()) {
        m_cleanTimer.start();
        return;
    }
    while (!wanted.isEmpty())
        requestPage(wanted.takeLast());
}

void MetaDataModel::requestPage(int page)
{
    const bool isInitial = page < 0;
    const int shownPage = std::max(page, 0);
    // The initial request is made whatever is under way: it carries parameters that the others do not know.
    if (!isInitial && m_pendingPages.contains(shownPage))
        return;
    m_pendingPages.append(shownPage);
    ++m_pendingRequests;
    if (!m_isProcessingAnnounced) {
        m_isProcessingAnnounced = true;
        emit processingStarted();
    }

    QVariantMap parameters = queryParameters();
    parameters.insert(QStringLiteral("offset"), shownPage * PageCache::pageSize);
    parameters.insert(QStringLiteral("limit"), PageCache::pageSize);
    OperationReply* reply = selfDeleting(m_database->pullMetaData(m_tableId, parameters));
    reply->setProperty(pageProperty, shownPage);
    reply->setProperty(initialProperty, isInitial);
    reply->setProperty(generationProperty, m_generation);
    connect(reply, &OperationReply::finished, this, &MetaDataModel::handleModelPageReply);
}

void MetaDataModel::handleModelPageReply()
{
    const auto* reply = qobject_cast<OperationReply*>(sender());
    const int page = reply->property(pageProperty).toInt();
    m_pendingPages.removeOne(page);
    requestFinished();
    if (reply->property(generationProperty).toInt() != m_generation)
        return;
    const bool isInitial = reply->property(initialProperty).toBool();
    if (isInitial)
        m_answeredGeneration = m_generation;
    if (reply->hasError()) {
        qCritical().noquote() << "Page request failed:" << reply->errorString();
        if (isInitial)
            handleFailedInitialPage(reply->errorString());
        return;
    }
    const auto items = reply->result(QStringLiteral("items")).value<MetaDataList>();
    if (isInitial)
        applyInitialPage(page, items);
    else
        applyPage(page, items);
}

void MetaDataModel::requestFinished()
{
    if (--m_pendingRequests > 0)
        return;
    m_cleanTimer.start();
    QMetaObject::invokeMethod(this, &MetaDataModel::announceProcessingFinished, Qt::QueuedConnection);
}

void MetaDataModel::announceProcessingFinished()
{
    // A new request may have gone out since this was queued; its end is announced instead.
    if (m_pendingRequests > 0 || !m_isProcessingAnnounced)
        return;
    m_isProcessingAnnounced = false;
    emit processingFinished();
}

void MetaDataModel::applyInitialPage(int page, const MetaDataList& items)
{
    // Before the reset begins: whoever sees it begin can tell a new query from a count that has become known.
    m_isRowsCountActual = false;
    m_shownGeneration = m_generation;
    m_shownFilter = filterParameters();
    m_shownQuery = m_queryNumber;
    m_queryError.clear();
    beginResetModel();
    m_rowsCount = std::max(m_rowsCount, items.size());
    m_cache.invalidate();
    m_cleanTimer.start();
    if (!items.isEmpty())
        m_cache.insert(page, items);
    // A short page tells the true count only when it agrees with what is shown; otherwise a count settles it.
    m_isRowsCountActual = items.size() == m_rowsCount && items.size() < PageCache::pageSize;
    emit requeried();
    endResetModel();
    emit actualRowsCountChanged();
    if (!m_isRowsCountActual)
        requestRowsCount();
}

void MetaDataModel::handleFailedInitialPage(const QString& errorText)
{
    // The rows of a query that was answered once are still its own.
    if (!isQueryShown())
        m_queryError = errorText;
    if (m_shownGeneration < 0) {
        // The rows that were left for the first page to take are those of another table.
        beginResetModel();
        m_rowsCount = 0;
        endResetModel();
    } else if (!m_isRowsCountActual) {
        // The rows stay. Their count may have come while this page was awaited, and was dropped then.
        requestRowsCount();
    }
    emit actualRowsCountChanged();
}

void MetaDataModel::applyPage(int page, const MetaDataList& items)
{
    if (items.isEmpty())
        return;
    m_cache.insert(page, items);
    emitRowsChanged(page, items.size());
}

void MetaDataModel::emitRowsChanged(int page, int items)
{
    const int firstRow = page * PageCache::pageSize;
    const int lastRow = std::min(firstRow + items, m_rowsCount) - 1;
    if (firstRow <= lastRow)
        emit dataChanged(index(firstRow, 0), index(lastRow, ColumnsCount - 1));
}

void MetaDataModel::cleanInvalidPages()
{
    const QList<int> pages = m_cache.takeInvalidPages();
    for (const int page : pages)
        emitRowsChanged(page, PageCache::pageSize);
}

// A query that failed has no count; the rows of the one before are still shown.
int MetaDataModel::generationToCount() const
{
    return isRequeryPending() || m_shownGeneration < 0 ? m_generation : m_shownGeneration;
}

void MetaDataModel::requestRowsCount()
{
    if (!m_database)
        return;
    if (m_isCountPending) {
        m_isCountWanted = true;
        return;
    }
    m_isCountPending = true;
    const int generation = generationToCount();
    const QVariantMap filter = generation == m_generation ? filterParameters() : m_shownFilter;
    OperationReply* reply = selfDeleting(m_database->getRowsCount(m_tableId, filter));
    reply->setProperty(generationProperty, generation);
    connect(reply, &OperationReply::finished, this, &MetaDataModel::handleRowsCountReply);
}

void MetaDataModel::handleRowsCountReply()
{
    const auto* reply = qobject_cast<OperationReply*>(sender());
    const int generation = reply->property(generationProperty).toInt();
    const bool isWantedAgain = m_isCountWanted;
    m_isCountPending = false;
    m_isCountWanted = false;
    if (reply->hasError() && generation >= generationToCount())
        qCritical().noquote() << "Rows count reply error:" << reply->errorString();
    if (generation != generationToCount()) {
        if (isWantedAgain)
            requestRowsCount();
        return;
    }
    if (reply->hasError())
        return;
    const int rowsCount = reply->result(QStringLiteral("rowsCount")).toInt();
    m_isRowsCountActual = true;
    if (rowsCount != m_rowsCount) {
        beginResetModel();
        m_rowsCount = rowsCount;
        endResetModel();
    }
    emit actualRowsCountChanged();
}

OperationReply* MetaDataModel::lookupRow(qint64 metaDataId)
{
    return m_database ? m_database->lookupMetaDataRow(m_tableId, int(metaDataId), queryParameters()) : nullptr;
}

OperationReply* MetaDataModel::collectFields(const QModelIndexList& indexes, const QString& fieldName)
{
    auto* reply = new OperationReply;
    const QSet<int> rows = FieldsCollection::distinctRows(indexes);
    if (rows.isEmpty() || !m_database) {
        reply->setError(rows.isEmpty() ? tr("Index list is empty") : tr("Database is not opened"));
        return reply;
    }
    reply->setProperty(generationProperty, m_generation);
    reply->setProgress(0, rows.size());
    connect(reply, &OperationReply::finished, this, &MetaDataModel::releaseFieldsCollectionContext);
    connect(reply, &QObject::destroyed, this, &MetaDataModel::releaseFieldsCollectionContext);
    m_collections.push_back(std::make_unique<FieldsCollection>(reply, rows, queryParameters(), fieldName));
    requestNextCollectionPage(*m_collections.back());
    return reply;
}

void MetaDataModel::requestNextCollectionPage(FieldsCollection& collection)
{
    OperationReply* reply = collection.reply();
    if (reply->isCanceled()) {
        reply->setError(tr("Canceled"));
        return;
    }
    if (!collection.hasNextPage()) {
        reply->setResult(QStringLiteral("items"), collection.items());
        reply->finish();
        return;
    }
    OperationReply* page = selfDeleting(m_database->pullMetaData(m_tableId, collection.takeNextPageParameters()));
    // Guarded: the caller may delete the reply at any time, and another one may then have its address.
    page->setProperty(contextProperty, QVariant::fromValue(QPointer<OperationReply>(reply)));
    connect(page, &OperationReply::finished, this, &MetaDataModel::handleFieldsCollectionPageReply);
}

void MetaDataModel::handleFieldsCollectionPageReply()
{
    const auto* page = qobject_cast<OperationReply*>(sender());
    const auto reply = page->property(contextProperty).value<QPointer<OperationReply>>();
    const auto collection = std::find_if(m_collections.begin(), m_collections.end(),
        [&reply](const auto& candidate) { return candidate->reply() == reply; });
    if (!reply || collection == m_collections.end())
        return;
    FieldsCollection& current = **collection;
    // Values of an older query stand on other rows than the user sees.
    const bool isOutdated = current.reply()->property(generationProperty).toInt() != m_generation;
    if (page->hasError() || isOutdated || !m_database) {
        current.reply()->setError(tr("Unable to receive MetaData page"));
        return;
    }
    current.addPage(page->result(QStringLiteral("items")).toList());
    current.reply()->setProgress(current.items().size(), current.wantedRows());
    requestNextCollectionPage(current);
}

void MetaDataModel::releaseFieldsCollectionContext()
{
    const QObject* reply = sender();
    const auto isReleased = [reply](const auto& collection) {
        return !collection->reply() || collection->reply() == reply;
    };
    const auto released = std::remove_if(m_collections.begin(), m_collections.end(), isReleased);
    if (released == m_collections.end())
        return;
    m_collections.erase(released, m_collections.end());
    if (m_collections.empty())
        emit fieldsCollectionContextsReleased();
}
