// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/indexedview.h"

#include "store/fieldcatalogue.h"
#include "store/querycomposer.h"
#include "store/rowindex.h"

#include <algorithm>

namespace {

constexpr size_t greatestTermsCount = 100;

// False when a term or a field is not one that can be looked up in memory.
bool readLookup(IndexedView& view, const QVariantMap& parameters)
{
    for (const LookupTerm& term : lookupTerms(parameters)) {
        std::optional<LikePattern> pattern = LikePattern::fromTerm(term.text);
        if (!pattern)
            return false;
        view.terms.push_back({ *std::move(pattern), term.isNegated });
    }
    view.lookupFields = parameters.value(QStringLiteral("lookupFields")).toStringList();
    view.lookupFields.removeDuplicates();
    const auto isHeld = [](const QString& field) {
        return RowIndex::lookupFields().contains(field);
    };
    return view.terms.empty() || std::all_of(view.lookupFields.begin(), view.lookupFields.end(), isHeld);
}

} // namespace

std::optional<IndexedView> IndexedView::fromParameters(int tableId, const QVariantMap& parameters)
{
    IndexedView view;
    // Where a page's order and a row's place are told apart by other values, see composeSelect().
    const int sortOrder = parameters.value(QStringLiteral("sortOrder")).toInt();
    if (sortOrder != Qt::AscendingOrder && sortOrder != Qt::DescendingOrder)
        return std::nullopt;
    if (!readLookup(view, parameters) || view.terms.size() > greatestTermsCount)
        return std::nullopt;
    QVariantMap flags = parameters;
    flags.remove(QStringLiteral("lookup"));
    view.where = composeWhere(composeConditions(tableId, parameters));
    view.flagsWhere = composeWhere(composeConditions(tableId, flags));
    const QString sortField = parameters.value(QStringLiteral("sortField")).toString();
    if (sortableFieldNames().contains(sortField))
        view.sortField = sortField;
    view.isDescending = sortOrder == Qt::DescendingOrder;
    return view;
}
