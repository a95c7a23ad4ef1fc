// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/plaintext.h"

#include <QStringList>
#include <QTextBlock>
#include <QTextDocument>

QString plainTextOf(const QTextDocument& document)
{
    QStringList blocks;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        blocks.append(block.text());
    // A line that was begun with Shift and Return stays within its block.
    return blocks.join(QLatin1Char('\n')).replace(QChar::LineSeparator, QLatin1Char('\n'));
}
