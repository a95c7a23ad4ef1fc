// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/settings.h"

#include <QFile>
#include <QSettings>
#include <QSize>
#include <QTemporaryDir>
#include <QtTest>

class SettingsTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void withoutAnInstalledFileDefaultsAreReadAndNothingIsStored();
    void groupWithAndWithoutSlashShareTheirKeys();
    void keysOfTwoGroupsAreApart();
    void keysStandInTheSectionOfTheirGroup();
    void emptyGroupPrefixesKeysWithASlash();
    void absentKeyGivesTheDefault();
    void removedKeyIsGone();
    void valuesKeepTheirTypesOverAReload_data();
    void valuesKeepTheirTypesOverAReload();
    void replacingTheFileWritesTheOldOneOut();
    void emptyFileNameKeepsLaterValuesOutOfTheFile();
    void brokenFileReadsAsDefaults();

private:
    QString filePath(const QString& name = QStringLiteral("Settings.ini")) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void SettingsTest::cleanup()
{
    Settings::setFileName(QString());
    QFile::remove(filePath());
}

void SettingsTest::withoutAnInstalledFileDefaultsAreReadAndNothingIsStored()
{
    // Runs first: no file was installed yet in this process.
    Settings settings("MainWindow");

    settings.setValue("nowhere", 3);
    settings.remove("nowhere");

    QVERIFY(!settings.contains("nowhere"));
    QCOMPARE(settings.value("nowhere", 1), QVariant(1));
    QVERIFY(!QFile::exists(filePath()));
}

void SettingsTest::groupWithAndWithoutSlashShareTheirKeys()
{
    Settings::setFileName(filePath());
    Settings bare("ScanDialog");
    Settings slashed("ScanDialog/");

    bare.setValue("lookupDirectory", "/sounds");

    QCOMPARE(slashed.value("lookupDirectory"), QVariant("/sounds"));
    QVERIFY(slashed.contains("lookupDirectory"));
}

void SettingsTest::keysOfTwoGroupsAreApart()
{
    Settings::setFileName(filePath());
    Settings scan("ScanDialog");
    const Settings work("WorkFolderDialog");

    scan.setValue("lookupDirectory", "/sounds");

    QVERIFY(!work.contains("lookupDirectory"));
    QCOMPARE(work.value("lookupDirectory", "/home"), QVariant("/home"));
}

void SettingsTest::keysStandInTheSectionOfTheirGroup()
{
    Settings::setFileName(filePath());
    Settings("MainWindow").setValue("tableId", 3);
    Settings::setFileName(QString());

    QFile file(filePath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("[MainWindow]\ntableId=3\n"));
}

void SettingsTest::emptyGroupPrefixesKeysWithASlash()
{
    Settings::setFileName(filePath());
    Settings ungrouped("");

    ungrouped.setValue("key", 1);

    // A leading slash is dropped by the file's own key rules.
    QCOMPARE(ungrouped.value("key"), QVariant(1));
    QCOMPARE(Settings("/").value("key"), QVariant(1));
    Settings::setFileName(QString());
    QCOMPARE(QSettings(filePath(), QSettings::IniFormat).allKeys(), QStringList{ "key" });
}

void SettingsTest::absentKeyGivesTheDefault()
{
    Settings::setFileName(filePath());
    const Settings settings("MainWindow");

    QVERIFY(!settings.contains("tableId"));
    QCOMPARE(settings.value("tableId", 1), QVariant(1));
    QVERIFY(!settings.value("tableId").isValid());
}

void SettingsTest::removedKeyIsGone()
{
    Settings::setFileName(filePath());
    Settings settings("MainWindow");
    settings.setValue("tableId", 3);
    settings.setValue("workFolderPath", "/work");

    settings.remove("tableId");

    QVERIFY(!settings.contains("tableId"));
    QVERIFY(settings.contains("workFolderPath"));
}

void SettingsTest::valuesKeepTheirTypesOverAReload_data()
{
    QTest::addColumn<QVariant>("value");

    QTest::newRow("integer") << QVariant(15);
    QTest::newRow("boolean") << QVariant(true);
    QTest::newRow("real") << QVariant(0.25);
    QTest::newRow("bytes") << QVariant(QByteArray("\x00\xff\x01header", 9));
    QTest::newRow("text") << QVariant(QString::fromUtf8("/Töne; \"drums\", 100%"));
    QTest::newRow("list of text") << QVariant(QStringList{ "filePath", "library" });
    QTest::newRow("size") << QVariant(QSize(1263, 444));
    QTest::newRow("position") << QVariant(QPoint(-5, 40));
}

void SettingsTest::valuesKeepTheirTypesOverAReload()
{
    QFETCH(QVariant, value);
    Settings::setFileName(filePath());
    Settings settings("MainWindow");
    settings.setValue("key", value);

    Settings::setFileName(filePath());

    QVariant stored = settings.value("key");
    QVERIFY(stored.convert(value.userType()));
    QCOMPARE(stored, value);
}

void SettingsTest::replacingTheFileWritesTheOldOneOut()
{
    Settings::setFileName(filePath());
    Settings settings("MainWindow");
    settings.setValue("tableId", 3);
    QVERIFY(!QFile::exists(filePath()));

    Settings::setFileName(filePath("Other.ini"));

    QCOMPARE(QSettings(filePath(), QSettings::IniFormat).value("MainWindow/tableId").toInt(), 3);
    QVERIFY(!settings.contains("tableId"));
}

void SettingsTest::emptyFileNameKeepsLaterValuesOutOfTheFile()
{
    Settings::setFileName(filePath());
    Settings settings("MainWindow");
    settings.setValue("tableId", 3);
    Settings::setFileName(QString());

    settings.setValue("tableId", 9);
    Settings::setFileName(filePath());

    QCOMPARE(settings.value("tableId").toInt(), 3);
}

void SettingsTest::brokenFileReadsAsDefaults()
{
    QFile file(filePath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("\x7f\x45\x4c\x46 no [settings\n==\n[Main");
    file.close();
    Settings::setFileName(filePath());

    QCOMPARE(Settings("MainWindow").value("tableId", 1).toInt(), 1);
    QVERIFY(!Settings("MainWindow").contains("tableId"));
}

QTEST_GUILESS_MAIN(SettingsTest)
#include "tst_settings.moc"
