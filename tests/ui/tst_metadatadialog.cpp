// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/metadatadialog.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QSlider>
#include <QtTest>

namespace {

MetaData fullRecord()
{
    MetaData record({ { "id", 7 }, { "filePath", "/sounds/rain/<b>Tin & roof</b>.wav" },
        { "fileName", "<b>Tin & roof</b>.wav" }, { "fileType", "wav" }, { "library", "Rain Works" },
        { "description", "Heavy rain\r\non tin" }, { "duration", 61.2 }, { "rating", 75.0 } });
    record.setSampleRate(48000);
    record.setBitsPerSample(24);
    record.setChannelsCount(2);
    record.setBitrate("2304 Kbps");
    record.setTitle("Tin roof");
    record.setArtist("A. Recordist");
    record.setAlbum("Weather");
    record.setYear("2024");
    record.setComments("Two microphones");
    record.setOriginReference("REF-1");
    return record;
}

struct Dialog : MetaDataDialog
{
    explicit Dialog(const MetaData& record = fullRecord()) { setMetaData(record); }

    QString value(const char* name) const { return findChild<QLabel*>(QString(name) + "Value")->text(); }
    QLineEdit* library() const { return findChild<QLineEdit*>("libraryEdit"); }
    QLineEdit* rating() const { return findChild<QLineEdit*>("ratingEdit"); }
    QPlainTextEdit* description() const { return findChild<QPlainTextEdit*>("descriptionEdit"); }
    QSlider* slider() const { return findChild<QSlider*>("ratingSlider"); }
    QPushButton* button(QDialogButtonBox::StandardButton which) const
    {
        return findChild<QDialogButtonBox*>("buttonBox")->button(which);
    }
    QPushButton* save() const { return button(QDialogButtonBox::Save); }
    QPushButton* reset() const { return button(QDialogButtonBox::Reset); }
    void appear()
    {
        show();
        QVERIFY(QTest::qWaitForWindowActive(this));
    }
};

} // namespace

class MetaDataDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void everyFieldIsShown_data();
    void everyFieldIsShown();
    void captionsHaveTheirTexts();
    void missingValueIsUndefinedInGrey();
    void pathMayBeWrappedBehindEachSeparator();
    void focusIsAtTheEndOfTheDescription();
    void typedRatingMovesTheSlider();
    void draggedSliderWritesTheRating();
    void impossibleRatingsCannotBeTyped_data();
    void impossibleRatingsCannotBeTyped();
    void ratingIsTypedWithAPointInEveryLocale();
    void saveAndResetFollowTheChanges();
    void untouchedLineEndsAreNoChange();
    void tabLeavesTheDescription();
    void returnInTheDescriptionSaves();
    void returnSavesWhatWasTypedJustBefore_data();
    void returnSavesWhatWasTypedJustBefore();
    void resetPutsEverythingBack();
    void nullRecordShowsNothingToEdit();
    void onlyTheUserFieldsChange();
    void descriptionThatWasNotTouchedKeepsItsLineEnds();
    void noRatingTextIsZero();
    void acceptWithoutChangesDoesNothing();
    void noBreakSpacesOfTheDescriptionStay();
    void longCommentsScrollInsideTheDialog();
    void longWordsAreWrapped();
    void copiedValueIsThatOfTheRecord();
};

void MetaDataDialogTest::everyFieldIsShown_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("fileName") << "<b>Tin & roof</b>.wav";
    QTest::newRow("fileType") << "wav";
    QTest::newRow("duration") << "01:02";
    QTest::newRow("sampleRate") << "48000 Hz";
    QTest::newRow("bitsPerSample") << "24";
    QTest::newRow("channelsCount") << "2";
    QTest::newRow("bitrate") << "2304 Kbps";
    QTest::newRow("title") << "Tin roof";
    QTest::newRow("artist") << "A. Recordist";
    QTest::newRow("album") << "Weather";
    QTest::newRow("year") << "2024";
    QTest::newRow("comments") << "Two microphones";
    QTest::newRow("originReference") << "REF-1";
}

