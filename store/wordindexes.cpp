// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/wordindexes.h"

#include <QtConcurrent>

#include <new>
#include <utility>

WordIndexes::WordIndexes()
{
    m_thread.setMaxThreadCount(1);
}

WordIndexes::~WordIndexes()
{
    clear();
}

void WordIndexes::begin(std::map<QString, FoldedText> texts, size_t greatestBytes)
{
    clear();
    m_hasBegun = true;
    m_isCancelled = std::make_shared<std::atomic<bool>>(false);
    // It may outlive the next call, hence it holds all that it needs.
    const auto shared = std::make_shared<const std::map<QString, FoldedText>>(std::move(texts));
    m_future = QtConcurrent::run(&m_thread,
        [shared, greatestBytes, isCancelled = m_isCancelled]() { return make(*shared, greatestBytes, isCancelled); });
}

void WordIndexes::clear()
{
    m_hasBegun = false;
    if (m_isCancelled)
        *m_isCancelled = true;
    m_future = QFuture<Made>();
}

WordIndexes::Made WordIndexes::make(
    const std::map<QString, FoldedText>& texts, size_t greatestBytes, const Flag& isCancelled)
{
    auto made = std::make_shared<std::map<QString, WordIndex>>();
    try {
        for (const auto& [column, columnTexts] : texts) {
            std::optional<WordIndex> index
                = WordIndex::make(columnTexts, greatestBytes, [&isCancelled]() { return isCancelled->load(); });
            if (!index)
                continue;
            greatestBytes -= index->bytes();
            made->emplace(column, *std::move(index));
        }
    } catch (const std::bad_alloc&) {
        // The texts are searched without.
    }
    return made;
}

const std::map<QString, WordIndex>* WordIndexes::made() const
{
    return m_future.resultCount() > 0 ? m_future.result().get() : nullptr;
}

const WordIndex* WordIndexes::find(const QString& column) const
{
    const std::map<QString, WordIndex>* indexes = made();
    if (indexes == nullptr)
        return nullptr;
    const auto found = indexes->find(column);
    return found == indexes->end() ? nullptr : &found->second;
}

size_t WordIndexes::bytes() const
{
    size_t bytes = 0;
    if (const std::map<QString, WordIndex>* indexes = made()) {
        for (const auto& index : *indexes)
            bytes += index.second.bytes();
    }
    return bytes;
}

void WordIndexes::waitForFinished()
{
    m_future.waitForFinished();
}
