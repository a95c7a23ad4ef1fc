// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "browse/metadatahandler.h"

#include <QString>
#include <QStringList>

#include <memory>

class QSaveFile;

/// Writes the records of a view to a tab-separated text file: UTF-8 without a mark, one line a record ended by a line
/// feed, a header row with the names of the fields.
///
/// A tab inside a value becomes a blank, line feeds stay. The file appears under its name only when it is whole and on
/// the disk; until then, and when the run fails or is canceled, what stood there before stays as it was. Only a file
/// that may be written in a folder that may not is written in place. The store's own file is refused.
///
/// Errors besides those of the reading: "Invalid file name: %1", "Unable to open file: %1", "Unable to write file: %1".
///
/// Owner: the command that runs it. Thread: GUI.
class MetaDataExporter final : public MetaDataHandler
{
    Q_OBJECT

public:
    explicit MetaDataExporter(QObject* parent = nullptr);
    ~MetaDataExporter() override;

    /// The absolute path of the file, exactly as it shall be named.
    void setFilePath(const QString& filePath);
    /// The fields in the order of their columns; names that no record has are dropped.
    void setExportFields(const QStringList& fields);
    QStringList exportFields() const { return m_exportFields; }

protected:
    void beginOutput() override;
    void handlePage(const MetaDataList& items) override;
    void completeOutput() override;
    void releaseOutput() override;

private:
    QByteArray lineOf(const MetaData& record) const;
    void write(const QByteArray& bytes);

    QString m_filePath;
    QStringList m_exportFields;
    // Null between two runs.
    std::unique_ptr<QSaveFile> m_file;
};
