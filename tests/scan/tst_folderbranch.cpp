// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/folderbranch.h"

#include <QtTest>

class FolderBranchTest : public QObject
{
    Q_OBJECT

private slots:
    void foldersAreCalledCanonically_data();
    void foldersAreCalledCanonically();
    void onlyFoldersOfTheWayAreOnIt_data();
    void onlyFoldersOfTheWayAreOnIt();
    void nothingIsOnTheWayToAGivenPath();
    void wayGoesThroughSeveralLinks();
};

void FolderBranchTest::foldersAreCalledCanonically_data()
{
    QTest::addColumn<QString>("root");
    QTest::addColumn<QString>("canonicalRoot");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("canonical");
    QTest::newRow("the root itself") << "/link"
                                     << "/target"
                                     << "/link"
                                     << "/target";
    QTest::newRow("a folder below") << "/link"
                                    << "/target"
                                    << "/link/a/b"
                                    << "/target/a/b";
    QTest::newRow("a link to the root of all") << "/home/link"
                                               << "/"
                                               << "/home/link/a"
                                               << "/a";
    QTest::newRow("such a link itself") << "/home/link"
                                        << "/"
                                        << "/home/link"
                                        << "/";
    QTest::newRow("the root of all") << "/"
                                     << "/"
                                     << "/"
                                     << "/";
    QTest::newRow("a folder below the root of all") << "/"
                                                    << "/"
                                                    << "/home/user"
                                                    << "/home/user";
}

void FolderBranchTest::foldersAreCalledCanonically()
{
    QFETCH(QString, root);
    QFETCH(QString, canonicalRoot);
    QFETCH(QString, path);
    const FolderBranch branch(root.toStdString(), canonicalRoot.toStdString());

    QTEST(QString::fromStdString(branch.canonical(path.toStdString())), "canonical");
}

void FolderBranchTest::onlyFoldersOfTheWayAreOnIt_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("isOnTheWay");
    // The link is found in /home/user/sounds.
    QTest::newRow("the folder of the link") << "/home"
                                            << "/home/user/sounds" << true;
    QTest::newRow("a folder above it") << "/home"
                                       << "/home/user" << true;
    QTest::newRow("the given folder") << "/home"
                                      << "/home" << true;
    QTest::newRow("a folder above the given one") << "/home"
                                                  << "/" << false;
    QTest::newRow("a folder beside") << "/home"
                                     << "/home/user/other" << false;
    QTest::newRow("a folder whose name goes on") << "/home"
                                                 << "/home/user/sounds2" << false;
    QTest::newRow("a folder below") << "/home"
                                    << "/home/user/sounds/deep" << false;
    QTest::newRow("all given, the folder of the link") << "/"
                                                       << "/home/user/sounds" << true;
    QTest::newRow("all given, a folder above it") << "/"
                                                  << "/home" << true;
    QTest::newRow("all given, all linked") << "/"
                                           << "/" << true;
    QTest::newRow("all given, a folder beside") << "/"
                                                << "/media" << false;
}

void FolderBranchTest::onlyFoldersOfTheWayAreOnIt()
{
    QFETCH(QString, given);
    QFETCH(QString, target);
    const FolderBranch parent(given.toStdString(), given.toStdString());
    const FolderBranch branch(parent, "/home/user/sounds", "/home/user/sounds/link", target.toStdString());

    QTEST(branch.isOnTheWay("/home/user/sounds/link"), "isOnTheWay");
}

void FolderBranchTest::nothingIsOnTheWayToAGivenPath()
{
    QVERIFY(!FolderBranch("/home", "/home").isOnTheWay("/home"));
}

void FolderBranchTest::wayGoesThroughSeveralLinks()
{
    const FolderBranch given("/a", "/a");
    const FolderBranch first(given, "/a/b", "/a/b/link", "/c");
    const FolderBranch second(first, "/a/b/link/d", "/a/b/link/d/link", "/e");

    QVERIFY(!second.isOnTheWay("/a/b/link/d/link"));
    for (const char* target : { "/a", "/a/b", "/c", "/c/d" })
        QVERIFY(
            FolderBranch(second, "/a/b/link/d/link", "/a/b/link/d/link/l", target).isOnTheWay("/a/b/link/d/link/l"));
    QVERIFY(!FolderBranch(second, "/a/b/link/d/link", "/a/b/link/d/link/l", "/c/f").isOnTheWay("/a/b/link/d/link/l"));
}

QTEST_GUILESS_MAIN(FolderBranchTest)

#include "tst_folderbranch.moc"
