// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/advanceddialog.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class QCheckBox;

namespace Ui {
class SearchAndReplaceDialog;
}

/// Asks what to replace by what, and in which fields of the records; it replaces nothing itself.
///
/// Owner: the stack of a command. Thread: GUI.
class SearchAndReplaceDialog : public AdvancedDialog
{
    Q_OBJECT

public:
    explicit SearchAndReplaceDialog(QWidget* parent = nullptr);
    ~SearchAndReplaceDialog() override;

    void setSearchText(const QString& text);
    QString searchText() const;
    void setReplaceText(const QString& text);
    QString replaceText() const;
    void setCaseSensitivity(Qt::CaseSensitivity sensitivity);
    Qt::CaseSensitivity caseSensitivity() const;
    /// Names of record fields; of these "filePath", "library" and "description" are offered.
    void setFields(const QStringList& fields);
    QStringList fields() const;

public slots:
    /// There is something to do when a field is chosen and the two texts differ.
    void updateControls();

protected:
    void showEvent(QShowEvent* event) override;

private:
    QList<QCheckBox*> fieldBoxes() const;

    std::unique_ptr<Ui::SearchAndReplaceDialog> m_ui;
};
