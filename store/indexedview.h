// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/likepattern.h"

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>
#include <vector>

/// Query parameters (see store/querycomposer.h) as a RowIndex takes them. Thread: a value.
struct IndexedView
{
    struct Term
    {
        LikePattern pattern;
        bool isNegated;
    };

    /// Nothing for parameters that only SQLite can tell the meaning of.
    static std::optional<IndexedView> fromParameters(int tableId, const QVariantMap& parameters);

    bool isFiltered() const { return !where.isEmpty(); }

    /// The composed conditions, which tell one view's rows from another's.
    QString where;
    /// The conditions but for the lookup; empty when there are none.
    QString flagsWhere;
    std::vector<Term> terms;
    /// What the terms are looked up in.
    QStringList lookupFields;
    /// A sortable field, or empty for rows without an order.
    QString sortField;
    bool isDescending = false;
};
