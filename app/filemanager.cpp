// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filemanager.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>
#include <QUrl>

#ifdef Q_OS_WIN
#include <QProcess>
#else
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#endif

namespace {

#ifdef Q_OS_WIN

void showFile(const QString& filePath)
{
    const QString command = QStringLiteral("explorer /select, \"%1\"").arg(QDir::toNativeSeparators(filePath));
    QProcess::startDetached(command.section(QLatin1Char(' '), 0, 0), { command.section(QLatin1Char(' '), 1) });
}

#else

void openFolderOf(const QString& filePath)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(nearestExistingFolder(filePath)));
}

void showFile(const QString& filePath)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        openFolderOf(filePath);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"), QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("ShowItems"));
    const QString address = QString::fromUtf8(QUrl::fromLocalFile(filePath).toEncoded());
    call.setArguments({ QStringList(address), QString() });
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, filePath] {
        watcher->deleteLater();
        if (watcher->isError())
            openFolderOf(filePath);
    });
}

#endif

} // namespace

QString nearestExistingFolder(const QString& path)
{
    QString folder = QFileInfo(path).absolutePath();
    while (!QFileInfo(folder).isDir() && !QDir(folder).isRoot())
        folder = QFileInfo(folder).absolutePath();
    return folder;
}

void revealInFileManager(const QString& filePath)
{
    if (QFileInfo::exists(filePath))
        showFile(filePath);
    else
        openFolderOf(filePath);
}
