// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/screenscale.h"

#include <QApplication>
#include <QFile>
#include <QScreen>

#include <cmath>
#include <unistd.h>

namespace {

const char* const policyVariable = "QT_SCALE_FACTOR_ROUNDING_POLICY";

// Text is as large all the same: it goes by the resolution and not by this factor.
constexpr double greatestError = 0.1;

} // namespace

void ScreenScale::enable()
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    if (!qEnvironmentVariableIsSet(policyVariable))
        QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
}

bool ScreenScale::isAlmostWhole(double factor)
{
    const double error = std::abs(factor - std::round(factor));
    return error > 0 && error < greatestError;
}

void ScreenScale::makeWhole(char* const argv[])
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    // Set already, by the user or by the start before.
    if (!screen || qEnvironmentVariableIsSet(policyVariable) || !isAlmostWhole(screen->devicePixelRatio()))
        return;
    qputenv(policyVariable, "Round");
    execv(QFile::encodeName(QCoreApplication::applicationFilePath()).constData(), argv);
    qunsetenv(policyVariable);
}
