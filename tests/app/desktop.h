// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDesktopServices>
#include <QObject>
#include <QStringList>
#include <QUrl>

/// Notes the folders that the desktop is asked to open while it lives.
///
/// Owner and thread: one test.
class Desktop : public QObject
{
    Q_OBJECT

public:
    Desktop() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~Desktop() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }
    Q_DISABLE_COPY(Desktop)

    QStringList opened() const { return m_opened; }

public slots:
    void open(const QUrl& url) { m_opened.append(url.toLocalFile()); }

private:
    QStringList m_opened;
};
