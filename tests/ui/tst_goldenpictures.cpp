// SPDX-License-Identifier: GPL-3.0-or-later
// The whole look beside pictures of it that were looked at and kept in the folder "golden".
//
// After a wanted change run the program with VELLUMCAST_KEEP_PICTURES=1, look at the pictures and keep them.
#include "browse/advanceditemdelegate.h"
#include "browse/advanceditemview.h"
#include "tests/ui/controltest.h"
#include "ui/greybutton.h"
#include "ui/panelwidget.h"
#include "ui/whitebutton.h"
#include "ui/whitelineedit.h"
#include "ui/whiteslider.h"

#include <QDir>
#include <QGridLayout>
#include <QHeaderView>
#include <QStandardItemModel>
#include <QStyleFactory>
#include <QtTest>

#include <memory>

using namespace TestSupport;

namespace {

// Of 255: how far a channel of a pixel may be off, and of 1: how many pixels may be further off. Another build of the
// font renderer shifts the edges of letters; a missing line, mark or state is more.
constexpr int tolerance = 24;
constexpr double mostDifferentPixels = 0.004;

QString goldenFile(const QString& name)
{
    return QStringLiteral(VELLUMCAST_GOLDEN_FOLDER "/%1.png").arg(name);
}

bool isNear(QRgb one, QRgb other)
{
    return std::abs(qRed(one) - qRed(other)) <= tolerance && std::abs(qGreen(one) - qGreen(other)) <= tolerance
        && std::abs(qBlue(one) - qBlue(other)) <= tolerance;
}

double shareOfDifferentPixels(const QImage& one, const QImage& other)
{
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x)
            count += isNear(one.pixel(x, y), other.pixel(x, y)) ? 0 : 1;
    }
    return double(count) / (double(one.width()) * one.height());
}

void fill(QStandardItemModel& model)
{
    const QList<QStringList> rows{ { QStringLiteral("bell buoy far.mp3"), QStringLiteral("Bell buoy in fog"),
                                       QStringLiteral("5.0") },
        { QStringLiteral("a name that is longer than its column.wav"), QStringLiteral("Bell tower"),
            QStringLiteral("1.0") },
        { QStringLiteral("rain.aiff"), QStringLiteral("Rain on a tin roof"), QStringLiteral("99.5") },
        { QStringLiteral("wind.wav"), QStringLiteral("Undefined"), QStringLiteral("1.0") } };
    model.setHorizontalHeaderLabels(
        { QStringLiteral("File Name"), QStringLiteral("Description"), QStringLiteral("Rating") });
    for (const QStringList& row : rows) {
        QList<QStandardItem*> items;
        for (const QString& text : row)
            items.append(new QStandardItem(text));
        items.at(1)->setData(QStringList(QStringLiteral("bell")), AdvancedItemDelegate::HighlightedWordsRole);
        model.appendRow(items);
    }
    model.item(3, 1)->setData(0.5, AdvancedItemDelegate::OpacityRole);
    for (const int row : { 0, 2 })
        model.item(row, 2)->setData(QStringLiteral("●"), AdvancedItemDelegate::TrailingTextRole);
}

std::unique_ptr<QWidget> makeTable(bool hasRows)
{
    auto view = std::make_unique<AdvancedItemView>();
    auto* model = new QStandardItemModel(0, 3, view.get());
    if (hasRows)
        fill(*model);
    else
        model->setHorizontalHeaderLabels({ QStringLiteral("One"), QStringLiteral("Two"), QStringLiteral("Three") });
    view->setModel(model);
    view->setSortingEnabled(true);
    view->horizontalHeader()->setSortIndicator(0, Qt::AscendingOrder);
    for (const int column : { 0, 1, 2 })
        view->setColumnWidth(column, column == 2 ? 90 : 160);
    view->setFrameShape(QFrame::NoFrame);
    view->resize(440, 240);
    if (hasRows)
        view->selectRow(2);
    return view;
}

