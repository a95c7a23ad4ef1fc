// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/advanceddialog.h"

#include <memory>

namespace Ui {
class MetaDataPrinterDialog;
}

/// Asks for the title of a printed report and tells how many records it will hold; it prints nothing itself.
///
/// Owner: the stack of a command. Thread: GUI.
class MetaDataPrinterDialog : public AdvancedDialog
{
    Q_OBJECT

public:
    explicit MetaDataPrinterDialog(QWidget* parent = nullptr);
    ~MetaDataPrinterDialog() override;

    void setRecordsCount(int count);
    /// Empty for a report without a title.
    void setReportTitle(const QString& title);
    QString reportTitle() const;

private:
    std::unique_ptr<Ui::MetaDataPrinterDialog> m_ui;
};
