// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/rowset.h"

#include <QMutex>
#include <QSemaphore>

#include <vector>

/// Sets of rows for the threads of one search, each of which fills one of its own at a time: what they found is united
/// in the end. Two threads must not insert into one set, for rows far apart may be in any of them.
///
/// Memory: a bit a row for each thread that may search. Owner: the stack of the search. Thread: the search's, but
/// for the Loans.
class RowSetPool final
{
public:
    /// A set that is in nobody else's hands meanwhile; waits for one. No thread has two of one pool. Thread: any of the
    /// search.
    class Loan final
    {
    public:
        explicit Loan(RowSetPool& pool)
            : m_pool(pool)
            , m_rows(pool.take())
        {
        }
        ~Loan() { m_pool.giveBack(m_rows); }
        Q_DISABLE_COPY_MOVE(Loan)

        RowSet& rows() const { return *m_rows; }

    private:
        RowSetPool& m_pool;
        RowSet* m_rows;
    };

    /// Sets of `size` rows, so many that threads seldom wait for one. May throw std::bad_alloc.
    explicit RowSetPool(size_t size);
    Q_DISABLE_COPY_MOVE(RowSetPool)

    /// Adds what is in any of the sets. The other set may be of more rows.
    void uniteInto(RowSet& rows) const;

private:
    RowSet* take();
    void giveBack(RowSet* rows);

    std::vector<RowSet> m_sets;
    QSemaphore m_freeCount;
    QMutex m_mutex;
    // Those last used stand last, and are taken first: the others are in the end as they were.
    std::vector<RowSet*> m_free;
    size_t m_fewestFree = 0;
};
