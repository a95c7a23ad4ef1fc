// SPDX-License-Identifier: GPL-3.0-or-later
// The command that brings sound files into the catalogue.
#include "app/mainwindow.h"

#include "ui_mainwindow.h"

#include "app/commandguard.h"
#include "app/operations.h"
#include "store/database.h"
#include "store/operationreply.h"
#include "ui/operationdialog.h"
#include "ui/settings.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>

namespace {

QString scanDialogGroup()
{
    return QStringLiteral("ScanDialog");
}

} // namespace

QString MainWindow::chooseFolderToScan()
{
    const CommandGuard guard(m_isCommandRunning);
    if (!guard.isEntered())
        return {};
    Settings settings(scanDialogGroup());
    const QString key = QStringLiteral("lookupDirectory");
    QFileDialog chooser(this, tr("Scan Media Files"), settings.value(key, QDir::homePath()).toString());
    chooser.setFileMode(QFileDialog::Directory);
    chooser.setOption(QFileDialog::ShowDirsOnly);
    chooser.setOption(QFileDialog::ReadOnly);
    if (chooser.exec() != QDialog::Accepted || chooser.selectedFiles().isEmpty())
        return {};
    QString folder = chooser.selectedFiles().first();
    settings.setValue(key, QFileInfo(folder).dir().path());
    return folder;
}

void MainWindow::on_scanFilesAction_triggered()
{
    const QString folder = chooseFolderToScan();
    if (!folder.isEmpty())
        scan({ folder });
}

void MainWindow::scan(const QStringList& paths)
{
    // A drop reaches the table also while the window waits for the store to close.
    if (m_isEnding)
        return;
    const CommandGuard guard(m_isCommandRunning);
    // Of a drop of web links, say, nothing is left.
    const auto rules = guard.isEntered() && !paths.isEmpty() ? libraryEvaluationRules() : std::nullopt;
    if (!rules)
        return;
    finishRatings();
    const ReplyPointer reply(database()->scan(m_ui->metaDataView->tableId(), paths, *rules));
    Settings settings(scanDialogGroup());
    const QString key = QStringLiteral("showLastScannedOnly");
    OperationDialog dialog(this);
    dialog.setWindowTitle(tr("Scanning Media Files"));
    dialog.setWaitText(tr("Listing files..."));
    dialog.setProgressFormat(tr("Files scanned: %v of %m"));
    dialog.setCloseOnSuccess(false);
    dialog.setOptionText(tr("Show only last scanned files after completion"));
    dialog.setOptionChecked(settings.value(key, true).toBool());
    const bool isAccepted = dialog.exec(reply.get()) == QDialog::Accepted;
    if (isAccepted)
        settings.setValue(key, dialog.isOptionChecked());
    showScanOutcome(isAccepted && dialog.isOptionChecked());
}

void MainWindow::showScanOutcome(bool showLastScannedOnly)
{
    if (showLastScannedOnly && !m_ui->viewLastScannedButton->isChecked())
        m_ui->viewLastScannedButton->click();
    else
        m_ui->metaDataView->requery();
}
