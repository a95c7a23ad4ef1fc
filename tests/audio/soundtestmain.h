// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/processend.h"

#include <QtTest>

/// The main function of a test program that plays sound. Application is the class of its application object.
#define SOUND_TEST_MAIN(TestClass, Application)                                                                        \
    int main(int argc, char** argv)                                                                                    \
    {                                                                                                                  \
        int code = 0;                                                                                                  \
        {                                                                                                              \
            Application application(argc, argv);                                                                       \
            TestClass test;                                                                                            \
            code = QTest::qExec(&test, argc, argv);                                                                    \
        }                                                                                                              \
        endProcess(code);                                                                                              \
    }
