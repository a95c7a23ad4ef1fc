// SPDX-License-Identifier: GPL-3.0-or-later
// A program that does nothing but one scan into table 1, for tests that must kill it or take its disk away.
//
// Usage: scanprogram DATABASE FOLDER [BYTES]
// With BYTES no file can grow beyond that size, as on a full disk. File permissions count for it, also when it runs as
// root. Writes to its standard output, line by line, "progress <value> <total>", "warning <text>" and at the end
// "error <text>" or "finished".

#include "scan/storeoperations.h"
#include "store/database.h"
#include "store/operationreply.h"
#include "tests/scan/permissions.h"

#include <QCoreApplication>
#include <QFile>
#include <QThread>

#include <csignal>
#include <cstdio>

#include <sys/resource.h>

namespace {

void report(const QString& line)
{
    std::fputs(qPrintable(line + QLatin1Char('\n')), stdout);
    std::fflush(stdout);
}

void limitFileSize(const QString& bytes)
{
    const rlim_t size = bytes.toULongLong();
    const rlimit limit = { size, size };
    // Without the signal a write beyond the limit fails like any other.
    std::signal(SIGXFSZ, SIG_IGN);
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
        qFatal("Cannot limit the size of files");
}

int scan(Database& database, const QString& folder)
{
    OperationReply* reply = database.scan(1, { folder }, {});
    QObject::connect(reply, &OperationReply::progress, reply,
        [](int value, int total) { report(QStringLiteral("progress %1 %2").arg(value).arg(total)); });
    QObject::connect(reply, &OperationReply::warnings, reply, [](const QStringList& values) {
        for (const QString& value : values)
            report(QStringLiteral("warning ") + value);
    });
    reply->waitForFinished();
    report(reply->hasError() ? QStringLiteral("error ") + reply->errorString() : QStringLiteral("finished"));
    const int exitCode = reply->hasError() ? 1 : 0;
    delete reply;
    return exitCode;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 3)
        return 2;
    if (arguments.size() > 3)
        limitFileSize(arguments.at(3));

    // The threads that are started from here on inherit it.
    const PermissionsCount permissionsCount;
    QThread thread;
    Database database(arguments.at(1));
    database.setBulkOperations(scanBulkOperations());
    database.moveToThread(&thread);
    thread.start();
    int exitCode = 3;
    if (database.open())
        exitCode = scan(database, arguments.at(2));
    else
        report(QStringLiteral("error ") + database.lastError());
    database.close();
    thread.quit();
    thread.wait();
    return exitCode;
}
