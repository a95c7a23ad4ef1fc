// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/advancedwindow.h"

#include <QPointer>
#include <QString>
#include <QTimer>

#include <memory>

class Database;
class DatabaseSession;
class OperationReply;
class QAction;
class QLabel;
class QMenu;
class Settings;

namespace Ui {
class MainWindow;
}

/// The program's one top-level window: the table with its panel and menus, the store on its thread, the commands.
///
/// The constructor builds everything and opens the database, asking the user when it cannot be opened; whether it is
/// open is then `isDatabaseOpened()`. Closing the window saves its state and ends the store.
///
/// Owner: the start-up code. Thread: GUI.
class MainWindow : public AdvancedWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    bool isDatabaseOpened() const;

public slots:
    void saveWindowState();
    void restoreWindowState();
    /// Scans files and folders into the current table; ignored while another command runs.
    void scan(const QStringList& paths);
    /// Looks up what stands in the lookup edit, at once.
    void lookup();
    void updateWindowTitle();
    void updateRowCountersLabel();
    void updateEmptyTableHint();
    void updateOpenTableMenu();
    void handleOpenTableAction();
    void requery();
    void requeryLater();
    void restoreSavedRow();
    void finalizeRowLookup();
    void showWarrantyDisclaimerDialog();

protected:
    QSize preferredSize() const override;
    void closeEvent(QCloseEvent* event) override;

private slots:
    void on_viewAllButton_clicked();
    void on_viewLastScannedButton_clicked();
    void on_viewPlaylistButton_clicked();
    void on_scanFilesAction_triggered();

private:
    void buildInterface();
    void buildRecordMenu();
    void buildEmptyTableHint();
    void setUpBusySprite();
    void setUpState();
    void createDatabase();
    void openDatabase();
    bool askToReinitialiseDatabase();
    void connectDatabase();
    void connectView();
    void connectStateSaving();
    QString libraryEvaluationRules() const;
    QString chooseFolderToScan();
    void showScanOutcome(bool showLastScannedOnly);
    void endSession();
    Database* database() const;

    std::unique_ptr<Ui::MainWindow> m_ui;
    Settings* m_settings;
    std::unique_ptr<DatabaseSession> m_session;
    QString m_dataFolder;
    QString m_rulesFilePath;
    QString m_workFolderPath;
    // Stands in for the player's until there is one; 0 to 1.
    double m_playbackVolume = 1.0;
    // Id of the record to return to after a requery; 0 when there is none.
    qint64 m_savedRow = 0;
    QMenu* m_openTableMenu;
    QMenu* m_recordMenu;
    QLabel* m_emptyTableHint = nullptr;
    QTimer m_requeryTimer;
    QTimer m_stateSaveTimer;
    bool m_isCommandRunning = false;
};
