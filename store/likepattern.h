// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The ASCII capitals as small letters, all else unchanged: how LIKE and the columns' collation compare.
inline char foldedByte(char byte)
{
    return byte >= 'A' && byte <= 'Z' ? char(byte | 0x20) : byte;
}

/// One lookup term as LIKE takes it between two "%": what holds it matches, "%" stands for any characters and "_" for
/// any single one. Texts are folded UTF-8 without a NUL, see FoldedText.
///
/// Thread: a value.
class LikePattern final
{
public:
    /// Nothing for a term of which only SQLite can tell what it means: with a double quote, which ends the statement's
    /// text, with characters that it replaces, or longer than it takes.
    static std::optional<LikePattern> fromTerm(const QString& term);

    /// The longest piece without wildcards; every text that matches contains it. Empty when there is none.
    std::string_view anchor() const { return std::string_view(m_pattern).substr(m_anchorStart, m_anchorLength); }
    /// What every text that contains the anchor matches.
    LikePattern anchorAlone() const { return plain(anchor()); }
    /// What every text that contains them matches, of each piece without wildcards but the anchor.
    std::vector<LikePattern> otherPieces() const;
    /// Whether containing the anchor is all there is to it.
    bool isPlain() const { return m_anchorLength == m_pattern.size() - 2; }
    bool matches(std::string_view text) const;
    /// Whether "_" is the only wildcard in it, so that the anchor's place settles all other places.
    bool isRigid() const { return m_isRigid; }
    /// For a rigid pattern: whether the text matches with the anchor, which is at `position`, in its place.
    bool matchesAround(std::string_view text, size_t position) const;

private:
    explicit LikePattern(std::string pattern);

    static LikePattern plain(std::string_view piece) { return LikePattern('%' + std::string(piece) + '%'); }

    // With the "%" on either side.
    std::string m_pattern;
    size_t m_anchorStart = 0;
    size_t m_anchorLength = 0;
    bool m_isRigid = true;
};
