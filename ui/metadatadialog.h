// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/metadata.h"
#include "ui/advanceddialog.h"

#include <QTimer>

#include <memory>

class QAbstractButton;
class QLabel;
class QPushButton;

namespace Ui {
class MetaDataDialog;
}

/// Shows every field of one record and lets the user change its library, description and rating.
///
/// The caller sets a record, runs the dialog and, when it was accepted, reads the record back: only the fields that the
/// user changed differ. Owner: the stack of a command. Thread: GUI.
class MetaDataDialog : public AdvancedDialog
{
    Q_OBJECT

public:
    explicit MetaDataDialog(QWidget* parent = nullptr);
    ~MetaDataDialog() override;

    /// A null record shows "Undefined" everywhere and cannot be edited.
    void setMetaData(const MetaData& record);
    MetaData metaData() const { return m_editedRecord; }

public slots:
    /// Takes the changes over; does nothing while there are none. Run again, the dialog still holds them.
    void accept() override;
    /// As high as the record needs, at most two thirds of the screen; what is left scrolls.
    void adjustSize();
    void unsetControls();
    /// Shows the record as it was set.
    void resetControls();
    void updateRatingValueSlider();
    /// The slider counts tenths.
    void updateRatingValueEdit(int sliderValue);
    /// Save and Reset are enabled while an editor holds another text than it was filled with.
    void updateButtonBox();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    // What the editors hold; compared as the editors give it back, since they normalise line ends.
    struct EditedTexts
    {
        QString library;
        QString description;
        QString rating;
    };

    void setUpControls();
    void connectControls();
    void fillLabels();
    void fillEditors();
    void setEditorsEnabled(bool enabled);
    EditedTexts editedTexts() const;

    std::unique_ptr<Ui::MetaDataDialog> m_ui;
    QPushButton* m_saveButton;
    QPushButton* m_resetButton;
    // As it was set, and with the changes taken over.
    MetaData m_record;
    MetaData m_editedRecord;
    EditedTexts m_filledTexts;
    QTimer m_updateTimer;
    bool m_isSliderFollowing = false;
};
