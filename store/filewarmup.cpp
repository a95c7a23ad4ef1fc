// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/filewarmup.h"

#include <QByteArray>
#include <QFile>
#include <QtConcurrent>

namespace {

constexpr int blockSize = 10485760;

}

FileWarmUp::~FileWarmUp()
{
    stop();
}

void FileWarmUp::start(const QString& filePath)
{
    stop();
    m_stopRequested = false;
    m_bytesRead = 0;
    m_reading = QtConcurrent::run([this, filePath]() { read(filePath); });
}

void FileWarmUp::stop()
{
    m_stopRequested = true;
    m_reading.waitForFinished();
}

void FileWarmUp::waitForFinished()
{
    m_reading.waitForFinished();
}

void FileWarmUp::read(const QString& filePath)
{
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return;
    QByteArray block(blockSize, Qt::Uninitialized);
    while (!m_stopRequested) {
        const qint64 length = file.read(block.data(), block.size());
        if (length <= 0)
            return;
        m_bytesRead += length;
    }
}
