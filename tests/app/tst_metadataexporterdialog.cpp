// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/metadataexporterdialog.h"

#include "store/fieldcatalogue.h"
#include "ui/settings.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <functional>

namespace {

const QStringList offeredFields{ "filePath", "fileName", "fileType", "library", "description", "duration", "rating",
    "sampleRate", "channelsCount", "bitsPerSample", "bitrate", "originReference", "artist", "title", "album",
    "comments", "genre", "year" };
const QStringList fieldsAtFirst{ "filePath", "fileName", "library", "description", "duration", "rating" };

QPushButton* continueButton(const QWidget& dialog)
{
    return dialog.findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Ok);
}

QCheckBox* allFieldsBox(const QWidget& dialog)
{
    return dialog.findChild<QCheckBox*>("allFieldsBox");
}

void setFilePath(const QWidget& dialog, const QString& path)
{
    dialog.findChild<QLineEdit*>("filePathEdit")->setText(path);
}

QStringList textsOf(const QList<QLabel*>& labels)
{
    QStringList texts;
    for (const QLabel* label : labels)
        texts.append(label->text());
    return texts;
}

// Presses "Choose" and does something with the chooser, which it must leave closed.
void choose(const QWidget& dialog, const std::function<void(QFileDialog&)>& answer)
{
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&]() {
        auto* chooser = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!chooser || !chooser->isVisible())
            return;
        timer.stop();
        answer(*chooser);
    });
    timer.start(20);
    dialog.findChild<QPushButton*>("chooseButton")->click();
}

void chooseName(QFileDialog& chooser, const QString& name)
{
    chooser.findChild<QLineEdit*>("fileNameEdit")->setText(name);
    QTest::keyClick(chooser.findChild<QLineEdit*>("fileNameEdit"), Qt::Key_Return);
}

// Presses "Continue" and answers what is asked then; how often that was.
int continueAndAnswer(const QWidget& dialog, QMessageBox::StandardButton answer)
{
    int questions = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&]() {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        ++questions;
        QCOMPARE(box->defaultButton(), box->button(QMessageBox::No));
        box->button(answer)->click();
    });
    timer.start(20);
    continueButton(dialog)->click();
    return questions;
}

} // namespace

class MetaDataExporterDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void formHasItsTexts();
    void fieldsAreOfferedInOrder();
    void someFieldsAreCheckedAtFirst();
    void checkedFieldsAreReadInTheOrderOffered();
    void allFieldsFollowsTheOthers();
    void allFieldsChecksAndClearsTheOthers();
    void continueNeedsAPathAndAField_data();
    void continueNeedsAPathAndAField();
    void chosenFileIsTakenAndItsFolderKept();
    void chooserThatIsCanceledChangesNothing();
    void returnInThePathContinues();
    void typedPathOfAFileIsAskedAbout_data();
    void typedPathOfAFileIsAskedAbout();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
};

void MetaDataExporterDialogTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    Settings::setFileName(m_folder->filePath("Settings.ini"));
}

void MetaDataExporterDialogTest::cleanup()
{
    Settings::setFileName(QString());
    m_folder.reset();
}

void MetaDataExporterDialogTest::formHasItsTexts()
{
    const MetaDataExporterDialog dialog;

    QCOMPARE(dialog.windowTitle(), QString("Export Meta Data"));
    const QStringList labels = textsOf(dialog.findChildren<QLabel*>());
    QVERIFY(labels.contains("Fileds to Export:"));
    QVERIFY(labels.contains("File Name:"));
    QCOMPARE(allFieldsBox(dialog)->text(), QString("ALL Fields"));
    QCOMPARE(dialog.findChild<QPushButton*>("chooseButton")->text(), QString("Choose"));
    QCOMPARE(continueButton(dialog)->text(), QString("Continue"));
    QCOMPARE(dialog.minimumSize(), dialog.maximumSize());
}

void MetaDataExporterDialogTest::fieldsAreOfferedInOrder()
{
    const MetaDataExporterDialog dialog;
    QStringList fields;
    QStringList labels;
    for (const QCheckBox* box : dialog.findChildren<QCheckBox*>()) {
        if (!box->property("field").isValid())
            continue;
        fields.append(box->property("field").toString());
        labels.append(box->text());
        QVERIFY(allFieldNames().contains(fields.last()));
    }

    QCOMPARE(fields, offeredFields);
    QCOMPARE(labels,
        QStringList({ "File Path", "File Name", "File Type", "Library", "Description", "Duration", "Rating",
            "Sample Rate", "Channels Count", "Bits Per Sample", "Bitrate", "Origin Reference", "Artist", "Title",
            "Album", "Comments", "Genre", "Year" }));
}

void MetaDataExporterDialogTest::someFieldsAreCheckedAtFirst()
{
    const MetaDataExporterDialog dialog;

    QCOMPARE(dialog.checkedFields(), fieldsAtFirst);
    QVERIFY(!allFieldsBox(dialog)->isChecked());
    QVERIFY(!continueButton(dialog)->isEnabled());
}

void MetaDataExporterDialogTest::checkedFieldsAreReadInTheOrderOffered()
{
    MetaDataExporterDialog dialog;

    dialog.setCheckedFields({ "year", "unknown", "Rating", "filePath", "artist" });

    QCOMPARE(dialog.checkedFields(), QStringList({ "filePath", "artist", "year" }));
}

