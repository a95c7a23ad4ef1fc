// SPDX-License-Identifier: GPL-3.0-or-later
// The commands on a whole table or on the whole database, and the smaller dialogs.
#include "app/mainwindow.h"

#include "ui_mainwindow.h"

#include "app/commandguard.h"
#include "app/operations.h"
#include "browse/metadatamodel.h"
#include "store/database.h"
#include "ui/aboutdialog.h"
#include "ui/libraryevaluationrulesdialog.h"
#include "ui/searchandreplacedialog.h"
#include "ui/settings.h"
#include "ui/tabledisplaynamesdialog.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QSaveFile>

namespace {

const char rulesTemplatePath[] = ":/Resources/LibraryEvaluationRules.txt";

QString fieldsKey()
{
    return QStringLiteral("searchAndReplaceFields");
}

QString caseSensitivityKey()
{
    return QStringLiteral("searchAndReplaceCaseSensitivity");
}

bool writeFile(const QString& path, const QByteArray& contents)
{
    // The old rules stay until the new ones are complete.
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size() && file.commit();
}

// The sentence for as many records as the operation has changed; that for several takes their number.
QString countOutcome(const OperationReply& reply, const QString& none, const QString& one, const QString& several)
{
    const int count = reply.result(QStringLiteral("replacementsCount")).toInt();
    if (count < 1)
        return none;
    return count == 1 ? one : several.arg(count);
}

} // namespace

std::optional<QString> MainWindow::libraryEvaluationRules()
{
    QFile file(QFile::exists(m_rulesFilePath) ? m_rulesFilePath : QLatin1String(rulesTemplatePath));
    if (!file.open(QIODevice::ReadOnly)) {
        qCritical("Unable to read library evaluation rules: %s", qUtf8Printable(file.errorString()));
        // Without rules every library would be taken for unknown, and cleared.
        showFailure(this, tr("Library Evaluation Rules"),
            tr("Unable to read the library evaluation rules: %1").arg(file.errorString()));
        return std::nullopt;
    }
    QString rules = QString::fromUtf8(file.readAll());
    if (rules.startsWith(QChar(QChar::ByteOrderMark)))
        rules.remove(0, 1);
    return rules;
}

void MainWindow::on_deleteAllAction_triggered()
{
    const CommandGuard guard(m_isCommandRunning);
    if (!guard.isEntered())
        return;
    const int tableId = m_ui->metaDataView->tableId();
    if (!askToProceed(this, tr("Delete All MetaData Records"),
            tr("Are you sure you want to delete all Meta Data records from the current database table?"),
            tr("You cannot undo this action")))
        return;
    finishRatings();
    OperationReply* reply = database()->clearTable(tableId);
    ++m_pendingWrites;
    connect(reply, &OperationReply::finished, reply, &QObject::deleteLater);
    connect(reply, &OperationReply::finished, this, [this, reply] {
        --m_pendingWrites;
        requery();
        if (reply->hasError())
            tellNothingWasDeleted(reply->errorString());
    });
}

void MainWindow::tellNothingWasDeleted(const QString& errorText)
{
    qCritical().noquote() << errorText;
    // The window that is being closed waits for the store, not for an answer.
    if (m_isEnding)
        return;
    const CommandGuard guard(m_isCommandRunning);
    showFailure(this, tr("Delete All MetaData Records"), errorText);
}

void MainWindow::on_evaluateLibrariesAction_triggered()
{
    const CommandGuard guard(m_isCommandRunning);
    const auto rules = guard.isEntered() ? libraryEvaluationRules() : std::nullopt;
    if (!rules)
        return;
    finishRatings();
    const ReplyPointer reply(database()->evaluateLibraries(m_ui->metaDataView->tableId(), *rules));
    const OperationTexts texts{ tr("Evaluating Meta Data Libraries"), tr("Preparing..."),
        tr("Records handled: %v of %m"), {} };
    if (runInDialog(this, reply.get(), texts)) {
        showOutcome(this, tr("Libraries Evaluation"),
            countOutcome(*reply, tr("Nothing new evaluated"), tr("One new library (re)evaluated"),
                tr("%1 libraries (re)evaluated")));
    }
    m_ui->metaDataView->requery(true);
}

void MainWindow::on_libraryEvaluationRulesAction_triggered()
{
    if (editLibraryEvaluationRules())
        m_ui->evaluateLibrariesAction->trigger();
}

