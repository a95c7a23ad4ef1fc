// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/advanceddialog.h"

#include <QList>
#include <QStringList>

class Database;
class QGridLayout;
class QLineEdit;

/// Edits the display names of the metadata tables, which it reads from the store and writes there itself.
///
/// Owner: the stack of a command; the store, which may be null, is not owned. Thread: GUI.
class TableDisplayNamesDialog : public AdvancedDialog
{
    Q_OBJECT

public:
    explicit TableDisplayNamesDialog(Database* database, QWidget* parent = nullptr);

    /// Starts from the store's names.
    int exec() override;

public slots:
    /// Hands the names to the store, trimmed; when all are empty the tables get their default names. Waits in a local
    /// event loop, deaf to user input; stays open, with a message, when the store did not keep them.
    void accept() override;
    /// Shows the store's names again.
    void resetControls();

private:
    void addNameEdits(QGridLayout* layout);
    bool storeNames(const QStringList& names);

    Database* m_database;
    // In the order of the tables.
    QList<QLineEdit*> m_nameEdits;
};
