// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/querycomposer.h"

#include <QtTest>

namespace {

const QStringList twoFields{ "fileName", "library" };

}

class QueryComposerTest : public QObject
{
    Q_OBJECT

private slots:
    void tableNames();
    void selects_data();
    void selects();
    void lookups_data();
    void lookups();
    void orders_data();
    void orders();
    void ranges_data();
    void ranges();
    void conditionsComeInOrder();
    void filterIsWhatSelectsRows();
};

void QueryComposerTest::tableNames()
{
    QCOMPARE(metaDataTableName(1), QStringLiteral("MetaData1"));
    QCOMPARE(metaDataTableName(15), QStringLiteral("MetaData15"));
}

void QueryComposerTest::selects_data()
{
    QTest::addColumn<QString>("columns");
    QTest::addColumn<QVariantMap>("parameters");
    QTest::addColumn<QString>("statement");

    QTest::newRow("nothing") << "*" << QVariantMap() << "SELECT * FROM MetaData3";
    QTest::newRow("columns") << "id, fileName, library" << QVariantMap()
                             << "SELECT id, fileName, library FROM MetaData3";
    QTest::newRow("count") << "COUNT(*)" << QVariantMap() << "SELECT COUNT(*) FROM MetaData3";
    QTest::newRow("last scanned") << "*" << QVariantMap{ { "lastScannedOnly", true } }
                                  << "SELECT * FROM MetaData3 WHERE (scanTimestamp=(SELECT MAX(scanTimestamp) FROM "
                                     "MetaData3))";
    QTest::newRow("playlist") << "*" << QVariantMap{ { "playlistOnly", true } }
                              << "SELECT * FROM MetaData3 WHERE (playlist=1)";
    QTest::newRow("switched off") << "*" << QVariantMap{ { "lastScannedOnly", false }, { "playlistOnly", false } }
                                  << "SELECT * FROM MetaData3";
    QTest::newRow("all") << "*"
                         << QVariantMap{ { "lookup", "kick" }, { "lookupFields", QStringList{ "fileName" } },
                                { "playlistOnly", true }, { "sortField", "rating" }, { "sortOrder", 1 },
                                { "limit", 50 }, { "offset", 100 } }
                         << "SELECT * FROM MetaData3 WHERE (playlist=1) AND ((fileName LIKE \"%%kick%%\")) ORDER BY "
                            "rating DESC, id DESC LIMIT 50 OFFSET 100";
}

void QueryComposerTest::selects()
{
    QFETCH(QString, columns);
    QFETCH(QVariantMap, parameters);
    QFETCH(QString, statement);

    QCOMPARE(composeSelect(3, columns, parameters), statement);
}

void QueryComposerTest::lookups_data()
{
    QTest::addColumn<QString>("lookup");
    QTest::addColumn<QStringList>("fields");
    QTest::addColumn<QString>("where");

    const QStringList oneField{ "fileName" };
    QTest::newRow("plain and negated")
        << "drum !loop" << twoFields
        << "((fileName LIKE \"%%drum%%\") OR (library LIKE \"%%drum%%\")) AND ((fileName NOT LIKE \"%%loop%%\") AND "
           "(library NOT LIKE \"%%loop%%\"))";
    QTest::newRow("empty") << "" << twoFields << "";
    QTest::newRow("blanks only") << "   " << twoFields << "";
    QTest::newRow("tabulator only") << "\t" << twoFields << "";
    QTest::newRow("negation only") << "!" << twoFields << "";
    QTest::newRow("negation among terms")
        << "a ! b" << oneField << "((fileName LIKE \"%%a%%\")) AND ((fileName LIKE \"%%b%%\"))";
    QTest::newRow("no fields") << "drum" << QStringList() << "";
    QTest::newRow("double negation") << "!!x" << oneField << "((fileName NOT LIKE \"%%!x%%\"))";
    QTest::newRow("negation inside") << "x!" << oneField << "((fileName LIKE \"%%x!%%\"))";
    QTest::newRow("trimmed term") << " \tkick\t " << oneField << "((fileName LIKE \"%%kick%%\"))";
    QTest::newRow("place markers") << "50%1 %3 %9%2" << twoFields
                                   << "((fileName LIKE \"%%50%1%%\") OR (library LIKE \"%%50%1%%\")) AND ((fileName "
                                      "LIKE \"%%%3%%\") OR (library LIKE \"%%%3%%\")) AND ((fileName LIKE "
                                      "\"%%%9%2%%\") OR (library LIKE \"%%%9%2%%\"))";
    QTest::newRow("nothing is escaped") << "a\"b_%'" << oneField << "((fileName LIKE \"%%a\"b_%'%%\"))";
}

