// SPDX-License-Identifier: GPL-3.0-or-later
// A program that does nothing but one backup or restore, for tests that kill it.
//
// Usage: databasecopyprogram backup|restore DATABASE FILE STEP [plain]
// It is killed in place of this step (see tests/app/stepkiller.h); 0 lets it go to its end. With "plain" no file can
// have a second name. Writes "steps <number>" to its standard output and ends with 0 when the copy has taken its place.

#include "app/databasebackup.h"
#include "app/databaserestore.h"
#include "app/databasesession.h"
#include "store/operationreply.h"
#include "tests/app/stepkiller.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

namespace {

bool isSuccess(OperationReply* reply)
{
    reply->waitForFinished();
    const bool hasError = reply->hasError();
    if (hasError)
        std::fprintf(stderr, "%s\n", qPrintable(reply->errorString()));
    delete reply;
    return !hasError;
}

bool runBackup(Database& database, const QString& file)
{
    DatabaseBackup backup(database);
    const bool isCopied = isSuccess(backup.start(file));
    return backup.end() && isCopied;
}

bool runRestore(Database& database, const QString& file)
{
    DatabaseRestore restore(database);
    const bool isCopied = isSuccess(restore.start(file));
    const DatabaseRestore::Outcome outcome = restore.end(isCopied);
    if (outcome == DatabaseRestore::Outcome::Failed)
        std::fprintf(stderr, "%s\n", qPrintable(restore.errorText()));
    return outcome == DatabaseRestore::Outcome::Restored;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 5)
        return 2;
    if (arguments.value(5) == QLatin1String("plain"))
        StepKiller::forbidSecondNames();
    DatabaseSession session(arguments.at(2));
    if (!session.database()->open())
        return 3;
    StepKiller::arm(arguments.at(4).toInt());
    const bool isBackup = arguments.at(1) == QLatin1String("backup");
    const bool isDone
        = isBackup ? runBackup(*session.database(), arguments.at(3)) : runRestore(*session.database(), arguments.at(3));
    std::printf("steps %d\n", StepKiller::steps());
    std::fflush(stdout);
    session.end();
    return isDone ? 0 : 1;
}
