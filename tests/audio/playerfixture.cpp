// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/audio/playerfixture.h"

#include "tests/audio/soundmaker.h"

#include <QCoreApplication>
#include <QtTest>

void PlayerFixture::initTestCase()
{
    QVERIFY(m_folder.isValid());
    m_file = m_folder.filePath("tone.wav");
    SoundMaker::makeTone(m_file, 60);
    m_server = std::make_unique<SoundServer>();
}

void PlayerFixture::init()
{
    m_player = std::make_unique<AudioPlayer>();
}

void PlayerFixture::cleanup()
{
    m_player.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void PlayerFixture::play()
{
    QVERIFY(m_player->load(m_file));
    m_player->togglePlayback();
    QTRY_VERIFY(m_player->position() > 0.6);
}
