// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/benchmpd.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalSocket>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <unistd.h>

namespace {

constexpr int patience = 60000; // milliseconds
constexpr int pollInterval = 5; // milliseconds

// The daemon with a music folder that is empty at first: it makes its database before anything is measured.
class Mpd
{
public:
    explicit Mpd(const QString& program)
    {
        QDir(m_folder.path()).mkdir(QStringLiteral("music"));
        writeConfiguration();
        m_process.start(program, { QStringLiteral("--no-daemon"), path("mpd.conf") });
        if (!m_process.waitForStarted())
            qFatal("mpd does not start: %s", qPrintable(m_process.errorString()));
        connectToIt();
        awaitUpdate();
    }
    ~Mpd()
    {
        m_process.terminate();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY(Mpd)

    QString path(const char* name) const { return m_folder.filePath(QLatin1String(name)); }

    // The answer's lines up to its end.
    QString ask(const QByteArray& command)
    {
        m_socket.write(command + '\n');
        QByteArray answer;
        while (!answer.endsWith("OK\n")) {
            if (!m_socket.waitForReadyRead(patience))
                qFatal("mpd does not answer");
            answer += m_socket.readAll();
            if (answer.startsWith("ACK"))
                qFatal("mpd refuses: %s", answer.constData());
        }
        return QString::fromUtf8(answer);
    }

    void awaitUpdate()
    {
        while (ask("status").contains(QLatin1String("updating_db")))
            QThread::msleep(pollInterval);
    }

    // Seconds of all threads, from the 14th and 15th field of what the system tells.
    double processorTime() const
    {
        QFile file(QStringLiteral("/proc/%1/stat").arg(m_process.processId()));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("mpd has gone");
        const QByteArray line = file.readAll();
        const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
        return (fields.at(11).toDouble() + fields.at(12).toDouble()) / double(::sysconf(_SC_CLK_TCK));
    }

private:
    void writeConfiguration() const
    {
        QFile file(path("mpd.conf"));
        const QString text = QStringLiteral("music_directory \"%1/music\"\n"
                                            "db_file \"%1/database\"\n"
                                            "log_file \"%1/log\"\n"
                                            "bind_to_address \"%1/socket\"\n"
                                            "filesystem_charset \"UTF-8\"\n"
                                            "audio_output {\n  type \"null\"\n  name \"none\"\n}\n")
                                 .arg(m_folder.path());
        if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
            qFatal("Cannot write %s", qPrintable(file.fileName()));
    }

    void connectToIt()
    {
        QElapsedTimer timer;
        timer.start();
        while (m_socket.state() != QLocalSocket::ConnectedState) {
            if (timer.elapsed() > patience)
                qFatal("mpd cannot be reached");
            m_socket.connectToServer(path("socket"));
            if (!m_socket.waitForConnected(patience))
                QThread::msleep(pollInterval);
        }
        // It greets with its version.
        if (!m_socket.waitForReadyRead(patience))
            qFatal("mpd does not greet");
        m_socket.readAll();
    }

    QTemporaryDir m_folder;
    QProcess m_process;
    QLocalSocket m_socket;
};

} // namespace

std::optional<MpdScan> scanWithMpd(const QString& folder)
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("mpd"));
    if (program.isEmpty())
        return std::nullopt;
    Mpd mpd(program);
    QFile::link(folder, mpd.path("music/sounds"));
    const double processorTime = mpd.processorTime();
    QElapsedTimer timer;
    timer.start();
    mpd.ask("update");
    mpd.awaitUpdate();
    MpdScan scan;
    scan.passedTime = double(timer.nsecsElapsed()) / 1e9;
    scan.processorTime = mpd.processorTime() - processorTime;
    const QString songs = mpd.ask("stats").section(QStringLiteral("songs: "), 1).section(QLatin1Char('\n'), 0, 0);
    scan.songs = songs.toInt();
    if (scan.songs == 0)
        qFatal("mpd found nothing");
    return scan;
}
