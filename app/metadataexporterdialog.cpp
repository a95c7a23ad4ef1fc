// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/metadataexporterdialog.h"

#include "app/operations.h"
#include "ui/settings.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>

#include <algorithm>
#include <iterator>

namespace {

struct Field
{
    const char* name;
    const char* label;
    bool isCheckedAtFirst;
};

const Field fields[] = {
    { "filePath", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "File Path"), true },
    { "fileName", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "File Name"), true },
    { "fileType", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "File Type"), false },
    { "library", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Library"), true },
    { "description", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Description"), true },
    { "duration", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Duration"), true },
    { "rating", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Rating"), true },
    { "sampleRate", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Sample Rate"), false },
    { "channelsCount", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Channels Count"), false },
    { "bitsPerSample", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Bits Per Sample"), false },
    { "bitrate", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Bitrate"), false },
    { "originReference", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Origin Reference"), false },
    { "artist", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Artist"), false },
    { "title", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Title"), false },
    { "album", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Album"), false },
    { "comments", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Comments"), false },
    { "genre", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Genre"), false },
    { "year", QT_TRANSLATE_NOOP("MetaDataExporterDialog", "Year"), false },
};

constexpr int rowsOfFields = 6;
constexpr int smallSpacing = 9; // pixels
constexpr int largeSpacing = 12;
constexpr int editWidth = 320;

const char fieldProperty[] = "field";

QString fieldOf(const QCheckBox* box)
{
    return box->property(fieldProperty).toString();
}

} // namespace

MetaDataExporterDialog::MetaDataExporterDialog(QWidget* parent)
    : AdvancedDialog(parent)
    , m_allFieldsBox(new QCheckBox(tr("ALL Fields"), this))
    , m_filePathEdit(new QLineEdit(this))
    , m_buttonBox(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this))
{
    setWindowTitle(tr("Export Meta Data"));
    m_allFieldsBox->setObjectName(QStringLiteral("allFieldsBox"));
    m_filePathEdit->setObjectName(QStringLiteral("filePathEdit"));
    m_buttonBox->setObjectName(QStringLiteral("buttonBox"));
    // The spelling is meant to stay.
    auto* fieldsLabel = new QLabel(tr("Fileds to Export:"), this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(largeSpacing, largeSpacing, largeSpacing, largeSpacing);
    layout->setSpacing(largeSpacing);
    layout->addWidget(fieldsLabel);
    layout->addLayout(makeFieldsLayout());
    layout->addWidget(m_allFieldsBox);
    layout->addLayout(makeFileLayout());
    layout->addWidget(m_buttonBox);
    connect(m_allFieldsBox, &QCheckBox::toggled, this, &MetaDataExporterDialog::checkAllFields);
    connect(m_filePathEdit, &QLineEdit::textChanged, this, &MetaDataExporterDialog::updateControls);
    setUpButtons();
    updateControls();
    setFixedSize(sizeHint());
}

QLayout* MetaDataExporterDialog::makeFieldsLayout()
{
    auto* layout = new QGridLayout;
    layout->setHorizontalSpacing(2 * largeSpacing);
    layout->setVerticalSpacing(smallSpacing);
    for (const Field& field : fields) {
        auto* box = new QCheckBox(tr(field.label), this);
        const QString name = QLatin1String(field.name);
        box->setObjectName(name + QLatin1String("Box"));
        box->setProperty(fieldProperty, name);
        box->setChecked(field.isCheckedAtFirst);
        layout->addWidget(box, m_fieldBoxes.size() % rowsOfFields, m_fieldBoxes.size() / rowsOfFields);
        m_fieldBoxes.append(box);
        connect(box, &QCheckBox::toggled, this, &MetaDataExporterDialog::updateControls);
    }
    return layout;
}

QLayout* MetaDataExporterDialog::makeFileLayout()
{
    auto* label = new QLabel(tr("File Name:"), this);
    label->setBuddy(m_filePathEdit);
    m_filePathEdit->setMinimumWidth(editWidth);
    auto* chooseButton = new QPushButton(tr("Choose"), this);
    chooseButton->setObjectName(QStringLiteral("chooseButton"));
    // Return in the edit means to continue.
    chooseButton->setAutoDefault(false);
    connect(chooseButton, &QPushButton::clicked, this, &MetaDataExporterDialog::chooseFile);
    auto* layout = new QHBoxLayout;
    layout->setSpacing(smallSpacing);
    layout->addWidget(label);
    layout->addWidget(m_filePathEdit, 1);
    layout->addWidget(chooseButton);
    return layout;
}

void MetaDataExporterDialog::setUpButtons()
{
    QPushButton* continueButton = m_buttonBox->button(QDialogButtonBox::Ok);
    continueButton->setText(tr("Continue"));
    continueButton->setIcon(QIcon());
    connect(m_buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void MetaDataExporterDialog::setCheckedFields(const QStringList& fields)
{
    for (QCheckBox* box : qAsConst(m_fieldBoxes))
        box->setChecked(fields.contains(fieldOf(box)));
}

QStringList MetaDataExporterDialog::checkedFields() const
{
    QStringList names;
    for (const QCheckBox* box : m_fieldBoxes) {
        if (box->isChecked())
            names.append(fieldOf(box));
    }
    return names;
}

QString MetaDataExporterDialog::filePath() const
{
    return m_filePathEdit->text();
}

void MetaDataExporterDialog::accept()
{
    const QString path = filePath();
    const bool isReplacing = path != m_chosenFilePath && QFileInfo(path).isFile();
    if (isReplacing
        && !askToProceed(
            this, windowTitle(), tr("The file exists already: %1").arg(path), tr("Do you want to replace it?")))
        return;
    AdvancedDialog::accept();
}

void MetaDataExporterDialog::updateControls()
{
    const int checkedCount = checkedFields().size();
    {
        const QSignalBlocker blocker(m_allFieldsBox);
        m_allFieldsBox->setChecked(checkedCount == m_fieldBoxes.size());
    }
    m_buttonBox->button(QDialogButtonBox::Ok)->setEnabled(checkedCount > 0 && !filePath().isEmpty());
}

void MetaDataExporterDialog::checkAllFields(bool isChecked)
{
    for (QCheckBox* box : qAsConst(m_fieldBoxes))
        box->setChecked(isChecked);
}

void MetaDataExporterDialog::chooseFile()
{
    Settings settings(QStringLiteral("MetaDataExporterDialog"));
    const QString key = QStringLiteral("lookupDirectory");
    QFileDialog chooser(this, tr("Choose File to Export Meta Data"), settings.value(key, QDir::homePath()).toString());
    chooser.setAcceptMode(QFileDialog::AcceptSave);
    if (chooser.exec() != QDialog::Accepted || chooser.selectedFiles().isEmpty())
        return;
    const QString path = chooser.selectedFiles().first();
    settings.setValue(key, QFileInfo(path).dir().path());
    m_chosenFilePath = path;
    m_filePathEdit->setText(path);
}
