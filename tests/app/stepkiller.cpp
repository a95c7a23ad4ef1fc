// SPDX-License-Identifier: GPL-3.0-or-later
// The functions below stand in for those of the C library: what the program defines goes first, also for the libraries.
#include "tests/app/stepkiller.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<bool> isArmed{ false };
std::atomic<int> stepsTaken{ 0 };
std::atomic<int> lastStep{ 0 };
std::atomic<bool> hasSecondNames{ true };

void takeStep()
{
    if (isArmed && ++stepsTaken == lastStep)
        ::kill(::getpid(), SIGKILL);
}

// Pipes and the like are written at moments of their own.
void takeStepOn(int handle)
{
    struct stat status = {};
    if (isArmed && ::fstat(handle, &status) == 0 && S_ISREG(status.st_mode))
        takeStep();
}

int openFile(const char* path, int flags, mode_t mode)
{
    if ((flags & (O_CREAT | O_TRUNC)) != 0)
        takeStep();
    return int(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

} // namespace

void StepKiller::arm(int step)
{
    lastStep = step;
    isArmed = true;
}

int StepKiller::steps()
{
    return stepsTaken;
}

void StepKiller::forbidSecondNames()
{
    hasSecondNames = false;
}

extern "C" {

int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const auto mode = mode_t(va_arg(arguments, int));
    va_end(arguments);
    return openFile(path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const auto mode = mode_t(va_arg(arguments, int));
    va_end(arguments);
    return openFile(path, flags, mode);
}

ssize_t write(int handle, const void* bytes, size_t count)
{
    takeStepOn(handle);
    return ::syscall(SYS_write, handle, bytes, count);
}

ssize_t pwrite64(int handle, const void* bytes, size_t count, off64_t offset)
{
    takeStepOn(handle);
    return ::syscall(SYS_pwrite64, handle, bytes, count, offset);
}

int ftruncate64(int handle, off64_t size) noexcept
{
    takeStepOn(handle);
    return int(::syscall(SYS_ftruncate, handle, size));
}

int fsync(int handle)
{
    takeStep();
    return int(::syscall(SYS_fsync, handle));
}

int fdatasync(int handle)
{
    takeStep();
    return int(::syscall(SYS_fdatasync, handle));
}

int rename(const char* path, const char* newPath) noexcept
{
    takeStep();
    return int(::syscall(SYS_rename, path, newPath));
}

int renameat2(int folder, const char* path, int newFolder, const char* newPath, unsigned int flags) noexcept
{
    takeStep();
    return int(::syscall(SYS_renameat2, folder, path, newFolder, newPath, flags));
}

int link(const char* path, const char* newPath) noexcept
{
    takeStep();
    if (!hasSecondNames) {
        errno = EPERM;
        return -1;
    }
    return int(::syscall(SYS_link, path, newPath));
}

int unlink(const char* path) noexcept
{
    takeStep();
    return int(::syscall(SYS_unlink, path));
}
}
