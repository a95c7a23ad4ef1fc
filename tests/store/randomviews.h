// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/metadata.h"

#include <QStringList>
#include <QVariantMap>

#include <random>

/// Random choices that a seed repeats.
class Chance
{
public:
    explicit Chance(uint seed)
        : m_engine(seed)
    {
    }

    int below(int limit) { return int(m_engine() % uint(limit)); }
    bool oneIn(int count) { return below(count) == 0; }
    QString pick(const QStringList& list) { return list.at(below(list.size())); }
    QString text(const QStringList& pieces, int greatestCount)
    {
        QString text;
        for (int count = below(greatestCount + 1); count > 0; --count)
            text += pick(pieces);
        return text;
    }

private:
    std::mt19937 m_engine;
};

/// Query parameters with lookups of odd terms, filters and any order.
QVariantMap randomView(Chance& chance);

/// A record whose texts are likely to hold such terms; the number makes its path its own.
MetaData randomRecord(Chance& chance, int number);
