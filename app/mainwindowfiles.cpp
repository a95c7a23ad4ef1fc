// SPDX-License-Identifier: GPL-3.0-or-later
// The commands that write or read files: export, print, copy to the work folder, backup, restore.
#include "app/mainwindow.h"

#include "ui_mainwindow.h"

#include "app/commandguard.h"
#include "app/databasebackup.h"
#include "app/databaserestore.h"
#include "app/filecopy.h"
#include "app/filemanager.h"
#include "app/metadataexporter.h"
#include "app/metadataexporterdialog.h"
#include "app/metadataprinter.h"
#include "app/metadataprinterdialog.h"
#include "app/operations.h"
#include "browse/metadatamodel.h"
#include "store/database.h"
#include "ui/operationdialog.h"
#include "ui/settings.h"

#include <QDebug>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>

namespace {

QString lookupDirectoryKey()
{
    return QStringLiteral("lookupDirectory");
}

OperationTexts copyTexts()
{
    return { MainWindow::tr("Copying Database File"), {}, MainWindow::tr("Bytes copied: %sv of %sm"), {} };
}

// Asks for a database file, to be written or read; its folder is remembered. Empty when none was chosen.
QString chooseDatabaseFile(QWidget* parent, const QString& title, QFileDialog::AcceptMode mode)
{
    Settings settings(QStringLiteral("BackupDatabaseDialog"));
    const QString folder = settings.value(lookupDirectoryKey(), QDir::homePath()).toString();
    QFileDialog chooser(parent, title, folder, MainWindow::tr("Vellumcast Database Files (*.dat)"));
    chooser.setAcceptMode(mode);
    chooser.setFileMode(mode == QFileDialog::AcceptSave ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    chooser.setDefaultSuffix(QStringLiteral("dat"));
    if (chooser.exec() != QDialog::Accepted || chooser.selectedFiles().isEmpty())
        return {};
    QString filePath = chooser.selectedFiles().first();
    settings.setValue(lookupDirectoryKey(), QFileInfo(filePath).dir().path());
    return filePath;
}

} // namespace

// What was typed last is applied first, so that the records are those of the view that the user means.
bool MainWindow::prepareView()
{
    lookup();
    return waitUntilSettled();
}

void MainWindow::on_exportAction_triggered()
{
    const CommandGuard guard(m_isCommandRunning);
    if (!guard.isEntered() || !prepareView())
        return;
    const QString fieldsKey = QStringLiteral("fieldsToExport");
    MetaDataExporterDialog dialog(this);
    const QStringList storedFields = m_settings->value(fieldsKey).toStringList();
    if (!storedFields.isEmpty())
        dialog.setCheckedFields(storedFields);
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_settings->setValue(fieldsKey, dialog.checkedFields());
    MetaDataExporter exporter;
    exporter.setDatabase(database(), m_ui->metaDataView->tableId());
    exporter.setQueryParameters(m_ui->metaDataView->metaDataModel()->queryParameters());
    exporter.setFilePath(dialog.filePath());
    exporter.setExportFields(dialog.checkedFields());
    const ReplyPointer reply(exporter.start());
    if (runInDialog(this, reply.get(), { tr("Exporting Meta Data Records"), {}, tr("Records exported: %v of %m"), {} }))
        showOutcome(this, tr("Export Meta Data"), tr("Records successfully exported"));
}

void MainWindow::on_printReportAction_triggered()
{
    const CommandGuard guard(m_isCommandRunning);
    if (!guard.isEntered() || !prepareView())
        return;
    const QString titleKey = QStringLiteral("lastReportTitle");
    MetaDataPrinterDialog dialog(this);
    dialog.setRecordsCount(m_ui->metaDataView->metaDataModel()->rowsCount());
    dialog.setReportTitle(m_settings->value(titleKey).toString());
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_settings->setValue(titleKey, dialog.reportTitle());
    QPrinter printer(QPrinter::HighResolution);
    MetaDataPrinter::setUpPage(&printer);
    if (QPrintDialog(&printer, this).exec() != QDialog::Accepted)
        return;
    MetaDataPrinter report;
    report.setDatabase(database(), m_ui->metaDataView->tableId());
    report.setQueryParameters(m_ui->metaDataView->metaDataModel()->queryParameters());
    report.setTitle(dialog.reportTitle());
    const ReplyPointer reply(report.start(&printer));
    runInDialog(this, reply.get(), { tr("Printing Meta Data Report"), {}, tr("Records printed: %v of %m"), {} });
}

void MainWindow::copySelectedFilesToWorkFolder()
{
    if (m_isCommandRunning || m_ui->metaDataView->selectedRowsCount() == 0)
        return;
    const QSet<qint64> seenIds = shownSelectedIds();
    if (m_workFolderPath.isEmpty())
        chooseWorkFolder();
    const CommandGuard guard(m_isCommandRunning);
    if (!guard.isEntered() || m_workFolderPath.isEmpty() || gatherSelectedIds(seenIds).isEmpty())
        return;
    QStringList filePaths;
    const QVariantList values = gatherSelected(QStringLiteral("filePath"));
    for (const QVariant& value : values)
        filePaths.append(value.toString());
    if (filePaths.isEmpty())
        return;
    copyToWorkFolder(filePaths);
}

void MainWindow::copyToWorkFolder(const QStringList& filePaths)
{
    Settings settings(QStringLiteral("FilesCopyDialog"));
    const QString key = QStringLiteral("openFolderInSystemFileManager");
    const ReplyPointer reply(copyFiles(filePaths, m_workFolderPath));
    OperationDialog dialog(this);
    dialog.setWindowTitle(tr("Copying Media Files to Work Folder"));
    dialog.setProgressFormat(tr("Files copied: %v of %m"));
    dialog.setOptionText(tr("Open work folder when finished"));
    dialog.setOptionChecked(settings.value(key, false).toBool());
    if (dialog.exec(reply.get()) != QDialog::Accepted)
        return;
    settings.setValue(key, dialog.isOptionChecked());
    if (dialog.isOptionChecked())
        revealInFileManager(m_workFolderPath);
}

void MainWindow::on_backupDatabaseAction_triggered()
{
    const CommandGuard guard(m_isCommandRunning);
    if (!guard.isEntered())
        return;
    const QString filePath = chooseDatabaseFile(this, tr("Backup Database File"), QFileDialog::AcceptSave);
    if (filePath.isEmpty() || !waitUntilSettled())
        return;
    DatabaseBackup backup(*database());
    {
        const ReplyPointer reply(backup.start(filePath));
        if (runInDialog(this, reply.get(), copyTexts()))
            tellBackupIsMade(backup.damage());
    }
    if (!backup.end())
        tellDatabaseIsClosed(tr("Database Backup"));
    m_ui->metaDataView->requery(true);
}

void MainWindow::tellBackupIsMade(const QString& damage)
{
    const QString title = tr("Database Backup");
    if (damage.isEmpty())
        showOutcome(this, title, tr("Database backup created successfully"));
    else
        showFailure(
            this, title, tr("The database is damaged, and so is the copy that was made of it.\n%1").arg(damage));
}

void MainWindow::on_restoreDatabaseAction_triggered()
{
    const CommandGuard guard(m_isCommandRunning);
    if (!guard.isEntered())
        return;
    const QString filePath = chooseDatabaseFile(this, tr("Restore Database File"), QFileDialog::AcceptOpen);
    if (filePath.isEmpty() || !waitUntilSettled())
        return;
    finishRatings();
    DatabaseRestore restore(*database());
    bool isCopied = false;
    {
        const ReplyPointer reply(restore.start(filePath));
        isCopied = runInDialog(this, reply.get(), copyTexts());
    }
    const DatabaseRestore::Outcome outcome = restore.end(isCopied);
    finishRestore(outcome, restore.errorText());
}

void MainWindow::finishRestore(DatabaseRestore::Outcome outcome, const QString& errorText)
{
    const QString title = tr("Database Restore");
    if (outcome == DatabaseRestore::Outcome::Restored) {
        m_ui->metaDataView->setTableId(1);
        m_stateSaveTimer.start();
        showOutcome(this, title, tr("Database restored successfully"));
        return;
    }
    if (outcome == DatabaseRestore::Outcome::Failed) {
        QMessageBox box(QMessageBox::Critical, title, tr("Database restore failed"), QMessageBox::Ok, this);
        box.setTextFormat(Qt::PlainText);
        box.setInformativeText(errorText);
        box.exec();
    }
    if (!database()->isOpened())
        tellDatabaseIsClosed(title);
    m_ui->metaDataView->requery(true);
}

void MainWindow::tellDatabaseIsClosed(const QString& title)
{
    qCritical().noquote() << database()->lastError();
    showFailure(this, title,
        tr("The database could not be opened again: %1\n\nPlease close Vellumcast and start it anew. Your records are "
           "in \"%2\".")
            .arg(database()->lastError(), QDir::toNativeSeparators(database()->databaseFilePath())));
}
