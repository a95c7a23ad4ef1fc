// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/smalldisk.h"

#include <csignal>

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>

namespace {

bool enterOwnMountNamespace()
{
    return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

// Before any thread is started: each belongs to the namespace of the one that started it.
const bool canMount = enterOwnMountNamespace();

quint64 setFileSizeLimit(quint64 bytes)
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_FSIZE, &limit) != 0)
        qFatal("Cannot read the limit of file sizes");
    const quint64 earlier = limit.rlim_cur;
    limit.rlim_cur = bytes;
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
        qFatal("Cannot limit the size of files");
    return earlier;
}

} // namespace

TestSupport::SmallDisk::SmallDisk(qint64 bytes)
{
    const QByteArray folder = m_folder.path().toLocal8Bit();
    const QByteArray options = "size=" + QByteArray::number(bytes);
    m_isMounted = canMount && ::mount("tmpfs", folder.constData(), "tmpfs", 0, options.constData()) == 0;
    if (m_isMounted)
        return;
    // Without the signal a write beyond the limit fails like any other.
    std::signal(SIGXFSZ, SIG_IGN);
    m_earlierLimit = setFileSizeLimit(quint64(bytes));
}

TestSupport::SmallDisk::~SmallDisk()
{
    if (m_isMounted)
        ::umount2(m_folder.path().toLocal8Bit().constData(), MNT_DETACH);
    else
        setFileSizeLimit(m_earlierLimit);
}