void MetaDataExporterDialogTest::allFieldsFollowsTheOthers()
{
    MetaDataExporterDialog dialog;

    dialog.setCheckedFields(offeredFields);
    QVERIFY(allFieldsBox(dialog)->isChecked());

    dialog.findChild<QCheckBox*>("artistBox")->click();
    QVERIFY(!allFieldsBox(dialog)->isChecked());
    QCOMPARE(dialog.checkedFields().size(), offeredFields.size() - 1);

    dialog.findChild<QCheckBox*>("artistBox")->click();
    QVERIFY(allFieldsBox(dialog)->isChecked());
}

void MetaDataExporterDialogTest::allFieldsChecksAndClearsTheOthers()
{
    const MetaDataExporterDialog dialog;

    allFieldsBox(dialog)->click();
    QCOMPARE(dialog.checkedFields(), offeredFields);
    QVERIFY(allFieldsBox(dialog)->isChecked());

    allFieldsBox(dialog)->click();
    QCOMPARE(dialog.checkedFields(), QStringList());
    QVERIFY(!allFieldsBox(dialog)->isChecked());
}

void MetaDataExporterDialogTest::continueNeedsAPathAndAField_data()
{
    QTest::addColumn<QStringList>("fields");
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("isEnabled");
    QTest::newRow("both") << fieldsAtFirst << "/tmp/out.tsv" << true;
    QTest::newRow("relative path") << fieldsAtFirst << "out.tsv" << true;
    QTest::newRow("no path") << fieldsAtFirst << "" << false;
    QTest::newRow("no field") << QStringList() << "/tmp/out.tsv" << false;
    QTest::newRow("nothing") << QStringList() << "" << false;
}

void MetaDataExporterDialogTest::continueNeedsAPathAndAField()
{
    QFETCH(QStringList, fields);
    QFETCH(QString, path);
    MetaDataExporterDialog dialog;

    dialog.setCheckedFields(fields);
    setFilePath(dialog, path);

    QTEST(continueButton(dialog)->isEnabled(), "isEnabled");
    QCOMPARE(dialog.filePath(), path);
}

void MetaDataExporterDialogTest::chosenFileIsTakenAndItsFolderKept()
{
    QVERIFY(QDir(m_folder->path()).mkdir("exports"));
    const QString path = m_folder->filePath("exports/records");
    MetaDataExporterDialog dialog;
    dialog.show();
    QString title;
    QString folder;

    choose(dialog, [&](QFileDialog& chooser) {
        title = chooser.windowTitle();
        folder = chooser.directory().path();
        QCOMPARE(chooser.acceptMode(), QFileDialog::AcceptSave);
        chooseName(chooser, path);
    });

    QCOMPARE(title, QString("Choose File to Export Meta Data"));
    QCOMPARE(folder, QDir::homePath());
    QCOMPARE(dialog.filePath(), path);
    QCOMPARE(Settings("MetaDataExporterDialog").value("lookupDirectory").toString(), m_folder->filePath("exports"));
    choose(dialog, [&](QFileDialog& chooser) {
        folder = chooser.directory().path();
        chooser.reject();
    });
    QCOMPARE(folder, m_folder->filePath("exports"));
}

void MetaDataExporterDialogTest::chooserThatIsCanceledChangesNothing()
{
    MetaDataExporterDialog dialog;
    setFilePath(dialog, "/before");
    dialog.show();

    choose(dialog, [](QFileDialog& chooser) { chooser.reject(); });

    QCOMPARE(dialog.filePath(), QString("/before"));
    QVERIFY(!Settings("MetaDataExporterDialog").contains("lookupDirectory"));
}

void MetaDataExporterDialogTest::returnInThePathContinues()
{
    MetaDataExporterDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    setFilePath(dialog, "/tmp/out.tsv");

    QTest::keyClick(dialog.findChild<QLineEdit*>("filePathEdit"), Qt::Key_Return);

    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

void MetaDataExporterDialogTest::typedPathOfAFileIsAskedAbout_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isChosen");
    QTest::addColumn<bool>("isAgreed");
    QTest::addColumn<int>("questions");
    QTest::addColumn<bool>("isAccepted");
    QTest::newRow("yes") << "sound.wav" << false << true << 1 << true;
    QTest::newRow("no") << "sound.wav" << false << false << 1 << false;
    QTest::newRow("new file") << "new.tsv" << false << false << 0 << true;
    QTest::newRow("chosen") << "new.tsv" << true << false << 0 << true;
}

void MetaDataExporterDialogTest::typedPathOfAFileIsAskedAbout()
{
    QFETCH(QString, name);
    QFETCH(bool, isChosen);
    QFETCH(bool, isAgreed);
    QFETCH(bool, isAccepted);
    QFile sound(m_folder->filePath("sound.wav"));
    QVERIFY(sound.open(QIODevice::WriteOnly));
    MetaDataExporterDialog dialog;
    dialog.show();
    setFilePath(dialog, m_folder->filePath(name));
    if (isChosen) {
        choose(dialog, [&](QFileDialog& chooser) { chooseName(chooser, m_folder->filePath(name)); });
        QVERIFY(QFile::copy(sound.fileName(), m_folder->filePath(name)));
    }

    QTEST(continueAndAnswer(dialog, isAgreed ? QMessageBox::Yes : QMessageBox::No), "questions");

    QCOMPARE(dialog.isVisible(), !isAccepted);
    QCOMPARE(dialog.result() == QDialog::Accepted, isAccepted);
}

QTEST_MAIN(MetaDataExporterDialogTest)
#include "tst_metadataexporterdialog.moc"
