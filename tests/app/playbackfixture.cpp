// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/playbackfixture.h"

#include "browse/metadatamodel.h"
#include "tests/audio/soundmaker.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"

#include <QFile>
#include <QtTest>

namespace {

// Made once for all tests of a program.
QString soundFile(double seconds)
{
    static const QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("%1.wav").arg(seconds));
    if (!QFile::exists(path))
        SoundMaker::makeTone(path, seconds, { "-ar", "48000", "-ac", "1" });
    return path;
}

} // namespace

PlaybackFixture::PlaybackFixture()
{
    makeCatalogue();
    m_window.start();
    if (!QTest::qWaitFor([this] { return view().metaDataModel()->rowsCount() == RowsCount; }))
        qFatal("the rows are not shown");
    choose(LongTone);
    if (!QTest::qWaitFor([this] { return view().currentIndex().data(MetaDataModel::RecordRole).isValid(); }))
        qFatal("the records are not read");
}

QString PlaybackFixture::path(Row row)
{
    static const char* const names[RowsCount]
        = { "1 long.wav", "2 long.wav", "3 long.wav", "4 short.wav", "5 <i>missing.wav", "6 damaged.wav" };
    return m_window.folder().filePath(QLatin1String(names[row]));
}

void PlaybackFixture::makeCatalogue()
{
    constexpr double longTone = 20; // seconds
    constexpr double shortTone = 0.5;
    for (const Row row : { LongTone, SecondLongTone, ThirdLongTone })
        QFile::copy(soundFile(longTone), path(row));
    QFile::copy(soundFile(shortTone), path(ShortTone));
    TestSupport::writeFile(path(DamagedFile), "no sound");
    MetaDataList records;
    for (int row = 0; row < RowsCount; ++row)
        records.append(TestSupport::sampleRecord(path(Row(row))));
    TestSupport::StoreFixture store;
    store.open();
    store.insert(1, records, 1000);
    store.destroy();
    QFile::remove(m_window.databaseFile());
    QFile::copy(store.filePath(), m_window.databaseFile());
}

void PlaybackFixture::choose(Row row)
{
    const QModelIndex index = view().model()->index(row, MetaDataModel::FileNameColumn);
    view().setCurrentIndex(index);
    view().selectionModel()->select(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void PlaybackFixture::pressSpace()
{
    QTest::keyClick(&view(), Qt::Key_Space);
}

void PlaybackFixture::clickButton()
{
    QTest::mouseClick(&button(), Qt::LeftButton);
}
