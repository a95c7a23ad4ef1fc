// SPDX-License-Identifier: GPL-3.0-or-later
// What the main window remembers between runs, and when it writes it down.
#include "tests/app/windowfixture.h"

#include "browse/metadatamodel.h"
#include "ui/settings.h"

#include <QHeaderView>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QSlider>
#include <QtTest>

namespace {

QVariant storedValue(const WindowFixture& fixture, const QString& key)
{
    const QSettings settings(fixture.dataFile(QStringLiteral("Settings.ini")), QSettings::IniFormat);
    return settings.value(QStringLiteral("MainWindow/") + key);
}

// Of a value that is kept for each screen size.
QString screenKey(WindowFixture& fixture, const char* name)
{
    const QSize screen = fixture.window().screen()->size();
    return QStringLiteral("%1%2x%3").arg(
        QLatin1String(name), QString::number(screen.width()), QString::number(screen.height()));
}

QAction* tableAction(WindowFixture& fixture, int tableId)
{
    return fixture.child<QAction>("openTableAction")->menu()->actions().at(tableId - 1);
}

} // namespace

class MainWindowStateTest : public QObject
{
    Q_OBJECT

private slots:
    void defaultsWithoutSettings();
    void stateSurvivesARestart();
    void impossibleSettingsAreBounded();
    void stateIsSavedSoonAfterAChange();
    void stateIsSavedWhenTheApplicationQuits();
};

void MainWindowStateTest::defaultsWithoutSettings()
{
    WindowFixture fixture;

    fixture.start();

    QCOMPARE(fixture.view().tableId(), 1);
    QCOMPARE(fixture.child<QSlider>("playbackVolumeSlider")->value(), 100);
    QVERIFY(!fixture.child<QPushButton>("autoPlayButton")->isChecked());
    QVERIFY(!fixture.child<QAction>("filePathLookupAction")->isChecked());
}

void MainWindowStateTest::stateSurvivesARestart()
{
    WindowFixture fixture;
    Settings(QStringLiteral("MainWindow")).setValue(QStringLiteral("playbackVolume"), 0.37);
    Settings(QStringLiteral("MainWindow")).setValue(QStringLiteral("workFolderPath"), QStringLiteral("/work"));
    fixture.start();
    tableAction(fixture, 3)->trigger();
    fixture.child<QPushButton>("autoPlayButton")->setChecked(true);
    fixture.child<QAction>("filePathLookupAction")->setChecked(true);
    fixture.view().columnsMenu()->actions().at(MetaDataModel::DurationColumn)->trigger();
    fixture.view().sortByColumn(MetaDataModel::RatingColumn, Qt::DescendingOrder);
    fixture.window().resize(1300, 500);
    // It is saved some time after the last change: the window manager, too, has settled then.
    QTRY_COMPARE(storedValue(fixture, screenKey(fixture, "size")).toSize(), QSize(1300, 500));

    fixture.close();
    fixture.start();

    QCOMPARE(fixture.view().tableId(), 3);
    QTRY_COMPARE(fixture.counters(), QStringLiteral("Found Records: %1").arg(rowsOfTable3));
    QCOMPARE(fixture.child<QSlider>("playbackVolumeSlider")->value(), 37);
    QVERIFY(fixture.child<QPushButton>("autoPlayButton")->isChecked());
    QVERIFY(fixture.child<QAction>("filePathLookupAction")->isChecked());
    QVERIFY(fixture.view().isColumnHidden(MetaDataModel::DurationColumn));
    QVERIFY(!fixture.view().columnsMenu()->actions().at(MetaDataModel::DurationColumn)->isChecked());
    QCOMPARE(fixture.view().horizontalHeader()->sortIndicatorSection(), int(MetaDataModel::RatingColumn));
    QCOMPARE(fixture.view().horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
    QCOMPARE(fixture.window().size(), QSize(1300, 500));
    fixture.close();
    QCOMPARE(storedValue(fixture, QStringLiteral("playbackVolume")).toDouble(), 0.37);
    QCOMPARE(storedValue(fixture, QStringLiteral("workFolderPath")).toString(), QStringLiteral("/work"));
}

void MainWindowStateTest::impossibleSettingsAreBounded()
{
    WindowFixture fixture;
    Settings settings(QStringLiteral("MainWindow"));
    settings.setValue(QStringLiteral("tableId"), 99);
    settings.setValue(QStringLiteral("playbackVolume"), 7.5);
    settings.setValue(QStringLiteral("metaDataViewHeaderState"), QByteArray("nonsense"));

    fixture.start();

    QCOMPARE(fixture.view().tableId(), 15);
    QCOMPARE(fixture.child<QSlider>("playbackVolumeSlider")->value(), 100);
    QTRY_COMPARE(fixture.counters(), QStringLiteral("Found Records: 0"));
}

void MainWindowStateTest::stateIsSavedSoonAfterAChange()
{
    WindowFixture fixture;
    fixture.start();
    const Settings settings(QStringLiteral("MainWindow"));
    QVERIFY(!settings.contains(QStringLiteral("filePathLookupEnabled")));

    fixture.child<QAction>("filePathLookupAction")->trigger();

    QVERIFY(!settings.contains(QStringLiteral("filePathLookupEnabled")));
    QTRY_COMPARE(settings.value(QStringLiteral("filePathLookupEnabled")).toBool(), true);
    tableAction(fixture, 7)->trigger();
    QTRY_COMPARE(settings.value(QStringLiteral("tableId")).toInt(), 7);
    fixture.child<QPushButton>("autoPlayButton")->click();
    QTRY_COMPARE(settings.value(QStringLiteral("autoPlaybackEnabled")).toBool(), true);
    fixture.child<QSlider>("playbackVolumeSlider")->setValue(37);
    QTRY_COMPARE(settings.value(QStringLiteral("playbackVolume")).toDouble(), 0.37);
}

void MainWindowStateTest::stateIsSavedWhenTheApplicationQuits()
{
    WindowFixture fixture;
    MainWindow& window = fixture.start();
    const Settings settings(QStringLiteral("MainWindow"));
    tableAction(fixture, 3)->trigger();
    window.resize(1300, 500);
    QTRY_COMPARE(settings.value(screenKey(fixture, "size")).toSize(), QSize(1300, 500));
    // A move alone is saved at the end.
    window.move(123, 145);
    QTRY_COMPARE(window.pos(), QPoint(123, 145));

    QTimer::singleShot(0, &window, &QCoreApplication::quit);
    QApplication::exec();

    QCOMPARE(settings.value(QStringLiteral("tableId")).toInt(), 3);
    QCOMPARE(settings.value(screenKey(fixture, "position")).toPoint(), QPoint(123, 145));
}

QTEST_MAIN(MainWindowStateTest)
#include "tst_mainwindowstate.moc"
