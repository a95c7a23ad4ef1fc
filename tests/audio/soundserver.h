// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVector>

/// A PulseAudio server of the test's own. Its devices play into nothing: "test", the default one, can be listened to,
/// and "slow" plays only some time after a sound has begun, and then two seconds at a time.
///
/// It must be made before this process first asks for an audio device, and last until its end.
/// Owner and thread: the test program.
class SoundServer final
{
public:
    /// Starts it and makes it the server of this process; fails the program when it cannot.
    SoundServer();
    ~SoundServer();
    Q_DISABLE_COPY(SoundServer)

    /// Makes this device the default one; fails the program when it cannot.
    void choose(const QString& device);
    /// The device takes nothing until it is let go on; the server answers all the same.
    void putToSleep(const QString& device);
    void letGoOn(const QString& device);
    /// Takes all devices away, and with them what plays.
    void removeDevices();
    /// Brings back the device "test" after that.
    void addDevice();
    /// Ends what plays, and tells nobody why.
    void endStreams();
    /// The server answers nothing until it is woken.
    void freeze();
    void wake();
    void kill();

private:
    bool isAnswering() const;
    QByteArray ask(const QStringList& arguments) const;
    void control(const QStringList& arguments);

    QTemporaryDir m_folder;
    QProcess m_process;
};

/// Records what the server's device plays: 96000 Hz, stereo, signed 32-bit. Owner and thread: one test.
class SoundRecording final
{
public:
    /// Records from now on.
    SoundRecording();
    ~SoundRecording();
    Q_DISABLE_COPY(SoundRecording)

    /// What has been recorded so far.
    QByteArray sound();
    /// True once at least so many seconds above silence have been recorded; false after a time.
    bool waitForSound(double seconds);
    /// True once the last so many seconds are silent; false after a time.
    bool waitForSilence(double seconds);

private:
    QProcess m_process;
    QByteArray m_sound;
};

/// A stretch of a recording that is not silent, in frames.
struct SoundSpan
{
    int begin = 0;
    int end = 0;
    int length() const { return end - begin; }
};

/// The stretches of a recording between silences of 5 ms and more.
QVector<SoundSpan> soundSpans(const QByteArray& sound);

/// The distances in frames between upward zero crossings within a stretch.
QVector<int> periods(const QByteArray& sound, const SoundSpan& span);
