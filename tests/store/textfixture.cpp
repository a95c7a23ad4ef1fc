// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/store/textfixture.h"

#include <QStringList>

#include <random>

LikePattern pattern(const QString& term)
{
    return *LikePattern::fromTerm(term);
}

std::vector<size_t> rowsOf(const RowSet& set)
{
    std::vector<size_t> rows;
    set.forEach([&rows](size_t row) { rows.push_back(row); });
    return rows;
}

FoldedText randomTexts(size_t rows, uint seed)
{
    const QStringList frequent{ "Drum", "loop", "of" };
    const QStringList others{ "DRUMS", "Déjà", "vu,", "windy", "re-take", "漢字", "x" };
    const QStringList separators{ " ", " ", " ", "_", "  ", " _" };
    std::mt19937 engine(seed);
    const auto pick = [&engine](const QStringList& list) {
        return list.at(int(engine() % uint(list.size())));
    };
    FoldedText texts;
    for (size_t row = 0; row < rows; ++row) {
        QString text;
        for (uint count = engine() % 8; count > 0; --count) {
            const uint kind = engine() % 8;
            text += kind < 4 ? pick(frequent) : kind < 7 ? pick(others) : QString("take%1").arg(engine() % 100000);
            text += pick(separators);
        }
        texts.append(text.toStdString());
    }
    return texts;
}

RowSet matchingRows(const FoldedText& texts, const LikePattern& pattern)
{
    RowSet rows(texts.rows());
    for (size_t row = 0; row < texts.rows(); ++row) {
        if (pattern.matches(texts.row(row)))
            rows.insert(row);
    }
    return rows;
}