void QueryComposerTest::lookups()
{
    QFETCH(QString, lookup);
    QFETCH(QStringList, fields);
    QFETCH(QString, where);
    QVariantMap parameters{ { "lookup", lookup } };
    if (!fields.isEmpty())
        parameters.insert("lookupFields", fields);

    const QString expected = where.isEmpty() ? "SELECT * FROM MetaData1" : "SELECT * FROM MetaData1 WHERE " + where;
    QCOMPARE(composeSelect(1, "*", parameters), expected);
}

void QueryComposerTest::orders_data()
{
    QTest::addColumn<QVariant>("field");
    QTest::addColumn<QVariant>("order");
    QTest::addColumn<QString>("text");

    for (const char* field : { "filePath", "fileName", "fileType", "library", "description", "duration", "rating" })
        QTest::newRow(field) << QVariant(field) << QVariant(0) << QString(" ORDER BY %1 ASC, id ASC").arg(field);
    QTest::newRow("descending") << QVariant("fileName") << QVariant(1) << " ORDER BY fileName DESC, id DESC";
    QTest::newRow("other order") << QVariant("fileName") << QVariant(2) << " ORDER BY fileName ASC, id ASC";
    QTest::newRow("negative order") << QVariant("fileName") << QVariant(-1) << " ORDER BY fileName ASC, id ASC";
    QTest::newRow("no order") << QVariant("fileName") << QVariant() << " ORDER BY fileName ASC, id ASC";
    for (const char* field : { "artist", "FileName", "id", "", "fileName; DROP TABLE MetaData1" })
        QTest::newRow(*field != '\0' ? field : "empty") << QVariant(field) << QVariant(1) << "";
}

void QueryComposerTest::orders()
{
    QFETCH(QVariant, field);
    QFETCH(QVariant, order);
    QFETCH(QString, text);

    const QVariantMap parameters{ { "sortField", field }, { "sortOrder", order } };

    QCOMPARE(composeSelect(1, "*", parameters), "SELECT * FROM MetaData1" + text);
}

void QueryComposerTest::ranges_data()
{
    QTest::addColumn<QVariantMap>("parameters");
    QTest::addColumn<QString>("text");

    QTest::newRow("limit") << QVariantMap{ { "limit", 50 } } << " LIMIT 50";
    QTest::newRow("no limit") << QVariantMap{ { "limit", 0 } } << "";
    QTest::newRow("negative limit") << QVariantMap{ { "limit", -1 } } << "";
    QTest::newRow("offset") << QVariantMap{ { "limit", 50 }, { "offset", 1000000 } } << " LIMIT 50 OFFSET 1000000";
    QTest::newRow("no offset") << QVariantMap{ { "limit", 50 }, { "offset", 0 } } << " LIMIT 50";
    QTest::newRow("negative offset") << QVariantMap{ { "limit", 50 }, { "offset", -50 } } << " LIMIT 50";
    QTest::newRow("offset alone") << QVariantMap{ { "offset", 100 } } << " OFFSET 100";
}

void QueryComposerTest::ranges()
{
    QFETCH(QVariantMap, parameters);
    QFETCH(QString, text);

    QCOMPARE(composeSelect(1, "*", parameters), "SELECT * FROM MetaData1" + text);
}

void QueryComposerTest::conditionsComeInOrder()
{
    const QVariantMap parameters{ { "lookup", "x" }, { "lookupFields", QStringList{ "library" } },
        { "playlistOnly", true }, { "lastScannedOnly", true } };
    const QStringList expected{ "(scanTimestamp=(SELECT MAX(scanTimestamp) FROM MetaData2))", "(playlist=1)",
        "((library LIKE \"%%x%%\"))" };

    QCOMPARE(composeConditions(2, parameters), expected);
    QCOMPARE(composeWhere(expected), " WHERE " + expected.join(" AND "));
    QCOMPARE(composeWhere({}), QString());
}

void QueryComposerTest::filterIsWhatSelectsRows()
{
    const QVariantMap filter{ { "lastScannedOnly", true }, { "playlistOnly", false }, { "lookup", "kick" },
        { "lookupFields", twoFields } };
    QVariantMap parameters = filter;
    for (const char* other : { "sortField", "sortOrder", "limit", "offset", "singleField" })
        parameters.insert(other, 1);

    QCOMPARE(filterParameters(parameters), filter);
    QCOMPARE(filterParameters({ { "sortOrder", 1 } }), QVariantMap());
}

QTEST_GUILESS_MAIN(QueryComposerTest)

#include "tst_querycomposer.moc"
