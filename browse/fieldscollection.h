// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QList>
#include <QModelIndexList>
#include <QPointer>
#include <QSet>
#include <QVariantList>
#include <QVariantMap>

class OperationReply;

/// One collection of a field over many rows of a view: which rows, the pages that hold them, what has been collected.
///
/// Knows no store; the model asks for its pages and hands them in.
/// Owner: the model; the reply belongs to the caller who asked. Thread: GUI.
class FieldsCollection final
{
public:
    /// `parameters` are those of the view with its order; `rows` is not empty.
    FieldsCollection(OperationReply* reply, const QSet<int>& rows, const QVariantMap& parameters, const QString& field);

    OperationReply* reply() const { return m_reply; }
    int wantedRows() const { return m_rows.size(); }
    int pageSize() const { return m_pageSize; }
    bool hasNextPage() const { return !m_pages.isEmpty(); }
    /// Takes the next page off the list and gives the parameters that fetch it.
    QVariantMap takeNextPageParameters();
    /// Keeps the values of the wanted rows of the page that was taken last.
    void addPage(const QVariantList& values);
    QVariantList items() const { return m_items; }

    /// The distinct rows of a list of indexes.
    static QSet<int> distinctRows(const QModelIndexList& indexes);

private:
    QPointer<OperationReply> m_reply;
    QSet<int> m_rows;
    QVariantMap m_parameters;
    int m_pageSize;
    int m_currentPage = -1;
    QList<int> m_pages;
    QVariantList m_items;
};
