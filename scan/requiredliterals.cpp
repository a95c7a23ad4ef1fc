// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/requiredliterals.h"

namespace {

// Reads a pattern from left to right and keeps, for each alternative at its top, the longest text that stands in it.
class LiteralReader
{
public:
    explicit LiteralReader(const QString& pattern)
        : m_pattern(pattern)
    {
    }

    QStringList read()
    {
        while (m_isUnderstood && m_position < m_pattern.size())
            readAtom(m_pattern.at(m_position++));
        endAlternative();
        return m_isUnderstood ? m_literals : QStringList();
    }

private:
    void readAtom(QChar character);
    void readEscape();
    void skipClass();
    void skipGroup();
    void readQuantifiers();
    void endRun();
    void endAlternative();

    const QString& m_pattern;
    int m_position = 0;
    QString m_run;
    QString m_longest;
    QStringList m_literals;
    bool m_isUnderstood = true;
};

void LiteralReader::readAtom(QChar character)
{
    switch (character.unicode()) {
    case '|':
        endAlternative();
        return;
    case '\\':
        readEscape();
        break;
    case '[':
        endRun();
        skipClass();
        break;
    case '(':
        endRun();
        skipGroup();
        break;
    case '.':
    case '^':
    case '$':
    case ')':
    case ']':
    case '}':
        endRun();
        break;
    default:
        m_run += character;
    }
    readQuantifiers();
}

void LiteralReader::readEscape()
{
    static const QString classes = QStringLiteral("dDsSwWbB");
    if (m_position == m_pattern.size()) {
        m_isUnderstood = false;
        return;
    }
    const QChar escaped = m_pattern.at(m_position++);
    if (classes.contains(escaped))
        endRun();
    else if (escaped.isLetterOrNumber())
        m_isUnderstood = false; // character codes, back references and what else may take further characters
    else
        m_run += escaped;
}

void LiteralReader::skipClass()
{
    if (m_position < m_pattern.size() && m_pattern.at(m_position) == QLatin1Char('^'))
        ++m_position;
    // The first character of a class belongs to it, even if it is the closing bracket.
    for (bool isFirst = true; m_position < m_pattern.size(); isFirst = false) {
        const QChar character = m_pattern.at(m_position++);
        if (character == QLatin1Char('\\'))
            ++m_position;
        else if (character == QLatin1Char(']') && !isFirst)
            return;
    }
    m_isUnderstood = false;
}

// What stands in a group may be one alternative of several, or forbidden; it is never asked for.
void LiteralReader::skipGroup()
{
    for (int depth = 1; m_position < m_pattern.size();) {
        const QChar character = m_pattern.at(m_position++);
        if (character == QLatin1Char('\\'))
            ++m_position;
        else if (character == QLatin1Char('['))
            skipClass();
        else if (character == QLatin1Char('('))
            ++depth;
        else if (character == QLatin1Char(')') && --depth == 0)
            return;
    }
    m_isUnderstood = false;
}

// Several may follow each other. All but "+" let the character before them be missing.
void LiteralReader::readQuantifiers()
{
    bool isRepeated = false;
    bool isOptional = false;
    while (m_isUnderstood && m_position < m_pattern.size()) {
        const QChar character = m_pattern.at(m_position);
        if (character == QLatin1Char('{')) {
            m_position = m_pattern.indexOf(QLatin1Char('}'), m_position);
            m_isUnderstood = m_position >= 0;
            isOptional = true;
        } else if (character == QLatin1Char('?') || character == QLatin1Char('*')) {
            isOptional = true;
        } else if (character == QLatin1Char('+')) {
            isRepeated = true;
        } else {
            break;
        }
        ++m_position;
    }
    if (isOptional)
        m_run.chop(1);
    if (isOptional || isRepeated)
        endRun();
}

void LiteralReader::endRun()
{
    if (m_run.size() > m_longest.size())
        m_longest = m_run;
    m_run.clear();
}

void LiteralReader::endAlternative()
{
    endRun();
    if (m_longest.isEmpty())
        m_isUnderstood = false;
    m_literals += m_longest;
    m_longest.clear();
}

} // namespace

QStringList requiredLiterals(const QString& pattern)
{
    return LiteralReader(pattern).read();
}