void MetaDataDialogTest::everyFieldIsShown()
{
    const Dialog dialog;
    auto* label = dialog.findChild<QLabel*>(QTest::currentDataTag() + QString("Value"));

    QTEST(label->text(), "text");
    QCOMPARE(label->styleSheet(), QString());
    QCOMPARE(label->textFormat(), Qt::PlainText);
}

void MetaDataDialogTest::captionsHaveTheirTexts()
{
    const Dialog dialog;
    QStringList texts;
    const QList<QLabel*> labels = dialog.findChildren<QLabel*>(QRegularExpression("Label$"));
    for (const QLabel* label : labels)
        texts.append(label->text());
    texts.sort();
    QStringList expected{ "File Path:", "File Name:", "Type:", "Duration:", "Sample Rate:", "Bits per Sample:",
        "Channels Count:", "Bitrate:", "Title:", "Artist:", "Album:", "Year:", "Genre:", "Comments:",
        "Origin/Reference:", "Library:", "Description:", "Rating:", "0.0", "100.0" };
    expected.sort();

    QCOMPARE(texts, expected);
    QCOMPARE(dialog.windowTitle(), QString("Media Meta Data"));
}

void MetaDataDialogTest::missingValueIsUndefinedInGrey()
{
    const Dialog dialog;

    QCOMPARE(dialog.value("genre"), QString("Undefined"));
    QCOMPARE(dialog.findChild<QLabel*>("genreValue")->styleSheet(), QString("QLabel { color: gray }"));
}

void MetaDataDialogTest::pathMayBeWrappedBehindEachSeparator()
{
    MetaData record = fullRecord();
    record.setFilePath("/a/b\\c.wav");
    const Dialog dialog(record);
    const QString space = QChar(8203);

    QCOMPARE(dialog.value("filePath"), "/" + space + "a/" + space + "b\\" + space + "c.wav");
}

void MetaDataDialogTest::focusIsAtTheEndOfTheDescription()
{
    Dialog dialog;
    dialog.appear();

    QVERIFY(dialog.description()->hasFocus());
    QVERIFY(dialog.description()->textCursor().atEnd());
}

void MetaDataDialogTest::typedRatingMovesTheSlider()
{
    const Dialog dialog;
    dialog.rating()->selectAll();

    QTest::keyClicks(dialog.rating(), "55.5");

    QCOMPARE(dialog.slider()->value(), 555);
    QCOMPARE(dialog.rating()->text(), QString("55.5"));
}

void MetaDataDialogTest::draggedSliderWritesTheRating()
{
    const Dialog dialog;

    dialog.slider()->setValue(333);

    QCOMPARE(dialog.rating()->text(), QString("33.3"));
}

void MetaDataDialogTest::impossibleRatingsCannotBeTyped_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("left");
    QTest::newRow("a little too much") << "100.5"
                                       << "100.";
    QTest::newRow("far too much") << "1000"
                                  << "100";
    QTest::newRow("negative") << "-1"
                              << "1";
    QTest::newRow("two decimals") << "5.55"
                                  << "5.5";
    QTest::newRow("letters") << "a7b"
                             << "7";
    QTest::newRow("exponent") << "1e1"
                              << "11";
    QTest::newRow("comma") << "5,5"
                           << "55";
}

void MetaDataDialogTest::impossibleRatingsCannotBeTyped()
{
    QFETCH(QString, typed);
    const Dialog dialog;
    dialog.rating()->clear();

    QTest::keyClicks(dialog.rating(), typed);

    QTEST(dialog.rating()->text(), "left");
}

void MetaDataDialogTest::ratingIsTypedWithAPointInEveryLocale()
{
    QLocale::setDefault(QLocale(QLocale::German));
    const Dialog dialog;
    QLocale::setDefault(QLocale::c());

    QCOMPARE(dialog.rating()->text(), QString("75.0"));
    QVERIFY(dialog.rating()->hasAcceptableInput());
}

