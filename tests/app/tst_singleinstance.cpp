// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/singleinstance.h"

#include "tests/support/messagerecorder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtTest>

#include <memory>
#include <sys/socket.h>
#include <sys/un.h>
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
    void manyRefusedClaimsDoNotExhaustTheHolder();
    void differentNamesDoNotMeet();
};

void SingleInstanceTest::cleanup()
{
    QFile::remove(socketPath());
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
