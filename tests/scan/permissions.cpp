// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/scan/permissions.h"

#include <QtGlobal>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

struct PermissionsCount::Capabilities
{
    __user_cap_header_struct header = { _LINUX_CAPABILITY_VERSION_3, 0 };
    __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3] = {};
};

PermissionsCount::PermissionsCount()
    : m_before(std::make_unique<Capabilities>())
{
    if (::syscall(SYS_capget, &m_before->header, m_before->sets) != 0)
        qFatal("Cannot read the capabilities of the thread");
    Capabilities without = *m_before;
    // They stay permitted, so that they can be taken back.
    without.sets[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
    if (::syscall(SYS_capset, &without.header, without.sets) != 0)
        qFatal("Cannot drop capabilities of the thread");
}

PermissionsCount::~PermissionsCount()
{
    if (::syscall(SYS_capset, &m_before->header, m_before->sets) != 0)
        qFatal("Cannot restore the capabilities of the thread");
}
