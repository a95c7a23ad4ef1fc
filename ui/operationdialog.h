// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/advanceddialog.h"

#include <QPointer>
#include <QString>
#include <QTimer>

#include <memory>

class OperationReply;
class QPushButton;

namespace Ui {
class OperationDialog;
}

/// The modal window over one long operation: progress, elapsed time, warnings, and a button to cancel it.
///
/// When the operation ends the dialog closes by itself, or stays with "Finish" so that warnings and errors can be
/// read. One dialog may run several operations one after the other.
///
/// Owner: the command that runs it, usually its stack; the reply stays the caller's. Thread: GUI.
class OperationDialog : public AdvancedDialog
{
    Q_OBJECT

public:
    explicit OperationDialog(QWidget* parent = nullptr);
    ~OperationDialog() override;

    /// Text shown while the total is unknown; "Preparing..." unless set.
    void setWaitText(const QString& text);
    /// Status line: "%v" value, "%m" total, "%p" value divided by total (whole), "%sv" and "%sm" as byte sizes
    /// (counted in the reply's progress unit).
    void setProgressFormat(const QString& format);
    /// Shown after a success; without it the last status line stays.
    void setFinalText(const QString& text);
    /// Whether the bar shows only "busy" once the operation is being canceled; true unless set.
    void setBusyOnCancel(bool busy);
    /// Whether the dialog closes by itself after a success without warnings; true unless set.
    void setCloseOnSuccess(bool close);
    void setCancelEnabled(bool enabled);
    /// Shows the check box with this text, or hides it when the text is empty.
    void setOptionText(const QString& text);
    void setOptionChecked(bool checked);
    bool isOptionChecked() const;

    /// Runs over the reply until it has finished and the dialog is closed; 1 if it finished without an error, else 0.
    int exec(OperationReply* reply);

public slots:
    /// Cancel, Finish, Escape and the window's close button.
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private slots:
    void setProgress(int value, int total);
    void addWarnings(const QStringList& values);
    void updateElapsedTime();
    void finalize();

private:
    int exec() override;
    void resetForNextRun();
    void handleLostReply();
    QString statusLine(int value, int total) const;
    void makeBusy();
    void fixSize();

    std::unique_ptr<Ui::OperationDialog> m_ui;
    QPushButton* m_button;
    QString m_waitText;
    QString m_progressFormat;
    QString m_finalText;
    bool m_busyOnCancel = true;
    bool m_closeOnSuccess = true;
    bool m_isCancelEnabled = true;
    QPointer<OperationReply> m_reply;
    QTimer m_elapsedTimeTimer;
    bool m_isFinished = false;
    int m_result = 0;
};
