// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/operationdialog.h"

#include "ui_operationdialog.h"

#include "store/operationreply.h"
#include "store/valuetext.h"
#include "ui/lightground.h"

#include <QHideEvent>
#include <QLayout>
#include <QPushButton>
#include <QShowEvent>
#include <QTime>

namespace {

constexpr int elapsedTimeInterval = 250; // milliseconds
constexpr int byteSizeDecimals = 2;

} // namespace

OperationDialog::OperationDialog(QWidget* parent)
    : AdvancedDialog(parent)
    , m_ui(std::make_unique<Ui::OperationDialog>())
    , m_waitText(tr("Preparing..."))
    , m_elapsedTimeTimer(this)
{
    m_ui->setupUi(this);
    m_button = m_ui->buttonBox->button(QDialogButtonBox::Cancel);
    // The style's picture for Cancel would stay when the button reads "Finish".
    m_button->setIcon(QIcon());
    m_button->setMinimumWidth(m_button->sizeHint().width());
    m_ui->warningsConsole->hide();
    m_ui->optionCheckBox->hide();
    // Its text is dark red.
    giveLightGround(m_ui->warningsConsole);
    m_elapsedTimeTimer.setInterval(elapsedTimeInterval);
    connect(&m_elapsedTimeTimer, &QTimer::timeout, this, &OperationDialog::updateElapsedTime);
    connect(m_ui->buttonBox, &QDialogButtonBox::rejected, this, &OperationDialog::reject);
}

OperationDialog::~OperationDialog() = default;

void OperationDialog::setWaitText(const QString& text)
{
    m_waitText = text;
}

void OperationDialog::setProgressFormat(const QString& format)
{
    m_progressFormat = format;
}

void OperationDialog::setFinalText(const QString& text)
{
    m_finalText = text;
}

void OperationDialog::setBusyOnCancel(bool busy)
{
    m_busyOnCancel = busy;
}

void OperationDialog::setCloseOnSuccess(bool close)
{
    m_closeOnSuccess = close;
}

void OperationDialog::setCancelEnabled(bool enabled)
{
    m_isCancelEnabled = enabled;
    m_button->setEnabled(enabled);
}

void OperationDialog::setOptionText(const QString& text)
{
    m_ui->optionCheckBox->setText(text);
    m_ui->optionCheckBox->setVisible(!text.isEmpty());
}

void OperationDialog::setOptionChecked(bool checked)
{
    m_ui->optionCheckBox->setChecked(checked);
}

bool OperationDialog::isOptionChecked() const
{
    return m_ui->optionCheckBox->isChecked();
}

int OperationDialog::exec()
{
    return AdvancedDialog::exec();
}

int OperationDialog::exec(OperationReply* reply)
{
    m_reply = reply;
    connect(reply, &OperationReply::progress, this, &OperationDialog::setProgress);
    connect(reply, &OperationReply::warnings, this, &OperationDialog::addWarnings);
    connect(reply, &OperationReply::finished, this, &OperationDialog::finalize);
    connect(reply, &QObject::destroyed, this, &OperationDialog::handleLostReply);
    resetForNextRun();
    // Its end was told before anybody here listened.
    if (reply->isFinishedDelivered())
        QTimer::singleShot(0, this, [this, reply] {
            if (m_reply == reply)
                finalize();
        });
    exec();
    if (m_reply)
        m_reply->disconnect(this);
    m_reply.clear();
    return m_result;
}

void OperationDialog::resetForNextRun()
{
    updateElapsedTime();
    m_ui->statusLabel->clear();
    makeBusy();
    m_ui->warningsConsole->clear();
    m_isFinished = false;
    m_result = 0;
    m_button->setText(tr("Cancel"));
    m_button->setEnabled(m_isCancelEnabled);
}

void OperationDialog::updateElapsedTime()
{
    if (!m_reply)
        return;
    const QTime elapsed = QTime(0, 0).addMSecs(int(m_reply->elapsed()));
    m_ui->elapsedTimeLabel->setText(tr("Elapsed Time: %1").arg(elapsed.toString(QStringLiteral("hh:mm:ss"))));
}

