// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/application.h"

#include "app/mainwindow.h"
#include "app/screenscale.h"
#include "app/singleinstance.h"
#include "app/terminationsignals.h"
#include "resources/resources.h"
#include "ui/settings.h"

#include <QApplication>
#include <QDir>
#include <QFont>
#include <QIcon>
#include <QPalette>
#include <QStandardPaths>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

constexpr int failureCode = 1;
constexpr double smallestReadableFont = 10.0; // points
const char instanceName[] = "Vellumcast";

QIcon applicationIcon()
{
    QIcon icon;
    for (const int size : { 16, 32, 48, 128, 256 })
        icon.addFile(QStringLiteral(":/Resources/ApplicationIcon-%1.png").arg(size));
    return icon;
}

void installSettingsFile()
{
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation));
    Settings::setFileName(folder.filePath(QStringLiteral("Settings.ini")));
}

int runMainWindow()
{
    const auto window = std::make_unique<MainWindow>();
    if (!window->isDatabaseOpened())
        return failureCode;
    window->showWindow();
    const int code = QApplication::exec();
    // Before the window goes: what its destruction would store is not wanted.
    Settings::setFileName(QString());
    return code;
}

} // namespace

int runApplication(int& argc, char** argv)
{
    // The application takes out what it understands.
    const std::vector<char*> arguments(argv, argv + argc + 1);
    ScreenScale::enable();
    const QApplication application(argc, argv);
    ScreenScale::makeWhole(arguments.data());
    initialiseResources();
    QApplication::setWindowIcon(applicationIcon());
    // The menu entry beside the installed program; some desktops take a window's name and icon from there.
    QGuiApplication::setDesktopFileName(QStringLiteral("vellumcast"));
    SingleInstance instance;
    if (!instance.claim(QLatin1String(instanceName)))
        return failureCode;
    const TerminationSignals terminationSignals;
    installSettingsFile();
    raiseFontToReadableSize();
    lightenLinksOnDarkPalette();
    return runMainWindow();
}

void raiseFontToReadableSize()
{
    QFont font = QApplication::font();
    font.setPointSizeF(std::max(smallestReadableFont, font.pointSizeF()));
    QApplication::setFont(font);
}

void lightenLinksOnDarkPalette()
{
    constexpr int middle = 128;
    constexpr int lighter = 150; // per cent
    QPalette palette = QApplication::palette();
    const bool isDark = palette.color(QPalette::Window).lightness() < middle;
    if (!isDark || palette.color(QPalette::Link).lightness() > middle)
        return;
    palette.setColor(QPalette::Link, palette.color(QPalette::Highlight).lighter(lighter));
    QApplication::setPalette(palette);
}
