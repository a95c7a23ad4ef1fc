// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/operationreply.h"

#include <QString>

#include <memory>

class QWidget;

/// How the commands of the main window follow the store's operations. Thread: GUI.

/// Lets a reply go: an operation that is still under way (the application quits below a dialog) is canceled, and its
/// reply goes when it has ended.
struct ReplyRelease
{
    void operator()(OperationReply* reply) const;
};

/// A reply that a command owns while it waits.
using ReplyPointer = std::unique_ptr<OperationReply, ReplyRelease>;

/// What the progress dialog says over an operation.
struct OperationTexts
{
    QString title;
    /// While the total is not known; the dialog's own text when empty.
    QString wait;
    /// See `OperationDialog::setProgressFormat()`.
    QString progress;
    /// After a success; with it the dialog stays open until the user has seen it.
    QString completion;
    bool isCancelable = true;
};

/// Waits for the end, deaf to user input; true for a success. False also when the application quits, which ends the
/// wait early.
bool waitForSuccess(OperationReply* reply);

/// Runs the progress dialog over the operation; true when it was accepted, that is, ended without an error.
bool runInDialog(QWidget* parent, OperationReply* reply, const OperationTexts& texts);

/// The same for an operation on so many records, but without a dialog for 500 or fewer: these take no time worth
/// showing. A failure of such a short one is told in a message box.
bool runForRecords(QWidget* parent, OperationReply* reply, int recordsCount, const OperationTexts& texts);

/// A question that cannot be undone by a later one: "Yes" or, by default, "No". True for "Yes".
bool askToProceed(QWidget* parent, const QString& title, const QString& text, const QString& informativeText);

/// A message with an OK button, its text shown as it is.
void showOutcome(QWidget* parent, const QString& title, const QString& text);
void showFailure(QWidget* parent, const QString& title, const QString& text);
