// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/operationreply.h"
#include "ui/operationdialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

#include <functional>

/// What the tests of the operation dialog do with it and read from it. Thread: GUI.
namespace OperationDialogDriver {

/// Runs the dialog over a reply and the script inside its event loop; the dialog's result. A dialog that the script
/// leaves open is a failure, and is closed after a while.
inline int runWhile(OperationDialog& dialog, OperationReply* reply, const std::function<void()>& script)
{
    constexpr int patience = 20000; // milliseconds
    QTimer::singleShot(0, &dialog, script);
    QTimer watchdog;
    QObject::connect(&watchdog, &QTimer::timeout, &dialog, [&dialog] {
        dialog.done(0);
        QFAIL("the dialog did not close");
    });
    watchdog.start(patience);
    return dialog.exec(reply);
}

inline QPushButton* button(const OperationDialog& dialog)
{
    return dialog.findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Cancel);
}

inline QString status(const OperationDialog& dialog)
{
    return dialog.findChild<QLabel*>("statusLabel")->text();
}

inline QString elapsedTime(const OperationDialog& dialog)
{
    return dialog.findChild<QLabel*>("elapsedTimeLabel")->text();
}

inline QProgressBar* bar(const OperationDialog& dialog)
{
    return dialog.findChild<QProgressBar*>("progressBar");
}

inline QPlainTextEdit* console(const OperationDialog& dialog)
{
    return dialog.findChild<QPlainTextEdit*>("warningsConsole");
}

inline bool isBusy(const OperationDialog& dialog)
{
    return bar(dialog)->minimum() == 0 && bar(dialog)->maximum() == 0;
}

/// Delivers what the reply has queued so far.
inline void deliver()
{
    QCoreApplication::processEvents();
}

} // namespace OperationDialogDriver
