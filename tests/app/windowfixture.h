// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/mainwindow.h"
#include "browse/metadataview.h"

#include <QAction>
#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>

#include <functional>
#include <memory>

/// The main window in the test's own process, over folders of its own.
///
/// Owner and thread: one test.
class WindowFixture final
{
public:
    /// New folders with a settings file in which the disclaimer is accepted, and the sample catalogue.
    WindowFixture();
    /// Closes the window and the settings file.
    ~WindowFixture();
    Q_DISABLE_COPY(WindowFixture)

    QString dataFile(const QString& name) const;
    QString databaseFile() const;
    QTemporaryDir& folder() { return m_folder; }

    /// Builds the window and shows it; `showed()` has been emitted when this returns.
    MainWindow& start();
    /// Builds the window only.
    MainWindow& build();
    /// Closes the window as the user does and destroys it; the settings file is written out.
    void close();
    MainWindow& window() { return *m_window; }
    MetaDataView& view() { return *child<MetaDataView>("metaDataView"); }

    template <typename Type>
    Type* child(const char* name)
    {
        return m_window->findChild<Type*>(QLatin1String(name));
    }
    /// The first widget of the panel that is less wide than it must be, stands over its neighbour or ends outside its
    /// row; or nothing.
    QString clippedOrOverlapping();
    /// The text of the row counters.
    QString counters();

private:
    void guardAgainstHanging();

    QTemporaryDir m_folder;
    QTimer m_guard;
    std::unique_ptr<MainWindow> m_window;
};

/// Rows of the sample catalogue: table 1, of these scanned last, of these on the playlist; table 3.
constexpr int sampleRows = 60;
constexpr int lastScannedSampleRows = 20;
constexpr int playlistSampleRows = 5;
constexpr int rowsOfTable3 = 2;

/// Runs a function once, as soon as a modal window of this type is on the screen and `isReady` of it holds.
template <typename Window>
void whenModal(
    QObject* context, const std::function<void(Window&)>& function,
    const std::function<bool(Window&)>& isReady = [](Window&) { return true; })
{
    constexpr int pollInterval = 20; // milliseconds
    auto* timer = new QTimer(context);
    QObject::connect(timer, &QTimer::timeout, context, [timer, function, isReady] {
        auto* window = qobject_cast<Window*>(QApplication::activeModalWidget());
        if (!window || !window->isVisible() || !isReady(*window))
            return;
        timer->stop();
        timer->deleteLater();
        function(*window);
    });
    timer->start(pollInterval);
}
