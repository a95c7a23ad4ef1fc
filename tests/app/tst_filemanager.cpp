// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filemanager.h"

#include "tests/app/desktop.h"
#include "tests/support/testsupport.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

/// A file manager on the session bus that notes what it is asked to show.
class FileManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QStringList shown() const { return m_shown; }

public slots:
    void ShowItems(const QStringList& addresses, const QString& /*startupId*/) { m_shown += addresses; }

private:
    QStringList m_shown;
};

class FileManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void nearestFolderIsFound_data();
    void nearestFolderIsFound();
    void folderIsOpenedWithoutAFileManager();
    void fileIsShownByTheFileManager_data();
    void fileIsShownByTheFileManager();
    void vanishedFileOpensTheNearestFolder();

private:
    QTemporaryDir m_folder;
    QProcess m_bus;
};

void FileManagerTest::initTestCase()
{
    m_bus.start(QStringLiteral("dbus-daemon"),
        { QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address") });
    QVERIFY(m_bus.waitForReadyRead());
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.readLine().trimmed());
    QVERIFY(QDBusConnection::sessionBus().isConnected());
}

void FileManagerTest::cleanupTestCase()
{
    m_bus.terminate();
    QVERIFY(m_bus.waitForFinished());
}

void FileManagerTest::nearestFolderIsFound_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("folder");
    const QString folder = m_folder.path();
    QTest::newRow("file there") << folder + "/a.wav" << folder;
    QTest::newRow("folder gone") << folder + "/gone/a.wav" << folder;
    QTest::newRow("two folders gone") << folder + "/gone/too/a.wav" << folder;
    QTest::newRow("all gone") << "/no such folder/a/b.wav"
                              << "/";
    QTest::newRow("in the root") << "/a.wav"
                                 << "/";
}

void FileManagerTest::nearestFolderIsFound()
{
    QFETCH(QString, path);

    QTEST(nearestExistingFolder(path), "folder");
}

void FileManagerTest::folderIsOpenedWithoutAFileManager()
{
    const QString path = m_folder.filePath(QStringLiteral("one.wav"));
    TestSupport::writeFile(path, "sound");
    const Desktop desktop;

    revealInFileManager(path);

    QTRY_COMPARE(desktop.opened(), QStringList(m_folder.path()));
}

void FileManagerTest::fileIsShownByTheFileManager_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : { "plain.wav", "with blanks.wav", "comma, comma.wav", "quote\" and 'quote'.wav",
             "50%25.wav", "ünïcödé.wav", "-dash.wav", "a;b&c$(d)`e`.wav", "question?#hash.wav" })
        QTest::newRow(name) << QString::fromUtf8(name);
}

void FileManagerTest::fileIsShownByTheFileManager()
{
    QFETCH(QString, name);
    const QString path = m_folder.filePath(name);
    TestSupport::writeFile(path, "sound");
    FileManager fileManager;
    QDBusConnection bus = QDBusConnection::sessionBus();
    QVERIFY(bus.registerObject(
        QStringLiteral("/org/freedesktop/FileManager1"), &fileManager, QDBusConnection::ExportAllSlots));
    QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.FileManager1")));
    const Desktop desktop;

    revealInFileManager(path);

    QTRY_COMPARE(fileManager.shown().size(), 1);
    QCOMPARE(QUrl(fileManager.shown().first(), QUrl::StrictMode).toLocalFile(), path);
    QVERIFY(desktop.opened().isEmpty());
    bus.unregisterService(QStringLiteral("org.freedesktop.FileManager1"));
    bus.unregisterObject(QStringLiteral("/org/freedesktop/FileManager1"));
}

void FileManagerTest::vanishedFileOpensTheNearestFolder()
{
    const Desktop desktop;

    revealInFileManager(m_folder.filePath(QStringLiteral("gone/away.wav")));

    QCOMPARE(desktop.opened(), QStringList(m_folder.path()));
}

QTEST_MAIN(FileManagerTest)
#include "tst_filemanager.moc"