void MetaDataDialogTest::saveAndResetFollowTheChanges()
{
    const Dialog dialog;
    QVERIFY(!dialog.save()->isEnabled());
    QVERIFY(!dialog.reset()->isEnabled());

    dialog.description()->appendPlainText("x");

    QTRY_VERIFY(dialog.save()->isEnabled());
    QVERIFY(dialog.reset()->isEnabled());
    dialog.description()->undo();
    QTRY_VERIFY(!dialog.save()->isEnabled());
    QVERIFY(!dialog.reset()->isEnabled());
}

void MetaDataDialogTest::untouchedLineEndsAreNoChange()
{
    const Dialog dialog;

    QCOMPARE(dialog.description()->toPlainText(), QString("Heavy rain\non tin"));
    dialog.library()->setText("other");
    QTRY_VERIFY(dialog.save()->isEnabled());
    dialog.library()->setText("Rain Works");
    QTRY_VERIFY(!dialog.save()->isEnabled());
}

void MetaDataDialogTest::tabLeavesTheDescription()
{
    Dialog dialog;
    dialog.appear();

    QTest::keyClick(dialog.description(), Qt::Key_Tab);

    QTRY_VERIFY(dialog.rating()->hasFocus());
    QCOMPARE(dialog.description()->toPlainText(), QString("Heavy rain\non tin"));
}

void MetaDataDialogTest::returnInTheDescriptionSaves()
{
    Dialog dialog;
    dialog.appear();
    const QSignalSpy accepted(&dialog, &QDialog::accepted);
    QTest::keyClicks(dialog.description(), " roof");
    QTRY_VERIFY(dialog.save()->isEnabled());

    QTest::keyClick(dialog.description(), Qt::Key_Return);

    QTRY_COMPARE(accepted.count(), 1);
    QCOMPARE(dialog.metaData().description(), QString("Heavy rain\non tin roof"));
}

void MetaDataDialogTest::returnSavesWhatWasTypedJustBefore_data()
{
    QTest::addColumn<QByteArray>("editor");
    QTest::newRow("library") << QByteArray("libraryEdit");
    QTest::newRow("description") << QByteArray("descriptionEdit");
    QTest::newRow("rating") << QByteArray("ratingEdit");
}

void MetaDataDialogTest::returnSavesWhatWasTypedJustBefore()
{
    QFETCH(QByteArray, editor);
    Dialog dialog;
    dialog.appear();
    const QSignalSpy accepted(&dialog, &QDialog::accepted);
    auto* edit = dialog.findChild<QWidget*>(editor);
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_Backspace);

    QTest::keyClick(edit, Qt::Key_Return);

    QTRY_COMPARE(accepted.count(), 1);
}

void MetaDataDialogTest::resetPutsEverythingBack()
{
    const Dialog dialog;
    dialog.library()->setText("L");
    dialog.description()->setPlainText("D");
    dialog.rating()->setText("1");
    QTRY_VERIFY(dialog.reset()->isEnabled());

    dialog.reset()->click();

    QCOMPARE(dialog.library()->text(), QString("Rain Works"));
    QCOMPARE(dialog.description()->toPlainText(), QString("Heavy rain\non tin"));
    QCOMPARE(dialog.rating()->text(), QString("75.0"));
    QCOMPARE(dialog.slider()->value(), 750);
    QVERIFY(!dialog.save()->isEnabled());
}

void MetaDataDialogTest::nullRecordShowsNothingToEdit()
{
    const Dialog dialog{ MetaData() };
    const QList<QLabel*> values = dialog.findChildren<QLabel*>(QRegularExpression("Value$"));

    QCOMPARE(values.size(), 15);
    for (const QLabel* value : values)
        QCOMPARE(value->text(), QString("Undefined"));
    QVERIFY(!dialog.library()->isEnabled() && !dialog.description()->isEnabled());
    QVERIFY(!dialog.rating()->isEnabled() && !dialog.slider()->isEnabled());
    QCOMPARE(dialog.rating()->text(), QString());
    QCOMPARE(dialog.slider()->value(), 0);
    QVERIFY(!dialog.save()->isEnabled());
}

