// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/databaserestore.h"
#include "store/metadata.h"
#include "ui/advancedwindow.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QTimer>
#include <QVariantList>
#include <QVector>

#include <memory>
#include <optional>

class AudioPlayer;
class Database;
class DatabaseSession;
class MetaDataDialog;
class OperationReply;
class QAction;
class QLabel;
class QMenu;
class Settings;
class WhiteButton;

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
    /// Scans files and folders into the current table; ignored while another command runs and while the window closes.
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
    void showAboutDialog();
    void chooseWorkFolder();
    /// Keeps the current record, to be made current again after the next requery.
    void saveSelection();
    /// One step up or down, clamped to 0 and 100; several quick calls each count.
    void increaseCurrentMetaDataRating();
    void decreaseCurrentMetaDataRating();
    void openCurrentMetaDataRow();
    void revealCurrentFileInSystemFileManager();
    void addToPlaylist();
    void removeFromPlaylist();
    void deleteSelectedRecords();
    void copySelectedFilesToWorkFolder();
    void showMetaDataContextMenu(const QPoint& point);
    void handleCurrentRowChange();
    /// Plays the one selected record from its beginning, or stops what plays.
    void playCurrentMetaDataRow();
    void resetAudioPlayer();
    void updatePlaybackButtons();
    void updatePlaybackControls();
    void updatePlaybackSlider(qreal position);
    void updatePlaybackVolumeSlider();

protected:
    QSize preferredSize() const override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private slots:
    void on_viewAllButton_clicked();
    void on_viewLastScannedButton_clicked();
    void on_viewPlaylistButton_clicked();
    void on_playbackButton_clicked();
    void on_playbackSlider_sliderReleased();
    void on_playbackVolumeSlider_valueChanged(int value);
    void on_scanFilesAction_triggered();
    void on_deleteAllAction_triggered();
    void on_evaluateLibrariesAction_triggered();
    void on_libraryEvaluationRulesAction_triggered();
    void on_searchAndReplaceAction_triggered();
    void on_rebuildDatabaseAction_triggered();
    void on_tableDisplayNamesAction_triggered();
    void on_workFolderAction_triggered();
    void on_exportAction_triggered();
    void on_printReportAction_triggered();
    void on_backupDatabaseAction_triggered();
    void on_restoreDatabaseAction_triggered();

private:
    /// What the store says of one record now.
    struct StoredRecord
    {
        /// Null when it is gone or could not be read.
        MetaData record;
        bool isGone = false;
        /// Why it could not be read, as far as that is known.
        QString failure;
    };

    void buildInterface();
    void fitTexts();
    void measurePanel();
    void letButtonsShrink();
    int smallestPanelWidth() const;
    void fitPanel(int width);
    void setLogoVisible(bool isVisible);
    QVector<WhiteButton*> recordButtons() const;
    void narrowRecordButtons(int narrowing);
    void buildRecordMenu();
    void connectButtons();
    void buildEmptyTableHint();
    void setUpBusySprite();
    void setUpPlayback();
    void setUpState();
    void createDatabase();
    void openDatabase();
    bool askToTryAgain();
    bool askToReinitialiseDatabase();
    bool moveDatabaseAway();
    void connectDatabase();
    void connectView();
    void connectPlayback();
    void connectStateSaving();
    void playRestingRow();
    /// Why nothing is heard; empty while there is no reason.
    QString playbackFault() const;
    void showPlaybackFaultOnce();
    /// The user's rules, or the ones that come with the program; nothing, and the user is told, when they cannot be
    /// read.
    std::optional<QString> libraryEvaluationRules();
    bool editLibraryEvaluationRules();
    QString chooseFolderToScan();
    void showScanOutcome(bool showLastScannedOnly);
    void endSession();

    /// True while no write, query or count is under way: what the table shows is what is stored.
    bool isSettled() const;
    /// Waits for that without taking the user's input; false when the application quits instead.
    bool waitUntilSettled();
    /// The ids of the selected records that the table shows or has shown lately.
    QSet<qint64> shownSelectedIds() const;
    /// One field of every selected record; empty when nothing is selected or it failed.
    QVariantList gatherSelected(const QString& fieldName);
    /// The ids of the selected records; empty when they are not (all) those that the user saw selected.
    QVariantList gatherSelectedIds(const QSet<qint64>& seenIds);
    void setSelectedOnPlaylist(bool isOnPlaylist);
    void tellNothingWasDeleted(const QString& errorText);
    bool prepareView();
    void copyToWorkFolder(const QStringList& filePaths);
    void tellBackupIsMade(const QString& damage);
    void finishRestore(DatabaseRestore::Outcome outcome, const QString& errorText);
    void tellDatabaseIsClosed(const QString& title);

    /// Null without a current record, or before it has been read.
    MetaData currentRecord() const;
    StoredRecord storedRecord(qint64 id);
    void tellNothingWasSaved(const QString& title, const StoredRecord& stored);
    /// The record to return to is no longer wanted, nor is the answer where it stands.
    void forgetSavedRow();
    bool saveEdits(qint64 id, const MetaDataDialog& dialog);
    bool storeRecord(const MetaData& record);
    void changeCurrentRating(double step);
    void applyWaitingRatingSteps();
    void forgetShownRatings();
    MetaData recordToRate(qint64 id);
    void rateRecord(MetaData record, double step);
    /// Before any other write, another table and the end: every press is sent to the store, then forgotten here.
    void finishRatings();
    /// What is known of rated records may no longer be true.
    void forgetRatings();
    Database* database() const;

    std::unique_ptr<Ui::MainWindow> m_ui;
    Settings* m_settings;
    std::unique_ptr<DatabaseSession> m_session;
    QString m_dataFolder;
    QString m_rulesFilePath;
    QString m_workFolderPath;
    AudioPlayer* m_audioPlayer = nullptr;
    // What is told of the last file when it could not be played, and what was told last.
    QString m_unplayableFile;
    QString m_shownPlaybackFault;
    // Id of the record to return to after a requery; 0 when there is none.
    qint64 m_savedRow = 0;
    // Finds that record's row, or null; deletes itself.
    OperationReply* m_rowLookup = nullptr;
    QMenu* m_openTableMenu;
    QMenu* m_recordMenu;
    // Of the record menu, in its order.
    QList<QAction*> m_recordActions;
    QLabel* m_emptyTableHint = nullptr;
    // In device-independent pixels: of a window with room for everything in the panel, and of the word mark with its
    // gap.
    int m_widthForAll = 0;
    int m_widthOfLogo = 0;
    QTimer m_playbackTimer;
    QTimer m_requeryTimer;
    QTimer m_stateSaveTimer;
    bool m_isCommandRunning = false;
    bool m_isEnding = false;
    bool m_isReturningToRecord = false;
    // Writes of single records, or of a whole table, that nobody waits for.
    int m_pendingWrites = 0;
    // Records as this window wrote them last, and steps for records that have to be read again first, by id.
    QHash<qint64, MetaData> m_ratedRecords;
    QHash<qint64, double> m_waitingRatingSteps;
};
