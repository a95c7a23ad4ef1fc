// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/advanceddialog.h"

/// Shows the warranty disclaimer; `exec()` tells whether it was accepted.
///
/// Remembers nothing: who runs it keeps the answer. Owner: its parent or the stack. Thread: GUI.
class WarrantyDisclaimerDialog : public AdvancedDialog
{
    Q_OBJECT

public:
    explicit WarrantyDisclaimerDialog(QWidget* parent = nullptr);
};
