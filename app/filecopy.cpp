// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filecopy.h"

#include "app/chunkedcopy.h"
#include "app/filesystem.h"
#include "store/operationreply.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QtConcurrent>

#include <limits>

namespace {

constexpr int greatestProgress = std::numeric_limits<int>::max();
constexpr qint64 unitStep = 1024;
constexpr int reportInterval = 100; // milliseconds

QString text(const char* pattern, const QString& path)
{
    return QCoreApplication::translate("FileCopy", pattern).arg(path);
}

// Progress is an int, which bytes of a large file do not fit.
void reportBytes(OperationReply* reply, qint64 position, qint64 size)
{
    qint64 unit = 1;
    while (size / unit > greatestProgress)
        unit *= unitStep;
    reply->setProgressUnit(unit);
    reply->setProgress(int(qMin<qint64>(position / unit, greatestProgress)), int(size / unit));
}

QString errorText(ChunkedCopy::Outcome outcome, const QString& source, const QString& target)
{
    switch (outcome) {
    case ChunkedCopy::Outcome::Copied:
    case ChunkedCopy::Outcome::NotAccepted:
        break;
    case ChunkedCopy::Outcome::Canceled:
        return QCoreApplication::translate("FileCopy", "Canceled");
    case ChunkedCopy::Outcome::SourceNotOpened:
        return text(QT_TRANSLATE_NOOP("FileCopy", "Unable to open source file for reading: %1"), source);
    case ChunkedCopy::Outcome::TargetNotOpened:
        return text(QT_TRANSLATE_NOOP("FileCopy", "Unable to open target file for writing: %1"), target);
    case ChunkedCopy::Outcome::SourceNotRead:
        return text(QT_TRANSLATE_NOOP("FileCopy", "Unable to read source file: %1"), source);
    case ChunkedCopy::Outcome::TargetNotWritten:
        return text(QT_TRANSLATE_NOOP("FileCopy", "Unable to write target file: %1"), target);
    }
    return QString();
}

void runFileCopy(
    OperationReply* reply, const QString& source, const QString& target, bool isReplacing, const CopyCheck& check)
{
    reply->setProgress(0, -1);
    QFileInfo(target).dir().mkpath(QStringLiteral("."));
    QString refusal;
    const ChunkedCopy::Watch watch{ [reply]() { return reply->isCanceled(); },
        [reply](qint64 position, qint64 size) { reportBytes(reply, position, size); },
        [&refusal, &check](const QString& filePath) {
            refusal = check ? check(filePath) : QString();
            return refusal.isEmpty();
        } };
    ChunkedCopy copy(watch, { isReplacing, true, false });
    const ChunkedCopy::Outcome outcome = copy.copy(source, target);
    const QString failure = outcome == ChunkedCopy::Outcome::NotAccepted ? refusal : errorText(outcome, source, target);
    if (failure.isEmpty())
        reply->finish();
    else
        reply->setError(failure);
}

/// One copy of many files into a folder.
class FilesCopy
{
public:
    FilesCopy(OperationReply* reply, int filesCount)
        : m_reply(reply)
        , m_filesCount(filesCount)
        , m_copy({ [reply]() { return reply->isCanceled(); }, {} }, { false, false, true })
    {
    }

    void copyFile(const QString& source, const QDir& folder);
    void removeCopiedFiles();
    /// To be called at last.
    void reportWarnings();

private:
    void warn(const char* pattern, const QString& path);
    void reportProgress();

