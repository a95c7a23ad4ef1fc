// SPDX-License-Identifier: GPL-3.0-or-later
// Plays a file and ends after some milliseconds, whatever the player does then.
// Usage: playerprogram FILE MILLISECONDS
#include "audio/audioplayer.h"
#include "audio/processend.h"

#include <QCoreApplication>
#include <QTimer>

namespace {

int play(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    AudioPlayer player;
    if (arguments.size() != 3 || !player.load(arguments.at(1)))
        return 2;
    player.togglePlayback();
    if (player.state() != QAudio::ActiveState)
        return 3;
    QTimer::singleShot(arguments.at(2).toInt(), &application, &QCoreApplication::quit);
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    endProcess(play(argc, argv));
}
