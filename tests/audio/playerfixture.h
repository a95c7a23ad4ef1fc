// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/audioplayer.h"

#include "tests/audio/soundserver.h"

#include <QObject>
#include <QTemporaryDir>

#include <memory>

/// What tests of the player share: a server for all of them, a player for each, and a minute of sound. Thread: the
/// test's.
class PlayerFixture : public QObject
{
    Q_OBJECT

protected:
    /// Plays the sound until some of it has been heard.
    void play();

    QTemporaryDir m_folder;
    QString m_file;
    std::unique_ptr<SoundServer> m_server;
    std::unique_ptr<AudioPlayer> m_player;

protected slots:
    virtual void initTestCase();
    virtual void init();
    virtual void cleanup();
};