void OperationDialog::setProgress(int value, int total)
{
    if (!m_reply || m_isFinished)
        return;
    const bool isCanceled = m_reply->isCanceled();
    if (isCanceled && m_busyOnCancel)
        return;
    if (total < 0) {
        if (!isCanceled)
            m_ui->statusLabel->setText(m_waitText);
        makeBusy();
        return;
    }
    if (!isCanceled)
        m_ui->statusLabel->setText(statusLine(value, total));
    m_ui->progressBar->setMaximum(total);
    m_ui->progressBar->setValue(value);
}

QString OperationDialog::statusLine(int value, int total) const
{
    // The numbers hold no "%", so one replacement never meets the text of another.
    QString line = m_progressFormat;
    line.replace(QLatin1String("%v"), QString::number(value));
    line.replace(QLatin1String("%m"), QString::number(total));
    line.replace(QLatin1String("%p"), QString::number(total != 0 ? value / total : 0));
    const qint64 unit = m_reply->progressUnit();
    line.replace(QLatin1String("%sv"), byteSizeText(value * unit, byteSizeDecimals));
    line.replace(QLatin1String("%sm"), byteSizeText(total * unit, byteSizeDecimals));
    if (m_reply->hasWarnings())
        line += tr(" (warnings: %1)").arg(m_reply->warningsCount());
    return line;
}

void OperationDialog::addWarnings(const QStringList& values)
{
    if (m_ui->warningsConsole->isHidden()) {
        m_ui->warningsConsole->show();
        fixSize();
    }
    m_ui->warningsConsole->appendPlainText(values.join(QLatin1Char('\n')));
}

void OperationDialog::reject()
{
    if (m_isFinished) {
        done(m_result);
    } else if (m_button->isEnabled()) {
        if (m_reply)
            m_reply->cancel();
        m_ui->statusLabel->setText(tr("Canceling..."));
        if (m_busyOnCancel)
            makeBusy();
    }
}

void OperationDialog::finalize()
{
    if (!m_reply || m_isFinished)
        return;
    m_elapsedTimeTimer.stop();
    updateElapsedTime();
    m_button->setText(tr("Finish"));
    m_button->setEnabled(true);
    m_isFinished = true;
    const bool hasError = m_reply->hasError();
    const bool isCanceled = m_reply->isCanceled();
    m_result = hasError ? 0 : 1;
    m_ui->progressBar->setMaximum(1);
    m_ui->progressBar->setValue(1);
    if (!hasError && !m_finalText.isEmpty())
        m_ui->statusLabel->setText(m_finalText);
    if (hasError && !isCanceled) {
        m_ui->statusLabel->setText(tr("Operation failed"));
        addWarnings({ m_reply->errorString() });
    }
    if (isCanceled || (m_closeOnSuccess && !hasError && !m_reply->hasWarnings()))
        reject();
    else
        m_button->setFocus();
}

void OperationDialog::handleLostReply()
{
    m_reply.clear();
    m_isFinished = true;
    m_result = 0;
    done(m_result);
}

void OperationDialog::makeBusy()
{
    m_ui->progressBar->setMaximum(0);
}

void OperationDialog::fixSize()
{
    // Otherwise the size hint follows a widget that was just shown or hidden on a later turn of the event loop only.
    m_ui->panel->layout()->activate();
    layout()->activate();
    setFixedSize(sizeHint());
}

void OperationDialog::showEvent(QShowEvent* event)
{
    if (!event->spontaneous()) {
        // Without a text the label is lower: the dialog would grow with the first status line.
        m_ui->statusLabel->setMinimumHeight(m_ui->elapsedTimeLabel->sizeHint().height());
        fixSize();
        m_elapsedTimeTimer.start();
    }
    AdvancedDialog::showEvent(event);
}

void OperationDialog::hideEvent(QHideEvent* event)
{
    // A window that is only minimised comes back with its warnings.
    if (!event->spontaneous()) {
        m_ui->warningsConsole->clear();
        m_ui->warningsConsole->hide();
        m_elapsedTimeTimer.stop();
    }
    AdvancedDialog::hideEvent(event);
}
