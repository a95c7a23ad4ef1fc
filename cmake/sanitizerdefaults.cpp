// SPDX-License-Identifier: GPL-3.0-or-later
// Compiled into the executables of sanitizer builds only.

extern "C" {

// Leak reports of libraries that we do not own; each keeps a few hundred bytes until the process ends.
const char* __lsan_default_suppressions() // NOLINT(bugprone-reserved-identifier)
{
    return "leak:libqoffscreen.so\n"
           "leak:libQt5XcbQpa.so\n"
           "leak:libqxcb.so\n"
           "leak:libfontconfig.so\n"
           "leak:libdbus-1.so\n"
           "leak:libglib-2.0.so\n"
           "leak:libatspi.so\n";
}

// A program whose tests read what it says must not say which suppressions were used.
const char* __lsan_default_options() // NOLINT(bugprone-reserved-identifier)
{
    return "print_suppressions=0";
}

// Plugins stay mapped, so that what they still hold at the end is reported under their names.
int dlclose(void* /*handle*/)
{
    return 0;
}
}
