// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/fieldcatalogue.h"
#include "store/metadata.h"

#include <QtTest>

class FieldCatalogueTest : public QObject
{
    Q_OBJECT

private slots:
    void allFieldsAreNamedInColumnOrder();
    void sevenFieldsAreSortable();
    void labelsOfSortableFields_data();
    void labelsOfSortableFields();
    void everyFieldIsAKeyOfTheMapForm();
};

void FieldCatalogueTest::allFieldsAreNamedInColumnOrder()
{
    const QStringList expected{ "id", "filePath", "fileName", "fileType", "library", "description", "duration",
        "rating", "sampleRate", "channelsCount", "bitsPerSample", "originReference", "artist", "title", "album",
        "comments", "genre", "year", "bitrate", "playlist", "scanTimestamp" };

    QCOMPARE(allFieldNames(), expected);
}

void FieldCatalogueTest::sevenFieldsAreSortable()
{
    const QStringList expected{ "filePath", "fileName", "fileType", "library", "description", "duration", "rating" };

    QCOMPARE(sortableFieldNames(), expected);
}

void FieldCatalogueTest::labelsOfSortableFields_data()
{
    QTest::addColumn<QString>("fieldName");
    QTest::addColumn<QString>("label");

    QTest::newRow("filePath") << "filePath"
                              << "File Path";
    QTest::newRow("fileName") << "fileName"
                              << "File Name";
    QTest::newRow("fileType") << "fileType"
                              << "Type";
    QTest::newRow("library") << "library"
                             << "Library";
    QTest::newRow("description") << "description"
                                 << "Description";
    QTest::newRow("duration") << "duration"
                              << "Duration";
    QTest::newRow("rating") << "rating"
                            << "Rating";
    QTest::newRow("not sortable") << "artist" << QString();
    QTest::newRow("other case") << "FilePath" << QString();
    QTest::newRow("empty") << QString() << QString();
}

void FieldCatalogueTest::labelsOfSortableFields()
{
    QFETCH(QString, fieldName);
    QFETCH(QString, label);

    QCOMPARE(fieldLabel(fieldName), label);
}

void FieldCatalogueTest::everyFieldIsAKeyOfTheMapForm()
{
    QStringList expected = allFieldNames() + QStringList{ "error" };
    expected.sort();

    QCOMPARE(MetaData(QVariantMap()).toVariantMap().keys(), expected);
}

QTEST_GUILESS_MAIN(FieldCatalogueTest)

#include "tst_fieldcatalogue.moc"