// A row of buttons: at rest, pointed at, pressed, checked, with the focus, disabled.
template <typename Button>
void addStates(QGridLayout& layout, int row)
{
    const QStringList states{ QStringLiteral("Rest"), QStringLiteral("Hover"), QStringLiteral("Down"),
        QStringLiteral("Checked"), QStringLiteral("Disabled") };
    for (int column = 0; column < states.size(); ++column) {
        auto* button = new Button;
        button->setText(states.at(column));
        button->setAttribute(Qt::WA_UnderMouse, column == 1);
        button->setDown(column == 2);
        button->setCheckable(column == 3);
        button->setChecked(column == 3);
        button->setEnabled(column != 4);
        layout.addWidget(button, row, column);
    }
}

std::unique_ptr<QWidget> makeControls()
{
    auto panel = std::make_unique<PanelWidget>();
    auto* layout = new QGridLayout(panel.get());
    addStates<WhiteButton>(*layout, 0);
    addStates<GreyButton>(*layout, 1);
    auto* empty = new WhiteLineEdit;
    empty->setPlaceholderText(QStringLiteral("Search Keywords"));
    auto* filled = new WhiteLineEdit;
    filled->setText(QStringLiteral("bell !tower"));
    filled->setClearButtonEnabled(true);
    layout->addWidget(empty, 2, 0, 1, 2);
    layout->addWidget(filled, 2, 2, 1, 3);
    for (const int number : { 0, 1 }) {
        auto* slider = new WhiteSlider;
        slider->setMaximum(100);
        slider->setValue(30 + 40 * number);
        slider->setEnabled(number == 0);
        layout->addWidget(slider, 3, number * 2, 1, 2);
    }
    panel->resize(520, 190);
    return panel;
}

} // namespace

class GoldenPicturesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void lookIsTheKeptOne_data();
    void lookIsTheKeptOne();
};

void GoldenPicturesTest::initTestCase()
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    useFixedFont();
    // As little as possible of what a machine's own font settings change.
    QFont font = QApplication::font();
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(QFont::NoSubpixelAntialias);
    QApplication::setFont(font);
}

void GoldenPicturesTest::lookIsTheKeptOne_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<bool>("isDark");

    for (const auto* what : { "table", "empty-table", "controls" }) {
        for (const bool isDark : { false, true })
            QTest::addRow("%s-%s", what, isDark ? "dark" : "light") << QString::fromUtf8(what) << isDark;
    }
}

void GoldenPicturesTest::lookIsTheKeptOne()
{
    QFETCH(QString, what);
    QFETCH(bool, isDark);
    const QPalette before = QApplication::palette();
    QApplication::setPalette(controlPalette(isDark));
    const std::unique_ptr<QWidget> widget
        = what == QLatin1String("controls") ? makeControls() : makeTable(what == QLatin1String("table"));
    const QString name = QStringLiteral("%1-at-%2")
                             .arg(QLatin1String(QTest::currentDataTag()), QString::number(widget->devicePixelRatioF()));

    const QImage seen = widget->grab().toImage().convertToFormat(QImage::Format_RGB32);

    QApplication::setPalette(before);
    if (qEnvironmentVariableIsSet("VELLUMCAST_KEEP_PICTURES"))
        QVERIFY(seen.save(goldenFile(name)));
    const QImage kept = QImage(goldenFile(name)).convertToFormat(QImage::Format_RGB32);
    QCOMPARE(seen.size(), kept.size());
    const double share = shareOfDifferentPixels(seen, kept);
    if (share > mostDifferentPixels)
        seen.save(QDir::current().filePath(name + QStringLiteral(".seen.png")));
    QVERIFY2(share <= mostDifferentPixels, qPrintable(QString::number(share)));
}

QTEST_MAIN(GoldenPicturesTest)
#include "tst_goldenpictures.moc"