void MetaDataDialogTest::onlyTheUserFieldsChange()
{
    Dialog dialog;
    dialog.library()->setText("New");
    dialog.description()->setPlainText("Words");
    dialog.rating()->setText("99.9");

    dialog.accept();

    QVariantMap expected = fullRecord().toVariantMap();
    expected.insert("library", "New");
    expected.insert("description", "Words");
    expected.insert("rating", 99.9);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(dialog.metaData().toVariantMap(), expected);
}

void MetaDataDialogTest::descriptionThatWasNotTouchedKeepsItsLineEnds()
{
    Dialog dialog;
    dialog.library()->setText("New");

    dialog.accept();

    QCOMPARE(dialog.metaData().description(), QString("Heavy rain\r\non tin"));
}

void MetaDataDialogTest::noRatingTextIsZero()
{
    Dialog dialog;
    dialog.rating()->clear();

    dialog.accept();

    QCOMPARE(dialog.metaData().rating(), 0.0);
    QCOMPARE(dialog.slider()->value(), 0);
}

void MetaDataDialogTest::acceptWithoutChangesDoesNothing()
{
    Dialog dialog;
    const QSignalSpy accepted(&dialog, &QDialog::accepted);

    dialog.accept();

    QCOMPARE(accepted.count(), 0);
}

void MetaDataDialogTest::longCommentsScrollInsideTheDialog()
{
    MetaData record = fullRecord();
    record.setComments(QString("Many words about this sound. ").repeated(2000));
    Dialog dialog(record);
    dialog.appear();

    QVERIFY(dialog.height() <= dialog.screen()->availableGeometry().height());
    QVERIFY(dialog.save()->isVisible());
}

void MetaDataDialogTest::noBreakSpacesOfTheDescriptionStay()
{
    MetaData record = fullRecord();
    record.setDescription(QString("Gare%1: train").arg(QChar(QChar::Nbsp)));
    Dialog dialog(record);
    dialog.appear();
    QTest::keyClicks(dialog.description(), "!");

    dialog.accept();

    QCOMPARE(dialog.metaData().description(), record.description() + '!');
}

void MetaDataDialogTest::longWordsAreWrapped()
{
    MetaData record = fullRecord();
    record.setFileName(QString("AMB_Station_Platform_").repeated(6) + ".wav");
    record.setTitle(QString("x").repeated(120));
    record.setArtist(QString::fromUtf8("\xf0\x9f\x94\x94").repeated(60));
    Dialog dialog(record);
    dialog.appear();

    const auto* values = dialog.findChild<QWidget*>("valuesWidget");
    QTRY_COMPARE(values->width(), values->parentWidget()->width());
    QCOMPARE(dialog.value("fileName").remove(QChar(8203)), record.fileName());
    QCOMPARE(dialog.value("title").remove(QChar(8203)), record.title());
    QCOMPARE(dialog.value("artist").remove(QChar(8203)), record.artist());
    QCOMPARE(dialog.value("comments"), record.comments());
}

void MetaDataDialogTest::copiedValueIsThatOfTheRecord()
{
    MetaData record = fullRecord();
    record.setFileName(QString("AMB_Station_Platform_").repeated(6) + ".wav");
    Dialog dialog(record);
    dialog.appear();
    auto* label = dialog.findChild<QLabel*>("fileNameValue");
    label->setSelection(0, label->text().size());
    QVERIFY(label->selectedText().contains(QChar(8203)));

    QTest::keyClick(label, Qt::Key_C, Qt::ControlModifier);

    QTRY_COMPARE(QGuiApplication::clipboard()->text(), record.fileName());
}

QTEST_MAIN(MetaDataDialogTest)
#include "tst_metadatadialog.moc"
