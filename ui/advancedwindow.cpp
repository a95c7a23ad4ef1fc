// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/advancedwindow.h"

#include "ui/settings.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QRegion>
#include <QResizeEvent>
#include <QScreen>
#include <QStyle>
#include <QWindow>

#include <algorithm>

namespace {

constexpr int saveDelay = 300; // milliseconds
constexpr int announceDelay = 1000; // milliseconds
constexpr int placingDelay = 60; // milliseconds
constexpr int leastTitleWidth = 120; // device-independent pixels

QScreen* screenOf(const QWidget* widget)
{
    QScreen* screen = widget->screen();
    return screen ? screen : QGuiApplication::primaryScreen();
}

// Centred where the screen has room for it, otherwise from the edge at which the title bar and the menu begin.
QPoint centredPosition(const QSize& size, const QRect& available)
{
    QRect area(QPoint(), size);
    area.moveCenter(available.center());
    return { std::max(area.left(), available.left()), std::max(area.top(), available.top()) };
}

// Where most of the area is; the fallback where no screen has any of it.
QScreen* screenUnder(const QRect& area, QScreen* fallback)
{
    QScreen* best = fallback;
    int mostPixels = 0;
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (QScreen* screen : screens) {
        const QSize common = screen->availableGeometry().intersected(area).size();
        const int pixels = common.isEmpty() ? 0 : common.width() * common.height();
        if (pixels > mostPixels) {
            mostPixels = pixels;
            best = screen;
        }
    }
    return best;
}

} // namespace

AdvancedWindow::AdvancedWindow(const QString& settingsGroup, QWidget* parent)
    : QMainWindow(parent)
{
    if (!settingsGroup.isEmpty())
        m_settings = new Settings(settingsGroup, this);
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setInterval(saveDelay);
    connect(&m_saveTimer, &QTimer::timeout, this, &AdvancedWindow::saveGeometry);
    m_announceTimer.setSingleShot(true);
    m_announceTimer.setInterval(announceDelay);
    connect(&m_announceTimer, &QTimer::timeout, this, &AdvancedWindow::announceShowed);
}

AdvancedWindow::~AdvancedWindow() = default;

void AdvancedWindow::setPreparedCentralWidget(QWidget* widget, QWidget* focusWidget)
{
    m_preparedCentralWidget = widget;
    m_firstFocusWidget = focusWidget;
    widget->setParent(this);
    widget->hide();
}

QSize AdvancedWindow::preferredSize() const
{
    return size();
}

void AdvancedWindow::showWindow()
{
    if (isVisible()) {
        raise();
        activateWindow();
        return;
    }
    QTimer::singleShot(0, this, &AdvancedWindow::prepareWindow);
}

void AdvancedWindow::prepareWindow()
{
    if (isVisible())
        return;
    // Off the screen the widgets learn their sizes; nobody sees an unfinished window.
    setAttribute(Qt::WA_DontShowOnScreen, true);
    resize(preferredSize());
    show();
    QTimer::singleShot(0, this, &AdvancedWindow::configureWindow);
}

void AdvancedWindow::configureWindow()
{
    // Hidden in between: the platform window of an off-screen widget would never appear.
    hide();
    setAttribute(Qt::WA_DontShowOnScreen, false);
    if (m_preparedCentralWidget) {
        setCentralWidget(m_preparedCentralWidget);
        m_preparedCentralWidget->show();
        if (m_firstFocusWidget)
            m_firstFocusWidget->setFocus();
        m_preparedCentralWidget = nullptr;
    }
    m_isConfigured = true;
    if (!restoreGeometry()) {
        applyPreferredGeometry();
        show();
    }
    raise();
    activateWindow();
    // A window manager may keep the window from being activated; it is on the screen all the same.
    m_announceTimer.start();
}

bool AdvancedWindow::event(QEvent* event)
{
    // Once it is active the window manager has placed it: a dialog opened now is centred on where it really is.
    if (event->type() == QEvent::WindowActivate && m_isConfigured)
        announceShowed();
    return QMainWindow::event(event);
}

void AdvancedWindow::announceShowed()
{
    m_announceTimer.stop();
    if (m_isAnnounced)
        return;
    m_isAnnounced = true;
    placeFrame();
}

