// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/commandguard.h"

#include <QtTest>

class CommandGuardTest : public QObject
{
    Q_OBJECT

private slots:
    void firstCommandEntersAndIsMarkedAsRunning();
    void commandInsideAnotherIsRefused();
    void refusedCommandDoesNotEndTheRunningOne();
    void nextCommandEntersOnceTheLastHasEnded();
    void commandThatThrowsIsOver();
};

void CommandGuardTest::firstCommandEntersAndIsMarkedAsRunning()
{
    bool isCommandRunning = false;

    const CommandGuard guard(isCommandRunning);

    QVERIFY(guard.isEntered());
    QVERIFY(isCommandRunning);
}

void CommandGuardTest::commandInsideAnotherIsRefused()
{
    bool isCommandRunning = false;
    const CommandGuard outer(isCommandRunning);

    const CommandGuard inner(isCommandRunning);
    const CommandGuard innermost(isCommandRunning);

    QVERIFY(!inner.isEntered());
    QVERIFY(!innermost.isEntered());
    QVERIFY(outer.isEntered());
}

void CommandGuardTest::refusedCommandDoesNotEndTheRunningOne()
{
    bool isCommandRunning = false;
    const CommandGuard outer(isCommandRunning);
    {
        const CommandGuard refused(isCommandRunning);
    }

    const CommandGuard late(isCommandRunning);

    QVERIFY(isCommandRunning);
    QVERIFY(!late.isEntered());
}

void CommandGuardTest::nextCommandEntersOnceTheLastHasEnded()
{
    bool isCommandRunning = false;
    {
        const CommandGuard last(isCommandRunning);
    }
    QVERIFY(!isCommandRunning);

    const CommandGuard next(isCommandRunning);

    QVERIFY(next.isEntered());
}

void CommandGuardTest::commandThatThrowsIsOver()
{
    bool isCommandRunning = false;

    try {
        const CommandGuard guard(isCommandRunning);
        throw 1;
    } catch (int) {
    }

    QVERIFY(!isCommandRunning);
}

QTEST_GUILESS_MAIN(CommandGuardTest)

#include "tst_commandguard.moc"
