// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/advanceddialog.h"

#include <QString>
#include <QUrl>

class QTextBrowser;

/// Shows the version, how to reach the authors, and whose work the program uses.
///
/// A link of the scheme "external" names a file by its path relative to the program's folder. Owner: the stack of a
/// command. Thread: GUI.
class AboutDialog : public AdvancedDialog
{
    Q_OBJECT

public:
    explicit AboutDialog(QWidget* parent = nullptr);

public slots:
    /// Opens it with the desktop's program for it.
    void openLink(const QString& link);
    /// Likewise; of a link in the acknowledgements as it is written there.
    void openLink(const QUrl& link);

private:
    QString m_applicationFolder;
    QTextBrowser* m_acknowledgementsView;
};
