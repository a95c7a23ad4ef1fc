// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/tabledisplaynamesdialog.h"

#include "ui_tabledisplaynamesdialog.h"

#include "store/database.h"
#include "store/databaseschema.h"
#include "store/operationreply.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpressionValidator>

#include <algorithm>

namespace {

constexpr int editWidth = 320; // pixels

// Until it has done all that was asked of it so far.
void waitForStore(Database* database)
{
    auto* reply = new OperationReply;
    QObject::connect(reply, &OperationReply::finished, reply, &QObject::deleteLater);
    QMetaObject::invokeMethod(
        database, [reply] { reply->finish(); }, Qt::QueuedConnection);
    reply->waitForFinished();
}

} // namespace

TableDisplayNamesDialog::TableDisplayNamesDialog(Database* database, QWidget* parent)
    : AdvancedDialog(parent)
    , m_database(database)
{
    Ui::TableDisplayNamesDialog form;
    form.setupUi(this);
    addNameEdits(form.namesLayout);
    connect(form.buttonBox, &QDialogButtonBox::accepted, this, &TableDisplayNamesDialog::accept);
    connect(form.buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(form.buttonBox->button(QDialogButtonBox::Reset), &QPushButton::clicked, this,
        &TableDisplayNamesDialog::resetControls);
    setFixedSize(sizeHint());
}

void TableDisplayNamesDialog::addNameEdits(QGridLayout* layout)
{
    // The names are stored as one text with this sign between them.
    static const QRegularExpression withoutSeparator(QStringLiteral("[^;]*"));
    auto* validator = new QRegularExpressionValidator(withoutSeparator, this);
    for (int tableId = 1; tableId <= metaDataTablesCount; ++tableId) {
        const QString defaultName = tr("Table%1").arg(tableId);
        auto* edit = new QLineEdit(this);
        edit->setObjectName(QStringLiteral("nameEdit%1").arg(tableId));
        edit->setPlaceholderText(defaultName);
        edit->setMinimumWidth(editWidth);
        edit->setValidator(validator);
        auto* label = new QLabel(tr("%1:").arg(defaultName), this);
        label->setBuddy(edit);
        layout->addWidget(label, tableId - 1, 0);
        layout->addWidget(edit, tableId - 1, 1);
        m_nameEdits.append(edit);
    }
}

int TableDisplayNamesDialog::exec()
{
    resetControls();
    m_nameEdits.first()->setFocus();
    return AdvancedDialog::exec();
}

void TableDisplayNamesDialog::resetControls()
{
    const QStringList names = m_database ? m_database->tableDisplayNames() : QStringList();
    for (int index = 0; index < m_nameEdits.size(); ++index)
        m_nameEdits.at(index)->setText(names.value(index));
}

// The store says nothing of a failed write, but reads the names again after each.
bool TableDisplayNamesDialog::storeNames(const QStringList& names)
{
    if (!m_database->isOpened())
        return false;
    m_database->setTableDisplayNames(names);
    waitForStore(m_database);
    const QLatin1Char separator(';');
    return m_database->tableDisplayNames().join(separator) == names.join(separator);
}

void TableDisplayNamesDialog::accept()
{
    QStringList names;
    for (const QLineEdit* edit : qAsConst(m_nameEdits))
        names.append(edit->text().trimmed());
    if (std::all_of(names.cbegin(), names.cend(), [](const QString& name) { return name.isEmpty(); }))
        names.clear();
    if (!m_database || storeNames(names)) {
        AdvancedDialog::accept();
        return;
    }
    QMessageBox box(
        QMessageBox::Critical, windowTitle(), tr("The table names could not be saved."), QMessageBox::Ok, this);
    box.setTextFormat(Qt::PlainText);
    box.exec();
}
