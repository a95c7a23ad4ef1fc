// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/warrantydisclaimerdialog.h"

#include "ui_warrantydisclaimerdialog.h"

#include <QPushButton>
#include <QTextDocument>
#include <QUrl>

namespace {

constexpr double documentMargin = 9;

// The style's picture goes with the standard text only.
void relabel(QPushButton* button, const QString& text)
{
    button->setText(text);
    button->setIcon(QIcon());
}

}

WarrantyDisclaimerDialog::WarrantyDisclaimerDialog(QWidget* parent)
    : AdvancedDialog(parent)
{
    Ui::WarrantyDisclaimerDialog form;
    form.setupUi(this);
    form.disclaimerView->setSource(QUrl(QStringLiteral("qrc:/Resources/WarrantyDisclaimer.html")));
    form.disclaimerView->document()->setDocumentMargin(documentMargin);
    relabel(form.buttonBox->button(QDialogButtonBox::Ok), tr("Accept"));
    relabel(form.buttonBox->button(QDialogButtonBox::Cancel), tr("Reject"));
    connect(form.buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(form.buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
    setFixedSize(sizeHint());
}
