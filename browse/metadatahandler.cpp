// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/metadatahandler.h"

#include "store/database.h"
#include "store/operationreply.h"

MetaDataHandler::MetaDataHandler(QObject* parent)
    : QObject(parent)
{
}

MetaDataHandler::~MetaDataHandler()
{
    // The output is the subclass's, and gone already.
    if (m_phase != Phase::Idle && m_reply)
        m_reply->setError(tr("Canceled"));
}

void MetaDataHandler::setDatabase(Database* database, int tableId)
{
    m_database = database;
    m_tableId = tableId;
}

void MetaDataHandler::setQueryParameters(const QVariantMap& parameters)
{
    m_parameters = parameters;
    // The records are wanted whole.
    m_parameters.remove(QStringLiteral("singleField"));
}

OperationReply* MetaDataHandler::start()
{
    if (m_phase != Phase::Idle)
        endRun(tr("Canceled"));
    auto* reply = new OperationReply;
    m_reply = reply;
    connect(reply, &OperationReply::finished, this, &MetaDataHandler::finalizeReply);
    m_request.clear();
    m_failure.clear();
    m_itemsCount = 0;
    m_handledItems = 0;
    m_nextPage = 0;
    m_phase = Phase::Counting;
    reply->setProgress(0, -1);
    beginOutput();
    if (m_failure.isEmpty())
        requestLater(&MetaDataHandler::requestItemsCount);
    else
        endRun(m_failure);
    return reply;
}

void MetaDataHandler::beginOutput() { }

void MetaDataHandler::completeOutput() { }

void MetaDataHandler::releaseOutput() { }

Database* MetaDataHandler::database() const
{
    return m_database;
}

void MetaDataHandler::fail(const QString& errorText)
{
    Q_ASSERT(!errorText.isEmpty());
    m_failure = errorText;
}

void MetaDataHandler::requestItemsCount()
{
    // Left over from a run that was begun anew.
    if (m_phase != Phase::Counting || m_request)
        return;
    if (m_database)
        follow(m_database->getRowsCount(m_tableId, m_parameters), &MetaDataHandler::handleItemsCountReply);
    else
        endRun(tr("Rows count reply error: %1").arg(tr("Database is not opened")));
}

void MetaDataHandler::handleItemsCountReply()
{
    if (!m_request || sender() != m_request)
        return;
    const OperationReply* request = m_request;
    m_request.clear();
    if (request->hasError()) {
        endRun(tr("Rows count reply error: %1").arg(request->errorString()));
        return;
    }
    m_itemsCount = request->result(QStringLiteral("rowsCount")).toInt();
    if (m_itemsCount <= 0) {
        endRun(QString());
        return;
    }
    m_phase = Phase::Reading;
    if (m_reply)
        m_reply->setProgress(0, m_itemsCount);
    requestLater(&MetaDataHandler::requestNextPage);
}

void MetaDataHandler::requestNextPage()
{
    if (m_phase != Phase::Reading || m_request)
        return;
    if (isCanceled()) {
        endRun(tr("Canceled"));
        return;
    }
    if (!m_database) {
        endRun(tr("Unable to receive MetaData page: %1").arg(tr("Database is not opened")));
        return;
    }
    QVariantMap parameters = m_parameters;
    parameters.insert(QStringLiteral("offset"), m_nextPage * pageSize);
    parameters.insert(QStringLiteral("limit"), pageSize);
    follow(m_database->pullMetaData(m_tableId, parameters), &MetaDataHandler::handlePageReply);
}

void MetaDataHandler::handlePageReply()
{
    if (!m_request || sender() != m_request)
        return;
    const OperationReply* request = m_request;
    m_request.clear();
    if (isCanceled()) {
        endRun(tr("Canceled"));
        return;
    }
    if (request->hasError()) {
        endRun(tr("Unable to receive MetaData page: %1").arg(request->errorString()));
        return;
    }
    const auto items = request->result(QStringLiteral("items")).value<MetaDataList>();
    handlePage(items);
    if (!m_failure.isEmpty()) {
        endRun(m_failure);
        return;
    }
    m_handledItems += items.size();
    m_reply->setProgress(m_handledItems, m_itemsCount);
    if (items.size() < pageSize) {
        endRun(QString());
        return;
    }
    ++m_nextPage;
    requestLater(&MetaDataHandler::requestNextPage);
}

void MetaDataHandler::finalizeReply()
{
    // It is the caller's to delete, once all who listen to it have been told.
    if (sender() == m_reply)
        m_reply.clear();
}

bool MetaDataHandler::isCanceled() const
{
    return !m_reply || m_reply->isCanceled();
}

// Ends with success when there is no error text, unless the output cannot be made whole.
void MetaDataHandler::endRun(const QString& errorText)
{
    m_phase = Phase::Idle;
    m_failure = errorText;
    if (m_failure.isEmpty())
        completeOutput();
    releaseOutput();
    if (!m_reply)
        return;
    if (m_failure.isEmpty())
        m_reply->finish();
    else
        m_reply->setError(m_failure);
}

// On a later turn of the event loop: the window stays alive, and the caller can connect to the reply before anything
// happens.
void MetaDataHandler::requestLater(void (MetaDataHandler::*request)())
{
    QMetaObject::invokeMethod(this, request, Qt::QueuedConnection);
}

void MetaDataHandler::follow(OperationReply* request, void (MetaDataHandler::*handler)())
{
    m_request = request;
    // It goes by itself, also when the handler has gone before.
    connect(request, &OperationReply::finished, request, &QObject::deleteLater);
    connect(request, &OperationReply::finished, this, handler);
}
