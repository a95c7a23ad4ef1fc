// SPDX-License-Identifier: GPL-3.0-or-later
// What the main window remembers between runs.
#include "app/mainwindow.h"

#include "ui_mainwindow.h"

#include "audio/audioplayer.h"
#include "ui/settings.h"

namespace {

constexpr int firstTable = 1;
constexpr int lastTable = 15;

} // namespace

void MainWindow::restoreWindowState()
{
    const int tableId = m_settings->value(QStringLiteral("tableId"), firstTable).toInt();
    m_ui->metaDataView->setTableId(qBound(firstTable, tableId, lastTable));
    m_stateSaveTimer.start();
    m_ui->autoPlayButton->setChecked(m_settings->value(QStringLiteral("autoPlaybackEnabled"), false).toBool());
    m_audioPlayer->setVolume(m_settings->value(QStringLiteral("playbackVolume"), 1.0).toDouble());
    m_ui->metaDataView->restoreHeaderState(m_settings->value(QStringLiteral("metaDataViewHeaderState")).toByteArray());
    m_ui->filePathLookupAction->setChecked(m_settings->value(QStringLiteral("filePathLookupEnabled"), false).toBool());
    m_workFolderPath = m_settings->value(QStringLiteral("workFolderPath")).toString();
}

void MainWindow::saveWindowState()
{
    m_stateSaveTimer.stop();
    m_settings->setValue(QStringLiteral("tableId"), m_ui->metaDataView->tableId());
    m_settings->setValue(QStringLiteral("autoPlaybackEnabled"), m_ui->autoPlayButton->isChecked());
    m_settings->setValue(QStringLiteral("playbackVolume"), m_audioPlayer->volume());
    m_settings->setValue(QStringLiteral("metaDataViewHeaderState"), m_ui->metaDataView->saveHeaderState());
    m_settings->setValue(QStringLiteral("filePathLookupEnabled"), m_ui->filePathLookupAction->isChecked());
    m_settings->setValue(QStringLiteral("workFolderPath"), m_workFolderPath);
}
