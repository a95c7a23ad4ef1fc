// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/warrantydisclaimerdialog.h"

#include "ui_warrantydisclaimerdialog.h"

#include <QPushButton>
#include <QTextDocument>
#include <QUrl>

#include <algorithm>
#include <cmath>

namespace {

constexpr double documentMargin = 9;
constexpr int greatestPageHeight = 600;

// The style's picture goes with the standard text only.
void relabel(QPushButton* button, const QString& text)
{
    button->setText(text);
    button->setIcon(QIcon());
}

// As high as the page is in the user's font, so that nobody scrolls to read it whole.
void fitToPage(QTextBrowser* view)
{
    view->ensurePolished();
    const int frames = 2 * view->frameWidth();
    view->document()->setTextWidth(view->minimumWidth() - frames);
    const int height = int(std::ceil(view->document()->size().height())) + frames;
    view->setFixedHeight(std::min(height, greatestPageHeight));
}

} // namespace

WarrantyDisclaimerDialog::WarrantyDisclaimerDialog(QWidget* parent)
    : AdvancedDialog(parent)
{
    Ui::WarrantyDisclaimerDialog form;
    form.setupUi(this);
    form.disclaimerView->setSource(QUrl(QStringLiteral("qrc:/Resources/WarrantyDisclaimer.html")));
    form.disclaimerView->document()->setDocumentMargin(documentMargin);
    fitToPage(form.disclaimerView);
    relabel(form.buttonBox->button(QDialogButtonBox::Ok), tr("Accept"));
    relabel(form.buttonBox->button(QDialogButtonBox::Cancel), tr("Reject"));
    connect(form.buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(form.buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
    setFixedSize(sizeHint());
}
