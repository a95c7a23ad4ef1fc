// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/windowfixture.h"

#include "resources/resources.h"
#include "tests/support/storefixture.h"
#include "ui/settings.h"

#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QLayout>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>

namespace {

MetaData sampleRecord(int number)
{
    const QString path = QStringLiteral("/sounds/%1/take_%2.wav")
                             .arg(number % 2 ? QStringLiteral("harbour") : QStringLiteral("forest"),
                                 QString::number(number).rightJustified(3, QLatin1Char('0')));
    MetaData record = TestSupport::sampleRecord(path);
    record.setDescription(number % 3 ? QStringLiteral("Wind in reeds") : QStringLiteral("Bell buoy"));
    record.setPlaylist(number < playlistSampleRows ? 1 : 0);
    return record;
}

MetaDataList sampleRecords(int first, int count)
{
    MetaDataList records;
    for (int number = first; number < first + count; ++number)
        records.append(sampleRecord(number));
    return records;
}

// Made once for all tests of a program.
QString sampleDatabaseFile()
{
    static TestSupport::StoreFixture store;
    static bool isMade = false;
    if (!isMade) {
        isMade = true;
        store.open();
        store.insert(1, sampleRecords(0, sampleRows - lastScannedSampleRows), 1000);
        store.insert(1, sampleRecords(sampleRows - lastScannedSampleRows, lastScannedSampleRows), 2000);
        store.insert(3, sampleRecords(0, rowsOfTable3), 1000);
        store.destroy();
    }
    return store.filePath();
}

// The first widget of a row that is less wide than it must be, stands over its neighbour or ends outside; or nothing.
QString clippedOrOverlappingIn(const QWidget& row)
{
    int end = 0;
    for (int place = 0; place < row.layout()->count(); ++place) {
        const QWidget* widget = row.layout()->itemAt(place)->widget();
        if (!widget || widget->isHidden())
            continue;
        // The play button's width is that of a text longer than its own.
        const bool isClipped = widget->objectName() != QLatin1String("playbackButton")
            && widget->width() < widget->minimumSizeHint().width();
        if (isClipped || widget->x() < end)
            return widget->objectName();
        end = widget->x() + widget->width();
    }
    return end <= row.width() ? QString() : row.objectName();
}

} // namespace

WindowFixture::WindowFixture()
{
    initialiseResources();
    qputenv("XDG_DATA_HOME", m_folder.filePath(QStringLiteral("data")).toUtf8());
    QDir().mkpath(QFileInfo(databaseFile()).path());
    QFile::copy(sampleDatabaseFile(), databaseFile());
    Settings::setFileName(dataFile(QStringLiteral("Settings.ini")));
    Settings(QStringLiteral("WarrantyDisclaimer")).setValue(QStringLiteral("accepted"), true);
    guardAgainstHanging();
}

// A modal window that no test expects would wait for ever.
void WindowFixture::guardAgainstHanging()
{
    constexpr int patience = 90000; // milliseconds
    QObject::connect(&m_guard, &QTimer::timeout, &m_guard, [] {
        const QWidget* window = QApplication::activeModalWidget();
        qFatal("The test does not end; the window waiting for an answer: %s",
            window ? qPrintable(window->windowTitle()) : "none");
    });
    m_guard.start(patience);
}

WindowFixture::~WindowFixture()
{
    if (m_window)
        close();
    Settings::setFileName(QString());
}

QString WindowFixture::dataFile(const QString& name) const
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation)).filePath(name);
}

QString WindowFixture::databaseFile() const
{
    return dataFile(QStringLiteral("VellumcastDB.dat"));
}

MainWindow& WindowFixture::build()
{
    m_window = std::make_unique<MainWindow>();
    return *m_window;
}

MainWindow& WindowFixture::start()
{
    MainWindow& window = build();
    QSignalSpy showed(&window, &AdvancedWindow::showed);
    window.showWindow();
    if (showed.isEmpty())
        showed.wait();
    return window;
}

void WindowFixture::close()
{
    m_window->close();
    m_window.reset();
    // Writes the settings out.
    Settings::setFileName(dataFile(QStringLiteral("Settings.ini")));
}

QString WindowFixture::clippedOrOverlapping()
{
    for (const auto* row : { "upperWidget", "lowerWidget", "viewButtonsWidget", "playButtonsWidget" }) {
        QString widget = clippedOrOverlappingIn(*child<QWidget>(row));
        if (!widget.isEmpty())
            return widget;
    }
    return {};
}

QString WindowFixture::counters()
{
    return child<QLabel>("rowCountersLabel")->text();
}