// Before the window had a frame, its position did not count it: the window would creep up with every start. While the
// window manager frames it, the position known here may also be one inside the frame, so it is looked at again.
void AdvancedWindow::placeFrame()
{
    const QPoint wanted = m_restoredPosition.value_or(centredFramePosition());
    if (isMaximized() || m_placingsLeft == 0 || pos() == wanted) {
        // From now on nothing moves the window but the user: a move would also ask for the size that is known here.
        QMetaObject::invokeMethod(this, &AdvancedWindow::showed, Qt::QueuedConnection);
        return;
    }
    --m_placingsLeft;
    move(wanted);
    QTimer::singleShot(placingDelay, this, &AdvancedWindow::placeFrame);
}

QPoint AdvancedWindow::centredFramePosition() const
{
    // The window's own frame geometry may be older than what the platform knows of its frame.
    const QMargins frame = windowHandle() ? windowHandle()->frameMargins() : QMargins();
    return centredPosition(size().grownBy(frame), screenOf(this)->availableGeometry());
}

bool AdvancedWindow::restoreGeometry()
{
    if (!m_settings)
        return false;
    const QString suffix = screenSuffix();
    if (m_settings->value(QStringLiteral("maximized") + suffix, false).toBool()) {
        showMaximized();
        return true;
    }
    const QString sizeKey = QStringLiteral("size") + suffix;
    const QString positionKey = QStringLiteral("position") + suffix;
    if (!m_settings->contains(sizeKey) || !m_settings->contains(positionKey))
        return false;
    resize(m_settings->value(sizeKey).toSize().boundedTo(screenOf(this)->availableVirtualSize()));
    move(m_settings->value(positionKey).toPoint());
    moveOntoScreen();
    m_restoredPosition = pos();
    show();
    return true;
}

void AdvancedWindow::applyPreferredGeometry()
{
    const QRect available = screenOf(this)->availableGeometry();
    resize(preferredSize().boundedTo(available.size()));
    move(centredPosition(size(), available));
}

// What the user needs of the window to move it and to use it: the title bar and the menu below it.
QSize AdvancedWindow::handleSize() const
{
    const QSize menu = menuWidget() ? menuWidget()->sizeHint() : QSize(0, 0);
    const int titleHeight = style()->pixelMetric(QStyle::PM_TitleBarHeight);
    return { std::max(menu.width(), leastTitleWidth), titleHeight + menu.height() };
}

void AdvancedWindow::moveOntoScreen()
{
    const QRect handle(pos(), handleSize());
    QRegion screens;
    for (const QScreen* screen : QGuiApplication::screens())
        screens += screen->availableGeometry();
    if (QRegion(handle).subtracted(screens).isEmpty())
        return;
    const QRect available = screenUnder(QRect(pos(), size()), screenOf(this))->availableGeometry();
    const bool isWithinSides = handle.left() >= available.left() && handle.right() <= available.right();
    const bool isWithinHeight = handle.top() >= available.top() && handle.bottom() <= available.bottom();
    move(isWithinSides ? handle.left() : available.left(), isWithinHeight ? handle.top() : available.top());
}

void AdvancedWindow::saveGeometry()
{
    m_saveTimer.stop();
    if (!m_settings || !m_isConfigured)
        return;
    const QString suffix = screenSuffix();
    const QString sizeKey = QStringLiteral("size") + suffix;
    const QString positionKey = QStringLiteral("position") + suffix;
    const QString maximizedKey = QStringLiteral("maximized") + suffix;
    if (isMaximized()) {
        m_settings->remove(sizeKey);
        m_settings->remove(positionKey);
        m_settings->setValue(maximizedKey, true);
    } else {
        m_settings->remove(maximizedKey);
        m_settings->setValue(sizeKey, size());
        m_settings->setValue(positionKey, pos());
    }
}

void AdvancedWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    if (m_isConfigured)
        m_saveTimer.start();
}

void AdvancedWindow::closeEvent(QCloseEvent* event)
{
    saveGeometry();
    QMainWindow::closeEvent(event);
}

QString AdvancedWindow::screenSuffix() const
{
    const QSize size = screenOf(this)->size();
    return QStringLiteral("%1x%2").arg(QString::number(size.width()), QString::number(size.height()));
}
