// SPDX-License-Identifier: GPL-3.0-or-later
// The panel above the table in windows of any width.
#include "app/mainwindow.h"

#include "ui_mainwindow.h"

#include "ui/whitebutton.h"

#include <QResizeEvent>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace {

// Device-independent pixels.
constexpr int narrowingBesideLogo = 10; // of a record button
constexpr int gapBeforeLogo = 6; // beside the row's spacing
constexpr int roomBesideLookup = 48; // for the icons
constexpr int roomForFrame = 8; // of the window manager

constexpr int longestWholeCount = 1000000; // a count of no more digits is never cut off

} // namespace

QSize MainWindow::preferredSize() const
{
    constexpr QSize initialSize(1263, 444);
    // On scaled screens a window may come out a pixel or two smaller than asked for.
    constexpr int spare = 8;
    const int width = m_widthForAll - recordButtons().size() * narrowingBesideLogo + spare;
    return initialSize.expandedTo(QSize(width, minimumSizeHint().height()));
}

void MainWindow::fitTexts()
{
    const QString count = tr("Found Records: %1").arg(longestWholeCount);
    m_ui->rowCountersLabel->setMinimumWidth(m_ui->rowCountersLabel->fontMetrics().horizontalAdvance(count));
    QLineEdit* lookup = m_ui->lookupEdit;
    lookup->setMinimumWidth(lookup->fontMetrics().horizontalAdvance(lookup->placeholderText()) + roomBesideLookup);
}

void MainWindow::measurePanel()
{
    const int selection = m_ui->rowCountersLabel->fontMetrics().horizontalAdvance(tr(" (%1 selected)").arg(1));
    const int widthWithLogo = smallestPanelWidth();
    m_widthForAll = widthWithLogo + selection;
    setLogoVisible(false);
    m_widthOfLogo = widthWithLogo - smallestPanelWidth();
    narrowRecordButtons(WhiteButton::mostNarrowing);
    const int widthOnScreen = screen()->availableSize().width() - roomForFrame;
    if (smallestPanelWidth() > widthOnScreen)
        letButtonsShrink();
    // The layout alone would not let the window become narrower than what is shown just then.
    setMinimumWidth(std::min(smallestPanelWidth(), widthOnScreen));
    fitPanel(width());
}

// With a large font on a small screen: a window wider than the screen would have its menus or its last buttons beside
// it.
void MainWindow::letButtonsShrink()
{
    const QList<WhiteButton*> buttons = m_ui->topPanel->findChildren<WhiteButton*>();
    for (WhiteButton* button : buttons)
        button->setShrinkable(true);
    m_ui->viewButtonsLayout->invalidate();
    m_ui->playButtonsLayout->invalidate();
    m_ui->upperWidgetLayout->invalidate();
    m_ui->lowerWidgetLayout->invalidate();
}

int MainWindow::smallestPanelWidth() const
{
    const QMargins margins = m_ui->topPanelLayout->contentsMargins();
    return margins.left() + margins.right()
        + std::max(m_ui->upperWidget->minimumSizeHint().width(), m_ui->lowerWidget->minimumSizeHint().width());
}

// A narrow window goes without some room beside the buttons' texts, then without the word mark, which is also in the
// menu.
void MainWindow::fitPanel(int width)
{
    const int missing = m_widthForAll - width;
    const bool hasLogo = missing <= recordButtons().size() * narrowingBesideLogo;
    setLogoVisible(hasLogo);
    narrowRecordButtons(int(std::ceil(double(hasLogo ? missing : missing - m_widthOfLogo) / recordButtons().size())));
}

void MainWindow::setLogoVisible(bool isVisible)
{
    if (isVisible == !m_ui->logoWidget->isHidden())
        return;
    m_ui->logoWidget->setVisible(isVisible);
    m_ui->logoSpacer->changeSize(isVisible ? gapBeforeLogo : 0, 0, QSizePolicy::Fixed);
    m_ui->lowerWidgetLayout->invalidate();
}

QVector<WhiteButton*> MainWindow::recordButtons() const
{
    return { m_ui->showInfoButton, m_ui->revealInSystemFileManager, m_ui->copyToWorkFolderButton,
        m_ui->addToPlaylistButton, m_ui->removeFromPlaylistButton };
}

void MainWindow::narrowRecordButtons(int narrowing)
{
    const QVector<WhiteButton*> buttons = recordButtons();
    for (WhiteButton* button : buttons)
        button->setNarrowing(narrowing);
}

void MainWindow::resizeEvent(QResizeEvent* event)
{
    fitPanel(event->size().width());
    AdvancedWindow::resizeEvent(event);
}
