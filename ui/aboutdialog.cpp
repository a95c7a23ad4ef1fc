// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/aboutdialog.h"

#include "ui_aboutdialog.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QTextBlock>
#include <QTextDocument>

namespace {

constexpr int markHeight = 64; // pixels

const QLatin1String externalScheme("external:");

// Not through a QUrl: behind two slashes stands a host there, in small letters.
QString externalPath(const QString& link)
{
    QString path = QUrl::fromPercentEncoding(link.mid(externalScheme.size()).toUtf8());
    while (path.startsWith(QLatin1Char('/')))
        path.remove(0, 1);
    return path;
}

// The text of a link of the document.
QString writtenLink(const QTextDocument& document, const QUrl& link)
{
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            QString written = part.fragment().charFormat().anchorHref();
            if (!written.isEmpty() && QUrl(written) == link)
                return written;
        }
    }
    return link.toString(QUrl::FullyEncoded);
}

QPixmap wordMark(qreal devicePixelRatio)
{
    QPixmap mark(QStringLiteral(":/Resources/Vellumcast.png"));
    mark = mark.scaledToHeight(int(markHeight * devicePixelRatio), Qt::SmoothTransformation);
    mark.setDevicePixelRatio(devicePixelRatio);
    return mark;
}

} // namespace

AboutDialog::AboutDialog(QWidget* parent)
    : AdvancedDialog(parent)
    , m_applicationFolder(QCoreApplication::applicationDirPath())
{
    Ui::AboutDialog form;
    form.setupUi(this);
    form.markLabel->setPixmap(wordMark(devicePixelRatioF()));
    m_acknowledgementsView = form.acknowledgementsView;
    m_acknowledgementsView->setSource(QUrl(QStringLiteral("qrc:/Resources/Acknowledgements.html")));
    for (const QLabel* label : { form.mailValue, form.phoneValue, form.homeValue })
        connect(label, &QLabel::linkActivated, this, qOverload<const QString&>(&AboutDialog::openLink));
    connect(m_acknowledgementsView, &QTextBrowser::anchorClicked, this, qOverload<const QUrl&>(&AboutDialog::openLink));
    connect(form.buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
    setFixedSize(sizeHint());
}

void AboutDialog::openLink(const QString& link)
{
    QUrl target(link);
    if (link.startsWith(externalScheme, Qt::CaseInsensitive))
        target = QUrl::fromLocalFile(QDir(m_applicationFolder).filePath(externalPath(link)));
    QDesktopServices::openUrl(target);
}

void AboutDialog::openLink(const QUrl& link)
{
    openLink(writtenLink(*m_acknowledgementsView->document(), link));
}
