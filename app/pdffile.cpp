// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/pdffile.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>

namespace {

constexpr qint64 endSize = 64; // bytes that surely hold the last lines

// Where the last lines say that the cross-reference table begins; -1 when they say nothing.
qint64 crossReferencePosition(QFile& file)
{
    file.seek(std::max<qint64>(0, file.size() - endSize));
    const QByteArray end = file.readAll().trimmed();
    const int keyword = end.lastIndexOf("startxref");
    if (keyword < 0 || !end.endsWith("%%EOF"))
        return -1;
    bool isNumber = false;
    const qint64 position = end.mid(keyword).simplified().split(' ').value(1).toLongLong(&isNumber);
    return isNumber ? position : -1;
}

} // namespace

bool isWholePdfFile(const QString& filePath)
{
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly) || file.read(5) != "%PDF-")
        return false;
    const qint64 position = crossReferencePosition(file);
    return position > 0 && file.seek(position) && file.read(4) == "xref";
}
