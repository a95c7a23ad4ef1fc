// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// Folders of one user of the program, new and empty. Owner and thread: one test.
class UserFolders final
{
public:
    UserFolders();

    /// Where the program keeps its files.
    QString dataFolder() const;
    QString dataFile(const QString& name) const;
    QString temporaryFolder() const;
    QProcessEnvironment environment() const;
    /// Writes a settings file in which the disclaimer is accepted already.
    void acceptDisclaimer() const;

private:
    QTemporaryDir m_folder;
};

/// The program in a process of its own, seen and operated from outside. Owner and thread: one test.
class Program final
{
public:
    /// Starts it. It is killed with this object if it still runs.
    explicit Program(const UserFolders& user, const QStringList& arguments = {});
    ~Program();
    Q_DISABLE_COPY(Program)

    QProcess& process() { return m_process; }
    /// True once a window of exactly this title is on the screen and active; false after a time.
    bool waitForWindow(const QString& title);
    /// The same for another window than was waited for last.
    bool waitForNextWindow(const QString& title);
    /// Presses a key (by its X name) in the active window.
    void press(const QString& key);
    /// Types a text into the active window, in place of what is selected or stands there.
    void type(const QString& text);
    /// True once it has ended by itself.
    bool waitForEnd();
    int exitCode() const { return m_process.exitCode(); }
    /// What it has written to the message log, but for what every start without an audio device writes.
    QString log();

private:
    bool waitForWindow(const QString& title, const QString& formerWindow);

    QProcess m_process;
    // As the X server numbers it; empty before the first.
    QString m_window;
};
