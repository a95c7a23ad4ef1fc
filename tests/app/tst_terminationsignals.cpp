// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/terminationsignals.h"

#include <QEventLoop>
#include <QTimer>
#include <QtTest>

#include <csignal>

namespace {

constexpr int patience = 30000; // milliseconds
constexpr int neverEnded = 99;

// Zero when a signal, and not the end of patience, ended the main loop.
int runMainLoop()
{
    QTimer guard;
    QObject::connect(&guard, &QTimer::timeout, [] { QCoreApplication::exit(neverEnded); });
    guard.start(patience);
    return QCoreApplication::exec();
}

// True when the loop ended by itself within the time.
bool endsWithin(int milliseconds)
{
    QEventLoop loop;
    bool isTimeOver = false;
    QTimer::singleShot(milliseconds, &loop, [&loop, &isTimeOver] {
        isTimeOver = true;
        loop.quit();
    });
    loop.exec();
    return !isTimeOver;
}

} // namespace

class TerminationSignalsTest : public QObject
{
    Q_OBJECT

private slots:
    void signalEndsTheMainLoop_data();
    void signalEndsTheMainLoop();
    void signalDuringAWaitBeforeTheMainLoopEndsBoth();
    void waitsWorkAfterTheMainLoop();
    void signalsHaveTheirDefaultEffectAfterwards();
};

void TerminationSignalsTest::signalEndsTheMainLoop_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("terminate") << SIGTERM;
    QTest::newRow("interrupt") << SIGINT;
    QTest::newRow("hang up") << SIGHUP;
}

void TerminationSignalsTest::signalEndsTheMainLoop()
{
    QFETCH(int, signal);
    const TerminationSignals handled;
    QTimer::singleShot(0, this, [signal] { std::raise(signal); });

    QCOMPARE(runMainLoop(), 0);
}

void TerminationSignalsTest::signalDuringAWaitBeforeTheMainLoopEndsBoth()
{
    const TerminationSignals handled;
    std::raise(SIGTERM);

    QVERIFY(endsWithin(patience));
    QCOMPARE(runMainLoop(), 0);
}

void TerminationSignalsTest::waitsWorkAfterTheMainLoop()
{
    constexpr int shortWait = 100; // milliseconds
    const TerminationSignals handled;
    std::raise(SIGTERM);
    QCOMPARE(runMainLoop(), 0);

    QVERIFY(!endsWithin(shortWait));
}

void TerminationSignalsTest::signalsHaveTheirDefaultEffectAfterwards()
{
    {
        const TerminationSignals handled;
    }

    struct sigaction action = {};
    QCOMPARE(sigaction(SIGTERM, nullptr, &action), 0);
    QVERIFY(action.sa_handler == SIG_DFL);
}

QTEST_GUILESS_MAIN(TerminationSignalsTest)
#include "tst_terminationsignals.moc"
