// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

/// Makes file permissions count for the calling thread while it lives, also when the tests run as root.
/// Owner: the stack of a test. Thread: its creator's.
class PermissionsCount final
{
public:
    PermissionsCount();
    ~PermissionsCount();
    PermissionsCount(const PermissionsCount&) = delete;
    PermissionsCount& operator=(const PermissionsCount&) = delete;

private:
    struct Capabilities;
    std::unique_ptr<Capabilities> m_before;
};
