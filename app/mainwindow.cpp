// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "ui_mainwindow.h"

#include "app/commandguard.h"
#include "app/databasefiles.h"
#include "app/databasesession.h"
#include "app/operations.h"
#include "audio/audioplayer.h"
#include "browse/metadatamodel.h"
#include "ui/settings.h"
#include "ui/warrantydisclaimerdialog.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDebug>
#include <QDir>
#include <QItemSelectionModel>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QStandardPaths>
#include <QVBoxLayout>

namespace {

constexpr int requeryDelay = 20; // milliseconds
constexpr int stateSaveDelay = 1000; // milliseconds
constexpr int busySpriteSize = 20; // pixels
constexpr int busySpriteRate = 12; // frames per second

} // namespace

MainWindow::MainWindow(QWidget* parent)
    : AdvancedWindow(QStringLiteral("MainWindow"), parent)
    , m_ui(std::make_unique<Ui::MainWindow>())
    , m_settings(new Settings(QStringLiteral("MainWindow"), this))
    , m_dataFolder(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation))
    , m_rulesFilePath(QDir(m_dataFolder).filePath(QStringLiteral("LibraryEvaluationRules.txt")))
    , m_openTableMenu(new QMenu(this))
    , m_recordMenu(new QMenu(this))
{
    buildInterface();
    buildRecordMenu();
    connectButtons();
    buildEmptyTableHint();
    setUpBusySprite();
    setUpPlayback();
    setUpState();
    createDatabase();
    openDatabase();
    connectDatabase();
    connectView();
    connectPlayback();
    m_ui->metaDataView->setDatabase(database(), m_ui->metaDataView->tableId());
    updateWindowTitle();
    updateOpenTableMenu();
    updateRowCountersLabel();
    connectStateSaving();
    connect(this, &AdvancedWindow::showed, this, &MainWindow::showWarrantyDisclaimerDialog);
}

MainWindow::~MainWindow()
{
    endSession();
}

Database* MainWindow::database() const
{
    return m_session->database();
}

bool MainWindow::isDatabaseOpened() const
{
    return database()->isOpened();
}

void MainWindow::buildInterface()
{
    m_ui->setupUi(this);
    m_ui->fileMenu->insertSeparator(m_ui->quitAction);
    m_ui->openTableAction->setMenu(m_openTableMenu);
    m_ui->columnsAction->setMenu(m_ui->metaDataView->columnsMenu());
    connect(m_ui->quitAction, &QAction::triggered, this, &QWidget::close);
    connect(m_ui->filePathLookupAction, &QAction::toggled, m_ui->metaDataView, &MetaDataView::setFilePathLookupEnabled);
    fitTexts();
    measurePanel();
    setPreparedCentralWidget(takeCentralWidget(), m_ui->metaDataView);
}

void MainWindow::buildRecordMenu()
{
    const auto addAction = [this](const QString& text, void (MainWindow::*slot)()) {
        QAction* action = m_recordMenu->addAction(text);
        connect(action, &QAction::triggered, this, slot);
        m_recordActions.append(action);
        return action;
    };
    addAction(tr("Show Info…"), &MainWindow::openCurrentMetaDataRow);
    addAction(tr("Reveal In %1").arg(tr("Explorer")), &MainWindow::revealCurrentFileInSystemFileManager);
    QAction* copyAction = addAction(tr("Copy To Work Folder"), &MainWindow::copySelectedFilesToWorkFolder);
    addAction(tr("Add to Playlist"), &MainWindow::addToPlaylist);
    addAction(tr("Remove from Playlist"), &MainWindow::removeFromPlaylist);
    m_recordMenu->addSeparator();
    addAction(tr("Delete Selected"), &MainWindow::deleteSelectedRecords);
    // A shortcut of a menu that pops up works only while the table has the action too.
    copyAction->setShortcut(QKeySequence(Qt::SHIFT + Qt::Key_C));
    copyAction->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    m_ui->metaDataView->addAction(copyAction);
}