// True when the rules were saved and shall be applied at once.
bool MainWindow::editLibraryEvaluationRules()
{
    const CommandGuard guard(m_isCommandRunning);
    const auto rules = guard.isEntered() ? libraryEvaluationRules() : std::nullopt;
    if (!rules)
        return false;
    LibraryEvaluationRulesDialog dialog(this);
    dialog.setRules(*rules);
    while (dialog.exec() == QDialog::Accepted) {
        if (writeFile(m_rulesFilePath, dialog.rules().toUtf8()))
            return dialog.isEvaluationRequested();
        qCritical("Unable to write library evaluation rules: %s", qUtf8Printable(m_rulesFilePath));
        // The editor opens again with the edits: nothing typed is lost.
        showFailure(this, dialog.windowTitle(),
            tr("Unable to save the rules to \"%1\". The old rules are kept.")
                .arg(QDir::toNativeSeparators(m_rulesFilePath)));
    }
    return false;
}

void MainWindow::on_searchAndReplaceAction_triggered()
{
    const CommandGuard guard(m_isCommandRunning);
    if (!guard.isEntered())
        return;
    SearchAndReplaceDialog dialog(this);
    if (m_settings->contains(fieldsKey()))
        dialog.setFields(m_settings->value(fieldsKey()).toStringList());
    dialog.setCaseSensitivity(m_settings->value(caseSensitivityKey(), 0).toInt() == Qt::CaseSensitive
            ? Qt::CaseSensitive
            : Qt::CaseInsensitive);
    // What the user typed last is what the table shows when it is asked to change.
    lookup();
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_settings->setValue(fieldsKey(), dialog.fields());
    m_settings->setValue(caseSensitivityKey(), int(dialog.caseSensitivity()));
    finishRatings();
    const ReplyPointer reply(database()->replace(m_ui->metaDataView->tableId(), dialog.fields(), dialog.searchText(),
        dialog.replaceText(), dialog.caseSensitivity(), m_ui->metaDataView->metaDataModel()->queryParameters()));
    const OperationTexts texts{ tr("Searching and Replacing Meta Data"), tr("Preparing..."),
        tr("Records handled: %v of %m"), {} };
    if (runInDialog(this, reply.get(), texts)) {
        showOutcome(this, tr("Search and Replace"),
            countOutcome(
                *reply, tr("No occurences found"), tr("One occurence replaced"), tr("%1 occurences replaced")));
    }
    m_ui->metaDataView->requery(true);
}

void MainWindow::on_rebuildDatabaseAction_triggered()
{
    const CommandGuard guard(m_isCommandRunning);
    if (!guard.isEntered()
        || !askToProceed(this, tr("Rebuild Database"), tr("Are you sure you want to rebuild the entire database?"),
            tr("This operation can take a lot of time and cannot be canceled")))
        return;
    const ReplyPointer reply(database()->rebuild());
    OperationTexts texts{ tr("Rebuilding Database"), tr("Please wait, this may take a few minutes..."), {},
        tr("Database rebuild complete") };
    texts.isCancelable = false;
    runInDialog(this, reply.get(), texts);
}

void MainWindow::on_tableDisplayNamesAction_triggered()
{
    const CommandGuard guard(m_isCommandRunning);
    if (guard.isEntered())
        TableDisplayNamesDialog(database(), this).exec();
}

void MainWindow::on_workFolderAction_triggered()
{
    chooseWorkFolder();
}

void MainWindow::chooseWorkFolder()
{
    const CommandGuard guard(m_isCommandRunning);
    if (!guard.isEntered())
        return;
    Settings settings(QStringLiteral("WorkFolderDialog"));
    const QString key = QStringLiteral("lookupDirectory");
    const QString start
        = m_workFolderPath.isEmpty() ? settings.value(key, QDir::homePath()).toString() : m_workFolderPath;
    QFileDialog chooser(this, tr("Choose Work Folder"), start);
    chooser.setFileMode(QFileDialog::Directory);
    chooser.setOption(QFileDialog::ShowDirsOnly);
    if (chooser.exec() != QDialog::Accepted || chooser.selectedFiles().isEmpty())
        return;
    m_workFolderPath = chooser.selectedFiles().first();
    settings.setValue(key, QFileInfo(m_workFolderPath).dir().path());
    m_stateSaveTimer.start();
}

void MainWindow::showAboutDialog()
{
    const CommandGuard guard(m_isCommandRunning);
    if (guard.isEntered())
        AboutDialog(this).exec();
}