    OperationReply* const m_reply;
    const int m_filesCount;
    ChunkedCopy m_copy;
    QStringList m_copiedFiles;
    // Those that were not reported yet, and the time since some were.
    QStringList m_warnings;
    QElapsedTimer m_sinceReport;
};

// Of missing files there may be many thousands a second.
void FilesCopy::warn(const char* pattern, const QString& path)
{
    m_warnings.append(text(pattern, path));
    if (!m_sinceReport.isValid() || m_sinceReport.hasExpired(reportInterval))
        reportWarnings();
}

void FilesCopy::reportWarnings()
{
    if (!m_warnings.isEmpty())
        m_reply->addWarnings(m_warnings);
    m_warnings.clear();
    m_sinceReport.start();
}

void FilesCopy::reportProgress()
{
    reportWarnings();
    m_reply->setProgress(m_copiedFiles.size(), m_filesCount);
}

void FilesCopy::copyFile(const QString& source, const QDir& folder)
{
    const QFileInfo file(source);
    if (!file.exists() || !FileSystem::isReadable(source)) {
        warn(QT_TRANSLATE_NOOP("FileCopy", "Invalid source file: %1"), source);
        return;
    }
    const QString target = folder.filePath(file.fileName());
    if (FileSystem::isNameTaken(target)) {
        warn(QT_TRANSLATE_NOOP("FileCopy", "Target file with the same name exists: %1"), target);
        return;
    }
    const ChunkedCopy::Outcome outcome = m_copy.copy(source, target);
    if (outcome == ChunkedCopy::Outcome::Copied) {
        m_copiedFiles.append(target);
        reportProgress();
    } else if (outcome != ChunkedCopy::Outcome::Canceled) {
        warn(QT_TRANSLATE_NOOP("FileCopy", "Unable to copy file: %1"), source);
    }
}

void FilesCopy::removeCopiedFiles()
{
    while (!m_copiedFiles.isEmpty()) {
        const QString file = m_copiedFiles.takeLast();
        if (!QFile::remove(file))
            warn(QT_TRANSLATE_NOOP("FileCopy", "Unable to remove copied file: %1"), file);
        reportProgress();
    }
}

void runFilesCopy(OperationReply* reply, const QStringList& sources, const QString& folder)
{
    FilesCopy copy(reply, sources.size());
    for (const QString& source : sources) {
        if (reply->isCanceled())
            break;
        copy.copyFile(source, QDir(folder));
    }
    if (!reply->isCanceled()) {
        copy.reportWarnings();
        reply->finish();
        return;
    }
    copy.removeCopiedFiles();
    copy.reportWarnings();
    reply->setError(QCoreApplication::translate("FileCopy", "Canceled"));
}

} // namespace

OperationReply* failedReply(const QString& errorText)
{
    auto* reply = new OperationReply;
    reply->setError(errorText);
    return reply;
}

OperationReply* copyFile(
    const QString& sourceFilePath, const QString& targetFilePath, ExistingTarget existingTarget, const CopyCheck& check)
{
    if (!QFileInfo::exists(sourceFilePath))
        return failedReply(text(QT_TRANSLATE_NOOP("FileCopy", "Source file not exists: %1"), sourceFilePath));
    const bool isReplacing = existingTarget == ExistingTarget::Replace;
    if (!isReplacing && FileSystem::isNameTaken(targetFilePath))
        return failedReply(text(QT_TRANSLATE_NOOP("FileCopy", "Target file already exists: %1"), targetFilePath));
    auto* reply = new OperationReply;
    QtConcurrent::run([reply, sourceFilePath, targetFilePath, isReplacing, check]() {
        runFileCopy(reply, sourceFilePath, targetFilePath, isReplacing, check);
    });
    return reply;
}

OperationReply* copyFiles(const QStringList& sourceFilePaths, const QString& targetFolderPath)
{
    if (sourceFilePaths.isEmpty())
        return failedReply(QCoreApplication::translate("FileCopy", "Source file paths list is empty"));
    if (!FileSystem::isWritableFolder(targetFolderPath))
        return failedReply(text(QT_TRANSLATE_NOOP("FileCopy", "Target directory is not valid: %1"), targetFolderPath));
    auto* reply = new OperationReply;
    reply->setProgress(0, sourceFilePaths.size());
    QtConcurrent::run(
        [reply, sourceFilePaths, targetFolderPath]() { runFilesCopy(reply, sourceFilePaths, targetFolderPath); });
    return reply;
}
