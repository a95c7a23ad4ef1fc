// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/filewarmup.h"

#include <QByteArray>
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
    m_file.close();
    m_file.setFileName(filePath);
    m_reading = QtConcurrent::run([this]() { read(); });
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

void FileWarmUp::read()
{
    if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return;
    QByteArray block(blockSize, Qt::Uninitialized);
    while (!m_stopRequested) {
        const qint64 length = m_file.read(block.data(), block.size());
        if (length <= 0)
            return;
        m_bytesRead += length;
    }
}