void MainWindow::connectButtons()
{
    const QList<QPushButton*> buttons{ m_ui->showInfoButton, m_ui->revealInSystemFileManager,
        m_ui->copyToWorkFolderButton, m_ui->addToPlaylistButton, m_ui->removeFromPlaylistButton };
    for (int index = 0; index < buttons.size(); ++index)
        connect(buttons.at(index), &QPushButton::clicked, m_recordActions.at(index), &QAction::trigger);
    connect(m_ui->scanFilesButton, &QPushButton::clicked, m_ui->scanFilesAction, &QAction::trigger);
    connect(m_ui->workFolderButton, &QPushButton::clicked, this, &MainWindow::chooseWorkFolder);
    connect(m_ui->aboutAction, &QAction::triggered, this, &MainWindow::showAboutDialog);
    connect(m_ui->logoWidget, &LogoWidget::clicked, this, &MainWindow::showAboutDialog);
}

void MainWindow::buildEmptyTableHint()
{
    QWidget* viewport = m_ui->metaDataView->viewport();
    m_emptyTableHint = new QLabel(
        tr("This table is empty.\nDrop files or folders here, or choose \"Scan Files…\" to fill it."), viewport);
    m_emptyTableHint->setObjectName(QStringLiteral("emptyTableHint"));
    m_emptyTableHint->setAlignment(Qt::AlignCenter);
    m_emptyTableHint->setWordWrap(true);
    QPalette palette = m_emptyTableHint->palette();
    palette.setColor(m_emptyTableHint->foregroundRole(), palette.color(QPalette::PlaceholderText));
    m_emptyTableHint->setPalette(palette);
    // Drops and clicks are the table's.
    m_emptyTableHint->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_emptyTableHint->hide();
    auto* layout = new QVBoxLayout(viewport);
    layout->addWidget(m_emptyTableHint);
}

void MainWindow::setUpBusySprite()
{
    m_ui->progressIconWidget->setAnimatedPixmap(
        QPixmap(QStringLiteral(":/Resources/Preloader.png")), busySpriteSize, busySpriteSize, busySpriteRate);
    m_ui->progressIconWidget->setPictureVisible(false);
}

void MainWindow::setUpState()
{
    m_stateSaveTimer.setSingleShot(true);
    m_stateSaveTimer.setInterval(stateSaveDelay);
    m_requeryTimer.setSingleShot(true);
    m_requeryTimer.setInterval(requeryDelay);
    connect(&m_requeryTimer, &QTimer::timeout, this, &MainWindow::requery);
    restoreWindowState();
}

void MainWindow::createDatabase()
{
    QDir(m_dataFolder).mkpath(QStringLiteral("."));
    const QString filePath = QDir(m_dataFolder).filePath(QStringLiteral("VellumcastDB.dat"));
    DatabaseFiles::recoverFromInterruptedRestore(filePath);
    m_session = std::make_unique<DatabaseSession>(filePath);
}

void MainWindow::openDatabase()
{
    bool isGivenUp = false;
    while (!database()->open()) {
        // Without an error the application quits, and nothing is known of the file.
        if (database()->lastError().isEmpty())
            return;
        const bool isLocked = database()->isLockedByAnother();
        // What was wrong may have passed while the user was asked: only a file that fails once more is moved.
        if (isGivenUp && !isLocked) {
            if (!moveDatabaseAway())
                return;
            isGivenUp = false;
            continue;
        }
        qCritical().noquote() << database()->lastError();
        if (!(isLocked ? askToTryAgain() : askToReinitialiseDatabase()))
            return;
        isGivenUp = !isLocked;
    }
}

bool MainWindow::askToTryAgain()
{
    QMessageBox box(QMessageBox::Critical, tr("Database Error"), tr("The database is in use by another program."),
        QMessageBox::Retry | QMessageBox::Cancel, this);
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(tr("%1\n\nClose the other program, or wait until it is done, and try again. Nothing was "
                              "changed.")
                               .arg(database()->lastError()));
    box.setDefaultButton(QMessageBox::Retry);
    return box.exec() == QMessageBox::Retry;
}

