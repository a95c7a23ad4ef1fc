// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/program.h"

#include "tests/support/testsupport.h"

#include <QDir>
#include <QRegularExpression>
#include <QtTest>

#include <unistd.h>

namespace {

constexpr int patience = 30000; // milliseconds

QString xdotool(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral("xdotool"), arguments);
    process.waitForFinished(patience);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

QString visibleWindow(const QString& title)
{
    const QString pattern = QLatin1Char('^') + QRegularExpression::escape(title) + QLatin1Char('$');
    const QString windows
        = xdotool({ QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"), pattern });
    return windows.section(QLatin1Char('\n'), 0, 0);
}

} // namespace

UserFolders::UserFolders()
{
    QDir(m_folder.path()).mkpath(QStringLiteral("data"));
    QDir(m_folder.path()).mkpath(QStringLiteral("tmp"));
}

QString UserFolders::dataFolder() const
{
    return m_folder.filePath(QStringLiteral("data/Vellumcast"));
}

QString UserFolders::dataFile(const QString& name) const
{
    return QDir(dataFolder()).filePath(name);
}

QString UserFolders::temporaryFolder() const
{
    return m_folder.filePath(QStringLiteral("tmp"));
}

QProcessEnvironment UserFolders::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), m_folder.filePath(QStringLiteral("data")));
    environment.insert(QStringLiteral("TMPDIR"), temporaryFolder());
    return environment;
}

void UserFolders::acceptDisclaimer() const
{
    TestSupport::writeFile(dataFile(QStringLiteral("Settings.ini")), "[WarrantyDisclaimer]\naccepted=true\n");
}

Program::Program(const UserFolders& user, const QStringList& arguments)
{
    m_process.setProcessEnvironment(user.environment());
    QStringList command = QStringList(QStringLiteral(VELLUMCAST_EXECUTABLE)) + arguments;
    // What permissions forbid a user, the program must not do here either.
    if (::geteuid() == 0)
        command = QStringList{ "setpriv", "--bounding-set=-dac_override,-dac_read_search" } + command;
    m_process.start(command.takeFirst(), command);
    m_process.waitForStarted(patience);
}

Program::~Program()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished(patience);
}

bool Program::waitForWindow(const QString& title)
{
    return waitForWindow(title, {});
}

bool Program::waitForNextWindow(const QString& title)
{
    return waitForWindow(title, m_window);
}

bool Program::waitForWindow(const QString& title, const QString& formerWindow)
{
    QString window;
    const auto isThere = [this, &title, &window, &formerWindow] {
        window = visibleWindow(title);
        return (!window.isEmpty() && window != formerWindow) || m_process.state() == QProcess::NotRunning;
    };
    if (!QTest::qWaitFor(isThere, patience) || window.isEmpty())
        return false;
    xdotool({ QStringLiteral("windowactivate"), QStringLiteral("--sync"), window });
    m_window = window;
    return true;
}

void Program::press(const QString& key)
{
    xdotool({ QStringLiteral("key"), key });
}

void Program::type(const QString& text)
{
    press(QStringLiteral("ctrl+a"));
    xdotool({ QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("15"), text });
}

bool Program::waitForEnd()
{
    return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(patience);
}

QString Program::log()
{
    QString text = QString::fromUtf8(m_process.readAllStandardError());
    // The test machine has no sound, and the program says so.
    text.remove(QStringLiteral("PulseAudioService: pa_context_connect() failed\n"));
    text.remove(QStringLiteral("Raw audio format not supported by backend, cannot play audio\n"));
    return text;
}
