// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/metadatadialog.h"

#include "ui_metadatadialog.h"

#include "store/valuetext.h"
#include "ui/plaintext.h"
#include "ui/ratingvalidator.h"

#include <QClipboard>
#include <QKeyEvent>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>

#include <algorithm>

namespace {

constexpr int updateDelay = 100; // milliseconds
constexpr double greatestRating = 100.0;
constexpr int sliderStepsPerPoint = 10;
constexpr QChar zeroWidthSpace(8203);

// A wider word may not fit into its place in the dialog.
constexpr int widestWord = 180; // pixels

bool isReturn(const QKeyEvent* event)
{
    return event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
}

// The word with places where its line may end: behind signs that join words, and wherever there is none for long.
QString wrappingWord(const QString& word, const QFontMetrics& metrics)
{
    QString wrapping;
    QString part;
    for (const QChar character : word) {
        part += character;
        const bool isJoint = QStringLiteral("_-.,;+").contains(character);
        if (!character.isHighSurrogate() && (isJoint || metrics.horizontalAdvance(part) >= widestWord)) {
            wrapping += part + zeroWidthSpace;
            part.clear();
        }
    }
    return wrapping + part;
}

QString wrappingText(const QString& text, const QFontMetrics& metrics)
{
    static const QRegularExpression anyWord(QStringLiteral(R"([^\s\x{200b}]+)"));
    QString wrapping;
    int end = 0;
    for (QRegularExpressionMatchIterator words = anyWord.globalMatch(text); words.hasNext();) {
        const QRegularExpressionMatch word = words.next();
        const bool isWide = metrics.horizontalAdvance(word.captured()) > widestWord;
        wrapping += text.mid(end, word.capturedStart() - end);
        wrapping += isWide ? wrappingWord(word.captured(), metrics) : word.captured();
        end = word.capturedEnd();
    }
    return wrapping + text.mid(end);
}

// Who copies a value wants it as it is.
void removeWrappingFrom(QClipboard::Mode mode)
{
    QClipboard* clipboard = QGuiApplication::clipboard();
    const bool isOwn = mode == QClipboard::Selection ? clipboard->ownsSelection() : clipboard->ownsClipboard();
    QString text = isOwn ? clipboard->text(mode) : QString();
    if (text.contains(zeroWidthSpace))
        clipboard->setText(text.remove(zeroWidthSpace), mode);
}

void setValue(QLabel* label, const QString& text)
{
    label->setText(text.isEmpty() ? MetaDataDialog::tr("Undefined") : wrappingText(text, label->fontMetrics()));
    label->setStyleSheet(text.isEmpty() ? QStringLiteral("QLabel { color: gray }") : QString());
}

// A number that no file has stands for one that is not known.
QString numberText(int value)
{
    return value == 0 ? QString() : QString::number(value);
}

QString wrappingPath(QString path)
{
    for (const QChar separator : { QLatin1Char('/'), QLatin1Char('\\') })
        path.replace(separator, QString(separator) + zeroWidthSpace);
    return path;
}

QString ratingText(double rating)
{
    return QString::number(rating, 'f', 1);
}

} // namespace

MetaDataDialog::MetaDataDialog(QWidget* parent)
    : AdvancedDialog(parent)
    , m_ui(std::make_unique<Ui::MetaDataDialog>())
{
    m_ui->setupUi(this);
    m_saveButton = m_ui->buttonBox->button(QDialogButtonBox::Save);
    m_resetButton = m_ui->buttonBox->button(QDialogButtonBox::Reset);
    m_updateTimer.setSingleShot(true);
    m_updateTimer.setInterval(updateDelay);
    setUpControls();
    connectControls();
    resetControls();
}

MetaDataDialog::~MetaDataDialog() = default;

