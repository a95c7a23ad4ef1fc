// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/pathspellings.h"

#include <QByteArray>

#include <functional>
#include <string_view>

namespace {

// As SQLite folds: QByteArray::toLower() would also change the bytes of other letters.
QByteArray withoutCase(QByteArray text)
{
    for (char& letter : text) {
        if (letter >= 'A' && letter <= 'Z')
            letter = char(letter - 'A' + 'a');
    }
    return text;
}

quint64 hashOf(const QByteArray& bytes)
{
    return std::hash<std::string_view>()(std::string_view(bytes.constData(), size_t(bytes.size())));
}

} // namespace

bool PathSpellings::add(const QString& path)
{
    const QByteArray spelling = path.toUtf8();
    const quint64 hash = hashOf(spelling);
    const quint64 foldedHash = hashOf(withoutCase(spelling));
    const auto first = m_firstSpellings.constFind(foldedHash);
    if (first == m_firstSpellings.constEnd()) {
        m_firstSpellings.insert(foldedHash, hash);
        return false;
    }
    return first.value() != hash;
}
