// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/foldedtext.h"
#include "store/wordindex.h"

#include <QFuture>
#include <QString>
#include <QThreadPool>

#include <atomic>
#include <map>
#include <memory>

/// The WordIndexes of a table's text columns, made in the background, of copies, while the texts are searched.
///
/// Owner: a RowIndex. Thread: the store's, as each function; they are made in a thread of their own, since it takes
/// seconds, in which the global pool must go on decoding what is played.
class WordIndexes final
{
public:
    WordIndexes();
    /// Waits until what is being made has ended, some milliseconds.
    ~WordIndexes();
    Q_DISABLE_COPY_MOVE(WordIndexes)

    /// Whether `begin()` was called since the last `clear()`.
    bool hasBegun() const { return m_hasBegun; }
    /// Begins to make those of these columns, as long as they take no more bytes than these together.
    void begin(std::map<QString, FoldedText> texts, size_t greatestBytes);
    /// Gives back what was made; what is being made ends by itself within milliseconds.
    void clear();

    /// Null when there is none, or not yet. Valid until `clear()`.
    const WordIndex* find(const QString& column) const;
    /// What is made, without that which is being made.
    size_t bytes() const;
    /// For tests and benchmarks: waits until all are made.
    void waitForFinished();

private:
    using Made = std::shared_ptr<const std::map<QString, WordIndex>>;
    using Flag = std::shared_ptr<std::atomic<bool>>;

    static Made make(const std::map<QString, FoldedText>& texts, size_t greatestBytes, const Flag& isCancelled);
    // Null as long as they are being made.
    const std::map<QString, WordIndex>* made() const;

    bool m_hasBegun = false;
    Flag m_isCancelled;
    QFuture<Made> m_future;
    QThreadPool m_thread;
};
