// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filecopy.h"

#include "store/operationreply.h"
#include "tests/support/testsupport.h"
#include "ui/operationdialog.h"

#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QTemporaryDir>
#include <QtTest>

namespace {

constexpr qint64 gibibyte = Q_INT64_C(1) << 30;

} // namespace

class FileCopyLargeTest : public QObject
{
    Q_OBJECT

private slots:
    void fileOfFiveGibibytesIsShownAndCopiedWhole();
};

void FileCopyLargeTest::fileOfFiveGibibytesIsShownAndCopiedWhole()
{
    const QTemporaryDir folder;
    const QString source = folder.filePath(QStringLiteral("source.dat"));
    const QString target = folder.filePath(QStringLiteral("target.dat"));
    TestSupport::writeFile(source, "begin");
    // Nothing but the beginning takes room on the disk.
    QVERIFY(QFile::resize(source, 5 * gibibyte));
    const std::unique_ptr<OperationReply> reply(copyFile(source, target));
    OperationDialog dialog;
    dialog.setProgressFormat(QStringLiteral("Bytes copied: %sv of %sm"));
    const auto* status = dialog.findChild<QLabel*>(QStringLiteral("statusLabel"));
    QStringList lines;
    int last = -1;
    bool isRising = true;
    // Before the dialog's own receiver: what it shows of the progress before this.
    connect(reply.get(), &OperationReply::progress, &dialog, [&](int value, int) {
        lines.append(status->text());
        isRising = isRising && value > last;
        last = value;
    });

    QCOMPARE(dialog.exec(reply.get()), 1);
    lines.append(status->text());

    QCOMPARE(QFileInfo(target).size(), 5 * gibibyte);
    QCOMPARE(lines.last(), QStringLiteral("Bytes copied: 5.00 GB of 5.00 GB"));
    QVERIFY(isRising);
    for (const char* position : { "10.00 MB", "1020.00 MB", "1.25 GB", "2.50 GB", "3.75 GB" })
        QVERIFY(lines.contains(QStringLiteral("Bytes copied: %1 of 5.00 GB").arg(QLatin1String(position))));
    QCOMPARE(lines.filter(QStringLiteral("-")), QStringList());
}

QTEST_MAIN(FileCopyLargeTest)
#include "tst_filecopylarge.moc"
