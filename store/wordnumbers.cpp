// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/wordnumbers.h"

#include <functional>
#include <utility>

namespace {

constexpr size_t firstSlots = 64;

// Of so many slots, one stays empty: else looking for a free one takes many steps.
constexpr size_t slotsPerEmpty = 4;

} // namespace

WordNumbers::WordNumbers()
    : m_slots(firstSlots, noNumber)
{
}

quint32 WordNumbers::add(std::string_view word)
{
    size_t slot = slotOf(word);
    if (m_slots[slot] != noNumber)
        return m_slots[slot];
    if (count() == noNumber || !m_words.append(word))
        return noNumber;
    if (count() + m_slots.size() / slotsPerEmpty > m_slots.size()) {
        grow();
        slot = slotOf(word);
    }
    m_slots[slot] = quint32(count() - 1);
    return m_slots[slot];
}

FoldedText WordNumbers::takeWords()
{
    m_slots = std::vector<quint32>(firstSlots, noNumber);
    m_words.squeeze();
    return std::exchange(m_words, FoldedText());
}

// Where the word is, or where it would be.
size_t WordNumbers::slotOf(std::string_view word) const
{
    const size_t mask = m_slots.size() - 1;
    size_t slot = std::hash<std::string_view>()(word) & mask;
    while (m_slots[slot] != noNumber && m_words.row(m_slots[slot]) != word)
        slot = (slot + 1) & mask;
    return slot;
}

void WordNumbers::grow()
{
    m_slots = std::vector<quint32>(2 * m_slots.size(), noNumber);
    for (size_t number = 0; number + 1 < count(); ++number)
        m_slots[slotOf(m_words.row(number))] = quint32(number);
}
