// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/scan/corpus.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

namespace {

constexpr int generationTimeout = 100000; // milliseconds

QString manifestOf(const QString& folder)
{
    return folder + QStringLiteral(".manifest.jsonl");
}

} // namespace

void Corpus::generate(const QString& folder, int files, double brokenShare, const QStringList& options)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral("/usr/bin/python3"),
        QStringList{ QStringLiteral(VELLUMCAST_CORPUS_SCRIPT), QStringLiteral("--out"), folder,
            QStringLiteral("--files"), QString::number(files), QStringLiteral("--corrupt"),
            QString::number(brokenShare) }
            + options);
    if (!process.waitForFinished(generationTimeout) || process.exitCode() != 0)
        qFatal("Cannot generate sounds: %s", qPrintable(process.errorString()));
}

QList<QVariantMap> Corpus::entries(const QString& folder)
{
    QFile file(manifestOf(folder));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("Cannot read %s", qPrintable(file.fileName()));
    QList<QVariantMap> entries;
    while (!file.atEnd()) {
        QVariantMap entry = QJsonDocument::fromJson(file.readLine()).object().toVariantMap();
        entry.insert(
            QStringLiteral("path"), folder + QLatin1Char('/') + entry.value(QStringLiteral("path")).toString());
        entries.append(entry);
    }
    return entries;
}
