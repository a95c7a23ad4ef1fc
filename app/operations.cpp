// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/operations.h"

#include "ui/operationdialog.h"

#include <QDebug>
#include <QMessageBox>

namespace {

constexpr int greatestSilentCount = 500;

void showBox(QWidget* parent, QMessageBox::Icon icon, const QString& title, const QString& text)
{
    QMessageBox box(icon, title, text, QMessageBox::Ok, parent);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}

} // namespace

void ReplyRelease::operator()(OperationReply* reply) const
{
    if (reply->isFinishedDelivered()) {
        reply->deleteLater();
    } else {
        reply->cancel();
        QObject::connect(reply, &OperationReply::finished, reply, &QObject::deleteLater);
    }
}

bool waitForSuccess(OperationReply* reply)
{
    reply->waitForFinished();
    return reply->isFinishedDelivered() && !reply->hasError();
}

bool runInDialog(QWidget* parent, OperationReply* reply, const OperationTexts& texts)
{
    OperationDialog dialog(parent);
    dialog.setWindowTitle(texts.title);
    if (!texts.wait.isEmpty())
        dialog.setWaitText(texts.wait);
    dialog.setProgressFormat(texts.progress);
    dialog.setCancelEnabled(texts.isCancelable);
    if (!texts.completion.isEmpty()) {
        dialog.setFinalText(texts.completion);
        dialog.setCloseOnSuccess(false);
    }
    return dialog.exec(reply) == QDialog::Accepted;
}

bool runForRecords(QWidget* parent, OperationReply* reply, int recordsCount, const OperationTexts& texts)
{
    if (recordsCount > greatestSilentCount)
        return runInDialog(parent, reply, texts);
    const bool isDone = waitForSuccess(reply);
    if (reply->isFinishedDelivered() && reply->hasError()) {
        qCritical().noquote() << reply->errorString();
        showFailure(parent, texts.title, reply->errorString());
    }
    return isDone;
}

bool askToProceed(QWidget* parent, const QString& title, const QString& text, const QString& informativeText)
{
    QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Yes | QMessageBox::No, parent);
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(informativeText);
    box.setDefaultButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

void showOutcome(QWidget* parent, const QString& title, const QString& text)
{
    showBox(parent, QMessageBox::Information, title, text);
}

void showFailure(QWidget* parent, const QString& title, const QString& text)
{
    showBox(parent, QMessageBox::Critical, title, text);
}