bool MainWindow::askToReinitialiseDatabase()
{
    QMessageBox box(QMessageBox::Critical, tr("Database Error"),
        tr("Unable to open existing database file.\nDo you want to re-initialize database?"),
        QMessageBox::Yes | QMessageBox::No, this);
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(tr("This operation will create new empty database file and all your previously entered "
                              "information will be erased.\n\nIf you have created a backup of your database please "
                              "restore it after completing this operation, otherwise you will have to re-scan your "
                              "files."));
    box.setDefaultButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

bool MainWindow::moveDatabaseAway()
{
    if (moveDatabaseToBackup(database()->databaseFilePath()))
        return true;
    showFailure(this, tr("Database Error"),
        tr("Unable to move the existing database file into the folder \"Backup\". Nothing was changed."));
    return false;
}

void MainWindow::connectDatabase()
{
    connect(database(), &Database::tableDisplayNamesChanged, this, &MainWindow::updateWindowTitle);
    connect(database(), &Database::tableDisplayNamesChanged, this, &MainWindow::updateOpenTableMenu);
}

void MainWindow::connectView()
{
    MetaDataView* view = m_ui->metaDataView;
    view->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_ui->lookupEdit, &QLineEdit::textChanged, view, [view](const QString& text) { view->setLookup(text); });
    connect(m_ui->lookupEdit, &QLineEdit::returnPressed, this, &MainWindow::lookup);
    connect(view, &MetaDataView::scanRequested, this, &MainWindow::scan);
    connect(view, &MetaDataView::processingStarted, m_ui->progressIconWidget, &PixmapWidget::showPictureDelayed);
    connect(view, &MetaDataView::processingFinished, m_ui->progressIconWidget, &PixmapWidget::hidePictureDelayed);
    connect(view, &MetaDataView::processingFinished, this, &MainWindow::restoreSavedRow);
    connect(view, &MetaDataView::actualRowsCountChanged, this, &MainWindow::updateRowCountersLabel);
    connect(view, &MetaDataView::actualRowsCountChanged, this, &MainWindow::updateEmptyTableHint);
    connect(view, &MetaDataView::tableChaged, this, &MainWindow::updateWindowTitle);
    connect(view, &MetaDataView::processingFinished, this, &MainWindow::forgetShownRatings);
    connect(view, &MetaDataView::processingFinished, this, &MainWindow::applyWaitingRatingSteps);
    connect(view, &MetaDataView::tableChaged, this, &MainWindow::forgetRatings);
    // The same id is another record there.
    connect(view, &MetaDataView::tableChaged, this, &MainWindow::forgetSavedRow);
    connect(view, &QAbstractItemView::doubleClicked, this, &MainWindow::openCurrentMetaDataRow);
    connect(view, &MetaDataView::returnPressed, this, &MainWindow::openCurrentMetaDataRow);
    connect(view, &MetaDataView::plusPressed, this, &MainWindow::increaseCurrentMetaDataRating);
    connect(view, &MetaDataView::minusPressed, this, &MainWindow::decreaseCurrentMetaDataRating);
    connect(view, &QWidget::customContextMenuRequested, this, &MainWindow::showMetaDataContextMenu);
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this, &MainWindow::updateRowCountersLabel);
}

void MainWindow::connectStateSaving()
{
    // Restoring may have started it.
    m_stateSaveTimer.stop();
    connect(&m_stateSaveTimer, &QTimer::timeout, this, &MainWindow::saveWindowState);
    const auto saveLater = [this] {
        m_stateSaveTimer.start();
    };
    connect(m_ui->autoPlayButton, &QPushButton::toggled, this, saveLater);
    connect(m_audioPlayer, &AudioPlayer::volumeChanged, this, saveLater);
    connect(m_ui->filePathLookupAction, &QAction::toggled, this, saveLater);
    // A session's end quits without closing the window.
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, &MainWindow::saveWindowState);
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, [this] {
        if (isVisible())
            saveGeometry();
    });
}

void MainWindow::showWarrantyDisclaimerDialog()
{
    Settings settings(QStringLiteral("WarrantyDisclaimer"));
    const QString key = QStringLiteral("accepted");
    if (settings.value(key, false).toBool())
        return;
    // A drop reaches the table also below a dialog.
    const CommandGuard guard(m_isCommandRunning);
    WarrantyDisclaimerDialog dialog(this);
    if (dialog.exec() == QDialog::Accepted)
        settings.setValue(key, true);
    else
        QCoreApplication::quit();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    saveWindowState();
    endSession();
    AdvancedWindow::closeEvent(event);
}

void MainWindow::endSession()
{
    // Closing the store waits in an event loop: a window that ends right after its start asks nothing any more.
    disconnect(this, &AdvancedWindow::showed, this, nullptr);
    m_isEnding = true;
    resetAudioPlayer();
    if (!m_session || !m_session->isRunning())
        return;
    finishRatings();
    // First the reader, then the store: nobody asks a closed store for a page.
    m_ui->metaDataView->setDatabase(nullptr, m_ui->metaDataView->tableId());
    m_session->end();
}
