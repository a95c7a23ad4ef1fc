// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/benchcorpus.h"

#include "scan/medialister.h"

#include <QProcess>
#include <QTemporaryDir>

namespace {

constexpr int generationTimeout = 100000; // milliseconds

QString generate(const QTemporaryDir& parent)
{
    QString folder = parent.filePath(QStringLiteral("sounds"));
    const QString script = QStringLiteral(VELLUMCAST_SOURCE_FOLDER "/tests/corpus/make-corpus.py");
    QProcess process;
    process.start(QStringLiteral("/usr/bin/python3"),
        { script, QStringLiteral("--files"), QStringLiteral("2000"), QStringLiteral("--corrupt"),
            QStringLiteral("0.05"), QStringLiteral("--out"), folder });
    if (!process.waitForFinished(generationTimeout) || process.exitCode() != 0)
        qFatal("Cannot generate sounds: %s", qPrintable(process.errorString()));
    return folder;
}

} // namespace

const QString& BenchCorpus::folder()
{
    static const QTemporaryDir parent;
    static const QString folder = generate(parent);
    return folder;
}

const QStringList& BenchCorpus::files()
{
    static const QStringList files = listMediaFiles({ folder() }, mediaFileFilters());
    return files;
}