void MetaDataDialog::setUpControls()
{
    m_ui->ratingEdit->setValidator(new RatingValidator(this));
    m_ui->descriptionEdit->installEventFilter(this);
    m_saveButton->setDefault(true);
    const QList<QLabel*> values
        = m_ui->valuesWidget->findChildren<QLabel*>(QRegularExpression(QStringLiteral("Value$")));
    for (QLabel* value : values) {
        // Tags are anybody's text.
        value->setTextFormat(Qt::PlainText);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
}

void MetaDataDialog::connectControls()
{
    connect(&m_updateTimer, &QTimer::timeout, this, &MetaDataDialog::updateButtonBox);
    const auto updateLater = qOverload<>(&QTimer::start);
    connect(m_ui->libraryEdit, &QLineEdit::textChanged, &m_updateTimer, updateLater);
    connect(m_ui->descriptionEdit, &QPlainTextEdit::textChanged, &m_updateTimer, updateLater);
    connect(m_ui->ratingEdit, &QLineEdit::textChanged, &m_updateTimer, updateLater);
    connect(m_ui->ratingEdit, &QLineEdit::textChanged, this, &MetaDataDialog::updateRatingValueSlider);
    connect(m_ui->ratingSlider, &QSlider::valueChanged, this, &MetaDataDialog::updateRatingValueEdit);
    connect(m_ui->buttonBox, &QDialogButtonBox::accepted, this, &MetaDataDialog::accept);
    connect(m_ui->buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_resetButton, &QAbstractButton::clicked, this, &MetaDataDialog::resetControls);
    connect(QGuiApplication::clipboard(), &QClipboard::changed, this, &removeWrappingFrom);
}

void MetaDataDialog::setMetaData(const MetaData& record)
{
    m_record = record;
    m_editedRecord = record;
    resetControls();
    adjustSize();
}

void MetaDataDialog::resetControls()
{
    if (m_record.isNull()) {
        unsetControls();
        return;
    }
    fillLabels();
    fillEditors();
    setEditorsEnabled(true);
    m_ui->descriptionEdit->setFocus();
    m_ui->descriptionEdit->moveCursor(QTextCursor::End);
    m_filledTexts = editedTexts();
    updateButtonBox();
}

void MetaDataDialog::unsetControls()
{
    const QList<QLabel*> values
        = m_ui->valuesWidget->findChildren<QLabel*>(QRegularExpression(QStringLiteral("Value$")));
    for (QLabel* value : values)
        setValue(value, QString());
    m_ui->libraryEdit->clear();
    m_ui->descriptionEdit->clear();
    m_ui->ratingEdit->clear();
    m_ui->ratingSlider->setValue(0);
    // The slider wrote its value into the edit.
    m_ui->ratingEdit->clear();
    setEditorsEnabled(false);
    m_filledTexts = editedTexts();
    updateButtonBox();
}

void MetaDataDialog::fillLabels()
{
    setValue(m_ui->filePathValue, wrappingPath(m_record.filePath()));
    setValue(m_ui->fileNameValue, m_record.fileName());
    setValue(m_ui->fileTypeValue, m_record.fileType());
    setValue(m_ui->durationValue, durationText(m_record.duration()));
    const QString sampleRate = numberText(m_record.sampleRate());
    setValue(m_ui->sampleRateValue, sampleRate.isEmpty() ? sampleRate : tr("%1 Hz").arg(sampleRate));
    setValue(m_ui->bitsPerSampleValue, numberText(m_record.bitsPerSample()));
    setValue(m_ui->channelsCountValue, numberText(m_record.channelsCount()));
    setValue(m_ui->bitrateValue, m_record.bitrate());
    setValue(m_ui->titleValue, m_record.title());
    setValue(m_ui->artistValue, m_record.artist());
    setValue(m_ui->albumValue, m_record.album());
    setValue(m_ui->yearValue, m_record.year());
    setValue(m_ui->genreValue, m_record.genre());
    setValue(m_ui->commentsValue, m_record.comments());
    setValue(m_ui->originReferenceValue, m_record.originReference());
}

void MetaDataDialog::fillEditors()
{
    m_ui->libraryEdit->setText(m_record.library());
    m_ui->descriptionEdit->setPlainText(m_record.description());
    m_ui->ratingEdit->setText(ratingText(m_record.rating()));
}

void MetaDataDialog::setEditorsEnabled(bool enabled)
{
    const QList<QWidget*> editors{ m_ui->libraryEdit, m_ui->descriptionEdit, m_ui->ratingEdit, m_ui->ratingSlider };
    for (QWidget* editor : editors)
        editor->setEnabled(enabled);
}

MetaDataDialog::EditedTexts MetaDataDialog::editedTexts() const
{
    return { m_ui->libraryEdit->text(), plainTextOf(*m_ui->descriptionEdit->document()), m_ui->ratingEdit->text() };
}

void MetaDataDialog::updateRatingValueEdit(int sliderValue)
{
    if (!m_isSliderFollowing)
        m_ui->ratingEdit->setText(ratingText(double(sliderValue) / sliderStepsPerPoint));
}

void MetaDataDialog::updateRatingValueSlider()
{
    m_isSliderFollowing = true;
    // 0.3 * 10 is a little less than 3.
    constexpr double roundingError = 1e-9;
    m_ui->ratingSlider->setValue(int(m_ui->ratingEdit->text().toDouble() * sliderStepsPerPoint + roundingError));
    m_isSliderFollowing = false;
}

void MetaDataDialog::updateButtonBox()
{
    m_updateTimer.stop();
    const EditedTexts texts = editedTexts();
    const bool isChanged = texts.library != m_filledTexts.library || texts.description != m_filledTexts.description
        || texts.rating != m_filledTexts.rating;
    m_saveButton->setEnabled(isChanged);
    m_resetButton->setEnabled(isChanged);
}

void MetaDataDialog::accept()
{
    updateButtonBox();
    if (!m_saveButton->isEnabled())
        return;
    const EditedTexts texts = editedTexts();
    m_editedRecord = m_record;
    if (texts.library != m_filledTexts.library)
        m_editedRecord.setLibrary(texts.library);
    if (texts.description != m_filledTexts.description)
        m_editedRecord.setDescription(texts.description);
    // No text is no rating: 0.
    if (texts.rating != m_filledTexts.rating)
        m_editedRecord.setRating(qBound(0.0, texts.rating.toDouble(), greatestRating));
    AdvancedDialog::accept();
}

void MetaDataDialog::adjustSize()
{
    constexpr double greatestPart = 0.45; // of the screen's height, for the values alone
    const int available = screen()->availableGeometry().height();
    ensurePolished();
    layout()->activate();
    const int width = m_ui->valuesArea->minimumWidth();
    const int wanted = m_ui->valuesWidget->heightForWidth(width);
    const int greatest = int(available * greatestPart);
    m_ui->valuesArea->setFixedHeight(std::min(wanted < 0 ? m_ui->valuesWidget->sizeHint().height() : wanted, greatest));
    AdvancedDialog::adjustSize();
}

bool MetaDataDialog::eventFilter(QObject* watched, QEvent* event)
{
    const bool isKey = watched == m_ui->descriptionEdit && event->type() == QEvent::KeyPress;
    if (isKey && isReturn(static_cast<QKeyEvent*>(event))) {
        // What was typed last may not have been looked at yet.
        updateButtonBox();
        QMetaObject::invokeMethod(m_saveButton, &QAbstractButton::click, Qt::QueuedConnection);
        return true;
    }
    return AdvancedDialog::eventFilter(watched, event);
}

void MetaDataDialog::keyPressEvent(QKeyEvent* event)
{
    // In the other editors Return presses Save, too.
    if (isReturn(event))
        updateButtonBox();
    AdvancedDialog::keyPressEvent(event);
}
