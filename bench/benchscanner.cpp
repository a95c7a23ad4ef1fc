// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/benchscanner.h"

#include "bench/benchcorpus.h"
#include "scan/storeoperations.h"
#include "store/operationreply.h"

#include <memory>

namespace {

constexpr int tableId = 1;

} // namespace

BenchScanner::BenchScanner()
    : m_database(m_folder.filePath(QStringLiteral("bench.dat")))
{
    m_database.setBulkOperations(scanBulkOperations());
    m_database.moveToThread(&m_thread);
    m_thread.start();
    if (!m_database.open())
        qFatal("Cannot open the store: %s", qPrintable(m_database.lastError()));
}

BenchScanner::~BenchScanner()
{
    m_database.close();
    m_thread.quit();
    m_thread.wait();
}

void BenchScanner::clear()
{
    await(m_database.clearTable(tableId));
}

void BenchScanner::scan()
{
    await(m_database.scan(tableId, { BenchCorpus::folder() }, {}));
}

void BenchScanner::await(OperationReply* reply)
{
    const std::unique_ptr<OperationReply> owned(reply);
    reply->waitForFinished();
    if (reply->hasError())
        qFatal("Operation failed: %s", qPrintable(reply->errorString()));
}
