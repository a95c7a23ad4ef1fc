// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/singleinstance.h"

#include "tests/support/messagerecorder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QtTest>

#include <memory>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const QString name = QStringLiteral("VellumcastTest");

QString socketPath()
{
    return QDir(QDir::tempPath()).filePath(name);
}

// A socket file that nobody listens on any more, as a crash leaves it behind.
void leaveSocketBehind()
{
    const int socketNumber = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, QFile::encodeName(socketPath()).constData(), sizeof address.sun_path);
    QCOMPARE(::bind(socketNumber, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(socketNumber);
}

QString lockPath()
{
    return socketPath() + QStringLiteral(".%1.lock").arg(::getuid());
}

// As a process leaves it that dies during a claim.
void leaveLockBehind(bool isWhole)
{
    const pid_t process = ::fork();
    if (process == 0) {
        QLockFile lock(lockPath());
        ::_exit(lock.tryLock(0) ? 0 : 1);
    }
    int status = -1;
    QCOMPARE(::waitpid(process, &status, 0), process);
    QCOMPARE(status, 0);
    QFile file(lockPath());
    QVERIFY(isWhole || file.resize(0));
}

/// A process of its own that claims the name when it is told to, and holds it until this goes.
class Claimant final
{
public:
    Claimant();
    ~Claimant();
    Q_DISABLE_COPY(Claimant)

    void go() { tell('g'); }
    /// Waits for the outcome.
    bool hasClaimed();

private:
    void tell(char byte);
    [[noreturn]] void run();

    // The test's end of a connection to the process, and the other one.
    int m_ends[2] = { -1, -1 };
    pid_t m_process = -1;
};

Claimant::Claimant()
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, m_ends) != 0)
        qFatal("No connection");
    m_process = ::fork();
    if (m_process == 0)
        run();
    ::close(m_ends[1]);
}

Claimant::~Claimant()
{
    ::close(m_ends[0]);
    ::waitpid(m_process, nullptr, 0);
}

void Claimant::run()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    ::close(m_ends[0]);
    char byte = 0;
    {
        SingleInstance instance;
        if (::read(m_ends[1], &byte, 1) == 1) {
            byte = instance.claim(name) ? 'y' : 'n';
            if (::write(m_ends[1], &byte, 1) != 1)
                byte = 0;
        }
        // Until the test closes its end.
        while (::read(m_ends[1], &byte, 1) > 0) { }
    }
    ::_exit(0);
}

void Claimant::tell(char byte)
{
    if (::write(m_ends[0], &byte, 1) != 1)
        qFatal("The process does not listen");
}

bool Claimant::hasClaimed()
{
    char byte = 0;
    if (::read(m_ends[0], &byte, 1) != 1)
        qFatal("The process does not answer");
    return byte == 'y';
}

} // namespace

class SingleInstanceTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void firstClaimSucceedsSilently();
    void secondClaimIsRefused();
    void nameIsFreeAgainOnceItsHolderIsGone();
    void socketLeftBehindByACrashIsReplaced();
    void blockedNameCannotBeClaimed();
    void oneOfTwoClaimsAtTheSameMomentSucceeds();
    void lockLeftBehindByACrashDoesNotBlock_data();
    void lockLeftBehindByACrashDoesNotBlock();
    void manyRefusedClaimsDoNotExhaustTheHolder();
    void differentNamesDoNotMeet();
};

void SingleInstanceTest::cleanup()
{
    QFile::remove(socketPath());
    QFile::remove(lockPath());
}

void SingleInstanceTest::firstClaimSucceedsSilently()
{
    const TestSupport::MessageRecorder log;
    SingleInstance instance;

    QVERIFY(instance.claim(name));

    QCOMPARE(log.messages(), QStringList());
    QVERIFY(QFileInfo::exists(socketPath()));
}

void SingleInstanceTest::secondClaimIsRefused()
{
    const TestSupport::MessageRecorder log;
    SingleInstance holder;
    QVERIFY(holder.claim(name));
    SingleInstance late;

    QVERIFY(!late.claim(name));

    QCOMPARE(log.messages(QtCriticalMsg), QStringList(QStringLiteral("Application is already started")));
}

void SingleInstanceTest::nameIsFreeAgainOnceItsHolderIsGone()
{
    auto holder = std::make_unique<SingleInstance>();
    QVERIFY(holder->claim(name));
    holder.reset();
    SingleInstance next;

    QVERIFY(next.claim(name));
}

void SingleInstanceTest::socketLeftBehindByACrashIsReplaced()
{
    leaveSocketBehind();
    QVERIFY(QFileInfo::exists(socketPath()));
    SingleInstance instance;

    QVERIFY(instance.claim(name));

    SingleInstance late;
    const TestSupport::MessageRecorder log;
    QVERIFY(!late.claim(name));
}

void SingleInstanceTest::blockedNameCannotBeClaimed()
{
    QVERIFY(QDir().mkdir(socketPath()));
    const TestSupport::MessageRecorder log;
    SingleInstance instance;

    const bool isClaimed = instance.claim(name);

    QVERIFY(QDir().rmdir(socketPath()));
    QVERIFY(!isClaimed);
    QCOMPARE(log.messages(QtCriticalMsg), QStringList(QStringLiteral("Unable to start single instance server")));
}

void SingleInstanceTest::oneOfTwoClaimsAtTheSameMomentSucceeds()
{
    constexpr int rounds = 100;
    for (int round = 1; round <= rounds; ++round) {
        Claimant one;
        Claimant other;
        one.go();
        other.go();

        const int claims = int(one.hasClaimed()) + int(other.hasClaimed());

        QVERIFY2(claims == 1, qPrintable(QStringLiteral("%1 claims in round %2").arg(claims).arg(round)));
    }
    QVERIFY(!QFileInfo::exists(lockPath()));
}

void SingleInstanceTest::lockLeftBehindByACrashDoesNotBlock_data()
{
    QTest::addColumn<bool>("isWhole");
    QTest::newRow("whole") << true;
    QTest::newRow("cut off while it was written") << false;
}

void SingleInstanceTest::lockLeftBehindByACrashDoesNotBlock()
{
    QFETCH(bool, isWhole);
    leaveLockBehind(isWhole);
    QVERIFY(QFileInfo::exists(lockPath()));
    SingleInstance instance;

    QVERIFY(instance.claim(name));

    QVERIFY(!QFileInfo::exists(lockPath()));
}

void SingleInstanceTest::manyRefusedClaimsDoNotExhaustTheHolder()
{
    const TestSupport::MessageRecorder log;
    SingleInstance holder;
    QVERIFY(holder.claim(name));

    for (int attempt = 1; attempt <= 101; ++attempt) {
        SingleInstance late;
        QVERIFY2(!late.claim(name), qPrintable(QString::number(attempt)));
        // The holder takes the connection, as it does while its event loop runs.
        QCoreApplication::processEvents();
    }

    QCOMPARE(log.messages(QtCriticalMsg).count(QStringLiteral("Application is already started")), 101);
    QTRY_VERIFY(holder.findChildren<QLocalSocket*>().isEmpty());
}

void SingleInstanceTest::differentNamesDoNotMeet()
{
    SingleInstance first;
    SingleInstance second;
    QVERIFY(first.claim(name));

    QVERIFY(second.claim(name + QStringLiteral("Other")));
}

QTEST_GUILESS_MAIN(SingleInstanceTest)

#include "tst_singleinstance.moc"
