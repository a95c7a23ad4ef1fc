// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/processend.h"

#include <cstdio>
#include <cstdlib>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

void endProcess(int exitCode)
{
    std::fflush(nullptr);
#ifdef __SANITIZE_ADDRESS__
    __lsan_do_leak_check();
#endif
    std::_Exit(exitCode);
}
