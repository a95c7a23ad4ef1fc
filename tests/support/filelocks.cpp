// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/filelocks.h"

#include <QFile>

#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

bool TestSupport::isLockedForOthers(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    const pid_t child = ::fork();
    if (child == 0) {
        // Nothing here but calls that a child of many threads may make.
        flock lock = {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        const int descriptor = ::open(name.constData(), O_RDWR | O_CLOEXEC);
        const bool isLocked = ::fcntl(descriptor, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
        ::_exit(isLocked ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
}
