// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/store/randomviews.h"

#include "store/fieldcatalogue.h"

#include <QVector>

#include <algorithm>

namespace {

const QStringList textPieces{ "a", "A", "b", "Drum", "dRUM", "loop", "%", "_", "'", " ", "!", "é", "É", "ß", "漢", "😀",
    "\t", "?", ":id", "%1", "" };
const QStringList termPieces{ "a", "B", "drum", "Loop", "ru", "%", "_", "__", "'", "!", "é", "É", "漢", "😀", "\t",
    "d%m", "a_b", "_a", "%1", "?", "zz", ":id", "(" };

} // namespace

QVariantMap randomView(Chance& chance)
{
    QVariantMap view;
    QStringList terms;
    for (int count = chance.below(4); count > 0; --count)
        terms.append((chance.oneIn(3) ? "!" : "") + chance.text(termPieces, 2));
    const QVector<QStringList> fieldLists{ { "library", "description" }, { "library", "description", "filePath" },
        { "description" }, {} };
    view.insert("lookup", terms.join(chance.oneIn(4) ? "  " : " "));
    view.insert("lookupFields", fieldLists.at(std::max(0, chance.below(8) - 4)));
    view.insert("lastScannedOnly", chance.oneIn(4));
    view.insert("playlistOnly", chance.oneIn(4));
    if (!chance.oneIn(10))
        view.insert("sortField", chance.pick(sortableFieldNames()));
    view.insert("sortOrder", chance.below(2));
    return view;
}

MetaData randomRecord(Chance& chance, int number)
{
    MetaData record{ QVariantMap() };
    record.setFilePath(QString("/%1/%2.wav").arg(chance.text(textPieces, 4)).arg(number));
    record.setFileName(chance.text(textPieces, 2) + ".wav");
    record.setFileType(chance.pick({ "wav", "WAV", "mp3" }));
    record.setLibrary(chance.text(textPieces, 2));
    record.setDescription(chance.text(textPieces, 5) + QLatin1String(""));
    record.setDuration(1 + chance.below(3));
    record.setRating(chance.below(4));
    record.setSampleRate(48000);
    record.setChannelsCount(2);
    record.setBitsPerSample(16);
    record.setPlaylist(chance.below(2));
    return record;
}
