// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/aboutdialog.h"

#include "ui_aboutdialog.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>

namespace {

constexpr int markHeight = 64; // pixels

// "external:docs/a.pdf" has its path where the same with slashes has a host as well.
QString externalPath(const QUrl& link)
{
    return link.host(QUrl::FullyDecoded) + link.path(QUrl::FullyDecoded);
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
    form.acknowledgementsView->setSource(QUrl(QStringLiteral("qrc:/Resources/Acknowledgements.html")));
    for (const QLabel* label : { form.mailValue, form.phoneValue, form.homeValue })
        connect(label, &QLabel::linkActivated, this, qOverload<const QString&>(&AboutDialog::openLink));
    connect(
        form.acknowledgementsView, &QTextBrowser::anchorClicked, this, qOverload<const QUrl&>(&AboutDialog::openLink));
    connect(form.buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
    setFixedSize(sizeHint());
}

void AboutDialog::openLink(const QString& link)
{
    openLink(QUrl(link));
}

void AboutDialog::openLink(const QUrl& link)
{
    if (link.scheme() == QLatin1String("external"))
        QDesktopServices::openUrl(QUrl::fromLocalFile(QDir(m_applicationFolder).filePath(externalPath(link))));
    else
        QDesktopServices::openUrl(link);
}
