// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/likepattern.h"

#include <algorithm>

namespace {

constexpr char anyCharacters = '%';
constexpr char oneCharacter = '_';

// Far below what SQLite refuses; nobody types as much.
constexpr int greatestTermLength = 1000;

bool isWildcard(char byte)
{
    return byte == anyCharacters || byte == oneCharacter;
}

// SQLite reads U+FFFE, U+FFFF and halves of surrogate pairs as U+FFFD, so each matches the others.
bool isPlainlyRead(const QString& term)
{
    if (!term.isValidUtf16())
        return false;
    return std::none_of(term.begin(), term.end(), [](QChar character) {
        return character.isNull() || character == QLatin1Char('"') || character.unicode() >= 0xfffd;
    });
}

// Calls `visit` with the start and length of what is between two wildcards, where that is something.
template <typename Visitor>
void forEachPiece(std::string_view pattern, const Visitor& visit)
{
    size_t start = 0;
    for (size_t i = 0; i < pattern.size(); ++i) {
        if (!isWildcard(pattern[i]))
            continue;
        if (i > start)
            visit(start, i - start);
        start = i + 1;
    }
}

// Where the character after the one at `position` begins.
size_t nextCharacter(std::string_view text, size_t position)
{
    do {
        ++position;
    } while (position < text.size() && (text[position] & 0xc0) == 0x80);
    return position;
}

// Where the character before the one at `position` begins.
size_t previousCharacter(std::string_view text, size_t position)
{
    do {
        --position;
    } while (position > 0 && (text[position] & 0xc0) == 0x80);
    return position;
}

// Where, from `position` on, what follows a "%" and begins with `wanted` can match at the earliest.
size_t nextStart(std::string_view text, size_t position, char wanted)
{
    return isWildcard(wanted) ? position : std::min(text.find(wanted, position), text.size());
}

} // namespace

std::optional<LikePattern> LikePattern::fromTerm(const QString& term)
{
    if (term.size() > greatestTermLength || !isPlainlyRead(term))
        return std::nullopt;
    std::string pattern = anyCharacters + term.toStdString() + anyCharacters;
    std::transform(pattern.begin(), pattern.end(), pattern.begin(), foldedByte);
    return LikePattern(std::move(pattern));
}

LikePattern::LikePattern(std::string pattern)
    : m_pattern(std::move(pattern))
{
    forEachPiece(m_pattern, [this](size_t start, size_t length) {
        if (length > m_anchorLength) {
            m_anchorStart = start;
            m_anchorLength = length;
        }
    });
    m_isRigid = std::count(m_pattern.begin(), m_pattern.end(), anyCharacters) == 2;
}

std::vector<LikePattern> LikePattern::otherPieces() const
{
    std::vector<LikePattern> pieces;
    forEachPiece(m_pattern, [&](size_t start, size_t length) {
        if (start != m_anchorStart)
            pieces.push_back(plain(std::string_view(m_pattern).substr(start, length)));
    });
    return pieces;
}

// Takes as few characters as will do for the last "%" met, and one more whenever the rest does not match.
bool LikePattern::matches(std::string_view text) const
{
    size_t place = 0;
    size_t position = 0;
    size_t resumePlace = 0;
    size_t resumePosition = 0;
    for (;;) {
        const char wanted = m_pattern[place];
        if (wanted == anyCharacters) {
            resumePlace = ++place;
            // The last one takes what is left.
            if (place == m_pattern.size())
                return true;
            position = nextStart(text, position, m_pattern[place]);
            resumePosition = position;
        } else if (position >= text.size()) {
            return false;
        } else if (wanted == oneCharacter) {
            ++place;
            position = nextCharacter(text, position);
        } else if (wanted == text[position]) {
            ++place;
            ++position;
        } else {
            place = resumePlace;
            resumePosition = nextStart(text, nextCharacter(text, resumePosition), m_pattern[place]);
            position = resumePosition;
        }
    }
}

bool LikePattern::matchesAround(std::string_view text, size_t position) const
{
    size_t end = position + m_anchorLength;
    for (size_t place = m_anchorStart + m_anchorLength; place < m_pattern.size() - 1; ++place) {
        if (end >= text.size() || (m_pattern[place] != oneCharacter && m_pattern[place] != text[end]))
            return false;
        end = m_pattern[place] == oneCharacter ? nextCharacter(text, end) : end + 1;
    }
    size_t begin = position;
    for (size_t place = m_anchorStart - 1; place > 0; --place) {
        if (begin == 0 || (m_pattern[place] != oneCharacter && m_pattern[place] != text[begin - 1]))
            return false;
        begin = m_pattern[place] == oneCharacter ? previousCharacter(text, begin) : begin - 1;
    }
    return true;
}
