// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMainWindow>
#include <QTimer>

#include <optional>

class Settings;

/// Base of the main window: remembers size, position and maximised state for each screen size it is used on.
///
/// `showWindow()` shows it in two steps: it is laid out off the screen first, then, on the next turn of the event loop,
/// gets its geometry and appears; `showed()` follows once. Its title bar and its menu are always on a screen.
///
/// Owner: the start-up code. Thread: GUI.
class AdvancedWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// `settingsGroup` is where the geometry is kept; nothing is kept when it is empty.
    explicit AdvancedWindow(const QString& settingsGroup, QWidget* parent = nullptr);
    ~AdvancedWindow() override;

    /// Shows the window, or raises and activates it when it is visible already.
    void showWindow();
    /// Applies the geometry kept for this screen size; false when there is none.
    bool restoreGeometry();

signals:
    /// The window has appeared for the first time and the window manager has placed it (queued).
    void showed();

public slots:
    /// Keeps the geometry for this screen size. Runs by itself 300 ms after the last resize and on closing.
    void saveGeometry();

protected:
    /// The widget that the window shows once it is prepared, and what in it has the focus then; the window owns both.
    void setPreparedCentralWidget(QWidget* widget, QWidget* focusWidget = nullptr);
    /// Size of a window that was never shown on this screen size; it is centred.
    virtual QSize preferredSize() const;
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private slots:
    void prepareWindow();
    void configureWindow();

private:
    void announceShowed();
    QString screenSuffix() const;
    void placeFrame();
    QPoint centredFramePosition() const;
    void applyPreferredGeometry();
    QSize handleSize() const;
    void moveOntoScreen();

    Settings* m_settings = nullptr;
    QTimer m_saveTimer;
    QTimer m_announceTimer;
    QWidget* m_preparedCentralWidget = nullptr;
    QWidget* m_firstFocusWidget = nullptr;
    // Of the whole frame, as it was kept.
    std::optional<QPoint> m_restoredPosition;
    // How often the frame may still be moved to its place; a window manager may have its own mind.
    int m_placingsLeft = 5;
    bool m_isConfigured = false;
    bool m_isAnnounced = false;
};
