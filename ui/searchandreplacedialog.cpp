// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/searchandreplacedialog.h"

#include "ui_searchandreplacedialog.h"

#include <QPushButton>

namespace {

QString fieldOf(const QCheckBox* box)
{
    return box->property("field").toString();
}

} // namespace

SearchAndReplaceDialog::SearchAndReplaceDialog(QWidget* parent)
    : AdvancedDialog(parent)
    , m_ui(std::make_unique<Ui::SearchAndReplaceDialog>())
{
    m_ui->setupUi(this);
    QPushButton* continueButton = m_ui->buttonBox->button(QDialogButtonBox::Ok);
    continueButton->setText(tr("Continue"));
    continueButton->setIcon(QIcon());
    connect(m_ui->buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_ui->buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
    for (const QLineEdit* edit : { m_ui->searchEdit, m_ui->replaceEdit })
        connect(edit, &QLineEdit::textChanged, this, &SearchAndReplaceDialog::updateControls);
    const QList<QCheckBox*> boxes = fieldBoxes();
    for (const QCheckBox* box : boxes)
        connect(box, &QCheckBox::toggled, this, &SearchAndReplaceDialog::updateControls);
    updateControls();
    setFixedSize(sizeHint());
}

SearchAndReplaceDialog::~SearchAndReplaceDialog() = default;

void SearchAndReplaceDialog::setSearchText(const QString& text)
{
    m_ui->searchEdit->setText(text);
}

QString SearchAndReplaceDialog::searchText() const
{
    return m_ui->searchEdit->text();
}

void SearchAndReplaceDialog::setReplaceText(const QString& text)
{
    m_ui->replaceEdit->setText(text);
}

QString SearchAndReplaceDialog::replaceText() const
{
    return m_ui->replaceEdit->text();
}

void SearchAndReplaceDialog::setCaseSensitivity(Qt::CaseSensitivity sensitivity)
{
    m_ui->caseSensitiveBox->setChecked(sensitivity == Qt::CaseSensitive);
}

Qt::CaseSensitivity SearchAndReplaceDialog::caseSensitivity() const
{
    return m_ui->caseSensitiveBox->isChecked() ? Qt::CaseSensitive : Qt::CaseInsensitive;
}

void SearchAndReplaceDialog::setFields(const QStringList& fields)
{
    const QList<QCheckBox*> boxes = fieldBoxes();
    for (QCheckBox* box : boxes)
        box->setChecked(fields.contains(fieldOf(box), Qt::CaseSensitive));
}

QStringList SearchAndReplaceDialog::fields() const
{
    QStringList fields;
    const QList<QCheckBox*> boxes = fieldBoxes();
    for (const QCheckBox* box : boxes) {
        if (box->isChecked())
            fields.append(fieldOf(box));
    }
    return fields;
}

void SearchAndReplaceDialog::updateControls()
{
    const bool isReady = !fields().isEmpty() && searchText() != replaceText();
    m_ui->buttonBox->button(QDialogButtonBox::Ok)->setEnabled(isReady);
}

void SearchAndReplaceDialog::showEvent(QShowEvent* event)
{
    AdvancedDialog::showEvent(event);
    m_ui->searchEdit->setFocus();
    m_ui->searchEdit->selectAll();
    updateControls();
}

QList<QCheckBox*> SearchAndReplaceDialog::fieldBoxes() const
{
    return { m_ui->filePathBox, m_ui->libraryBox, m_ui->descriptionBox };
}
