// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/advanceddialog.h"

#include <QList>
#include <QString>
#include <QStringList>

class QCheckBox;
class QDialogButtonBox;
class QLayout;
class QLineEdit;

/// Asks which fields of the records to export, and into which file; it exports nothing itself.
///
/// Owner: the stack of a command. Thread: GUI.
class MetaDataExporterDialog : public AdvancedDialog
{
    Q_OBJECT

public:
    explicit MetaDataExporterDialog(QWidget* parent = nullptr);

    /// Names of record fields; those that are not offered are passed over.
    void setCheckedFields(const QStringList& fields);
    /// In the order in which the fields are offered.
    QStringList checkedFields() const;
    /// Exactly as it stands in the edit.
    QString filePath() const;

    /// Asks first before a file is replaced whose path was typed.
    void accept() override;

public slots:
    /// The box of all fields follows the others; there is something to do with a file and a field.
    void updateControls();

private slots:
    void checkAllFields(bool isChecked);
    void chooseFile();

private:
    QLayout* makeFieldsLayout();
    QLayout* makeFileLayout();
    void setUpButtons();

    QList<QCheckBox*> m_fieldBoxes;
    QCheckBox* m_allFieldsBox;
    QLineEdit* m_filePathEdit;
    QDialogButtonBox* m_buttonBox;
    // As the chooser gave it, which has asked.
    QString m_chosenFilePath;
};
