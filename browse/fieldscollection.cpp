// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/fieldscollection.h"

#include "store/operationreply.h"

#include <algorithm>

namespace {

constexpr int smallestPage = 50;
constexpr int largestPage = 20000;

} // namespace

FieldsCollection::FieldsCollection(
    OperationReply* reply, const QSet<int>& rows, const QVariantMap& parameters, const QString& field)
    : m_reply(reply)
    , m_rows(rows)
    , m_parameters(parameters)
    , m_pageSize(qBound(smallestPage, rows.size() / 10, largestPage))
{
    m_parameters.insert(QStringLiteral("singleField"), field);
    m_parameters.insert(QStringLiteral("limit"), m_pageSize);
    QSet<int> pages;
    for (const int row : rows)
        pages.insert(row / m_pageSize);
    m_pages = pages.values();
    std::sort(m_pages.begin(), m_pages.end());
}

QVariantMap FieldsCollection::takeNextPageParameters()
{
    m_currentPage = m_pages.takeFirst();
    QVariantMap parameters = m_parameters;
    parameters.insert(QStringLiteral("offset"), m_currentPage * m_pageSize);
    return parameters;
}

void FieldsCollection::addPage(const QVariantList& values)
{
    const int firstRow = m_currentPage * m_pageSize;
    for (int position = 0; position < values.size(); ++position) {
        if (m_rows.contains(firstRow + position))
            m_items.append(values.at(position));
    }
}

QSet<int> FieldsCollection::distinctRows(const QModelIndexList& indexes)
{
    QSet<int> rows;
    rows.reserve(indexes.size());
    for (const QModelIndex& index : indexes)
        rows.insert(index.row());
    return rows;
}
