// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/metadataprinterdialog.h"

#include "ui_metadataprinterdialog.h"

#include <QPushButton>

MetaDataPrinterDialog::MetaDataPrinterDialog(QWidget* parent)
    : AdvancedDialog(parent)
    , m_ui(std::make_unique<Ui::MetaDataPrinterDialog>())
{
    m_ui->setupUi(this);
    QPushButton* continueButton = m_ui->buttonBox->button(QDialogButtonBox::Ok);
    continueButton->setText(tr("Continue"));
    continueButton->setIcon(QIcon());
    connect(m_ui->buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_ui->buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
    m_ui->titleEdit->setFocus();
    setFixedSize(sizeHint());
}

MetaDataPrinterDialog::~MetaDataPrinterDialog() = default;

void MetaDataPrinterDialog::setRecordsCount(int count)
{
    m_ui->recordsCountLabel->setText(QString::number(count));
}

void MetaDataPrinterDialog::setReportTitle(const QString& title)
{
    m_ui->titleEdit->setText(title);
}

QString MetaDataPrinterDialog::reportTitle() const
{
    return m_ui->titleEdit->text();
}
