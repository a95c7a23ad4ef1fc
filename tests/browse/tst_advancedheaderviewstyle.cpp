// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/advancedheaderviewstyle.h"

#include "tests/support/picture.h"

#include <QApplication>
#include <QPainter>
#include <QStyleOptionButton>
#include <QStyleOptionHeader>
#include <QtTest>

using TestSupport::lighter;
using TestSupport::Picture;

namespace {

const QColor line(224, 224, 224);
const QColor base(180, 190, 200);
const QRect section(20, 10, 160, 40);
const QString upArrow = QStringLiteral("\u2191");
const QString downArrow = QStringLiteral("\u2193");

QStyleOptionHeader sectionOption(const QString& text = {})
{
    QStyleOptionHeader option;
    option.rect = section;
    option.text = text;
    option.textAlignment = Qt::AlignLeft | Qt::AlignVCenter;
    option.position = QStyleOptionHeader::Middle;
    option.state = QStyle::State_Enabled;
    option.palette.setColor(QPalette::Base, base);
    option.palette.setColor(QPalette::Text, Qt::black);
    return option;
}

} // namespace

class AdvancedHeaderViewStyleTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void sectionsAreFlatWithALineBelow();
    void sectionsHaveALineAtTheRightButForTheLast_data();
    void sectionsHaveALineAtTheRightButForTheLast();
    void sortedTitleEndsWithAnArrow_data();
    void sortedTitleEndsWithAnArrow();
    void longTitleIsElidedAndKeepsItsArrow();
    void sectionTooNarrowForAnythingPaintsNoText();
    void nothingIsPaintedOutsideTheSection();
    void arrowOfTheBaseStyleIsNotPainted();
    void labelIsTheSectionWithoutMargins();
    void mirroredLabelHasMirroredMargins();
    void sectionIsAsLargeAsItsTitleNeeds();
    void sectionIsNeverLowerThanItsMinimum();
    void titleFollowsItsAlignment();
    void everythingElseIsTheApplicationsStyle();

private:
    QImage paint(QStyle::ControlElement element, const QStyleOptionHeader& option) const;

    std::unique_ptr<AdvancedHeaderViewStyle> m_style;
};

void AdvancedHeaderViewStyleTest::init()
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(16);
    QApplication::setFont(font);
    m_style = std::make_unique<AdvancedHeaderViewStyle>();
    m_style->setMinimumSectionHeight(30);
    m_style->setCellMargins(QMargins(6, 6, 12, 6));
}

QImage AdvancedHeaderViewStyleTest::paint(QStyle::ControlElement element, const QStyleOptionHeader& option) const
{
    const qreal ratio = qApp->devicePixelRatio();
    QImage image((QSizeF(200, 60) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    painter.setFont(QApplication::font());
    m_style->drawControl(element, &option, &painter, nullptr);
    return image;
}

void AdvancedHeaderViewStyleTest::sectionsAreFlatWithALineBelow()
{
    const Picture picture(paint(QStyle::CE_HeaderSection, sectionOption()));

    QCOMPARE(picture.at(section.topLeft()), lighter(base, 105));
    QCOMPARE(picture.at(section.center()), lighter(base, 105));
    QVERIFY(picture.isTouchedBy(line, { section.left(), section.bottom() }));
    QVERIFY(picture.isTouchedBy(line, { section.center().x(), section.bottom() }));
    QCOMPARE(picture.at(section.center().x(), section.bottom() - 1), lighter(base, 105));
}

void AdvancedHeaderViewStyleTest::sectionsHaveALineAtTheRightButForTheLast_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<bool>("hasLine");

    QTest::newRow("first") << int(QStyleOptionHeader::Beginning) << true;
    QTest::newRow("middle") << int(QStyleOptionHeader::Middle) << true;
    QTest::newRow("last") << int(QStyleOptionHeader::End) << false;
}

void AdvancedHeaderViewStyleTest::sectionsHaveALineAtTheRightButForTheLast()
{
    QFETCH(int, position);
    QFETCH(bool, hasLine);
    QStyleOptionHeader option = sectionOption();
    option.position = QStyleOptionHeader::SectionPosition(position);

    const Picture picture(paint(QStyle::CE_HeaderSection, option));

    QCOMPARE(picture.at(section.right(), section.center().y()), hasLine ? line : lighter(base, 105));
    QCOMPARE(picture.at(section.right() - 1, section.center().y()), lighter(base, 105));
}

void AdvancedHeaderViewStyleTest::sortedTitleEndsWithAnArrow_data()
{
    QTest::addColumn<int>("indicator");
    QTest::addColumn<QString>("shown");

    QTest::newRow("ascending") << int(QStyleOptionHeader::SortDown) << "Title " + downArrow;
    QTest::newRow("descending") << int(QStyleOptionHeader::SortUp) << "Title " + upArrow;
    QTest::newRow("not sorted") << int(QStyleOptionHeader::None) << "Title";
}

void AdvancedHeaderViewStyleTest::sortedTitleEndsWithAnArrow()
{
    QFETCH(int, indicator);
    QFETCH(QString, shown);
    QStyleOptionHeader option = sectionOption("Title");
    option.sortIndicator = QStyleOptionHeader::SortIndicator(indicator);

    QCOMPARE(paint(QStyle::CE_HeaderLabel, option), paint(QStyle::CE_HeaderLabel, sectionOption(shown)));
    QVERIFY(paint(QStyle::CE_HeaderLabel, option) != paint(QStyle::CE_HeaderLabel, sectionOption(shown + "x")));
}

void AdvancedHeaderViewStyleTest::longTitleIsElidedAndKeepsItsArrow()
{
    const QFontMetrics metrics(QApplication::font());
    const QString title = "A title that is much longer than its section";
    QStyleOptionHeader option = sectionOption(title);
    option.sortIndicator = QStyleOptionHeader::SortDown;
    const int room = section.width() - metrics.horizontalAdvance(" " + downArrow);
    const QString elided = metrics.elidedText(title, Qt::ElideRight, room);
    QVERIFY(elided != title);

    // Drawn without being elided again: the room of the plain title is not narrower.
    QCOMPARE(
        paint(QStyle::CE_HeaderLabel, option), paint(QStyle::CE_HeaderLabel, sectionOption(elided + " " + downArrow)));
}

void AdvancedHeaderViewStyleTest::sectionTooNarrowForAnythingPaintsNoText()
{
    QStyleOptionHeader option = sectionOption("Title");
    option.rect.setWidth(15);

    QCOMPARE(paint(QStyle::CE_Header, option), paint(QStyle::CE_HeaderSection, option));
}

void AdvancedHeaderViewStyleTest::nothingIsPaintedOutsideTheSection()
{
    QStyleOptionHeader option = sectionOption("Title that is quite long");
    option.sortIndicator = QStyleOptionHeader::SortDown;
    option.rect.setWidth(30);

    const Picture picture(paint(QStyle::CE_Header, option));

    for (int x = 0; x < 200; ++x) {
        for (int y = 0; y < 60; ++y) {
            if (!option.rect.contains(x, y))
                QCOMPARE(picture.at(x, y), QColor(Qt::magenta));
        }
    }
}

void AdvancedHeaderViewStyleTest::arrowOfTheBaseStyleIsNotPainted()
{
    QStyleOptionHeader sorted = sectionOption("Title");
    sorted.sortIndicator = QStyleOptionHeader::SortDown;

    QCOMPARE(paint(QStyle::CE_Header, sorted), paint(QStyle::CE_Header, sectionOption("Title " + downArrow)));
}

void AdvancedHeaderViewStyleTest::labelIsTheSectionWithoutMargins()
{
    const QStyleOptionHeader option = sectionOption("Title");

    QCOMPARE(m_style->subElementRect(QStyle::SE_HeaderLabel, &option, nullptr), section.adjusted(6, 6, -12, -6));
}

void AdvancedHeaderViewStyleTest::mirroredLabelHasMirroredMargins()
{
    QStyleOptionHeader option = sectionOption("Title");
    option.direction = Qt::RightToLeft;

    QCOMPARE(m_style->subElementRect(QStyle::SE_HeaderLabel, &option, nullptr), section.adjusted(12, 6, -6, -6));
}

void AdvancedHeaderViewStyleTest::sectionIsAsLargeAsItsTitleNeeds()
{
    QStyleOptionHeader option = sectionOption("Title");
    option.fontMetrics = QFontMetrics(QApplication::font());
    m_style->setMinimumSectionHeight(0);

    const QSize size = m_style->sizeFromContents(QStyle::CT_HeaderSection, &option, QSize(), nullptr);

    QCOMPARE(size.width(), option.fontMetrics.horizontalAdvance("Title") + 6 + 12 + 1);
    QCOMPARE(size.height(), 6 + option.fontMetrics.height() + 6);
}

void AdvancedHeaderViewStyleTest::sectionIsNeverLowerThanItsMinimum()
{
    const QStyleOptionHeader option = sectionOption("Title");
    m_style->setMinimumSectionHeight(77);

    QCOMPARE(m_style->sizeFromContents(QStyle::CT_HeaderSection, &option, QSize(), nullptr).height(), 77);
}

void AdvancedHeaderViewStyleTest::titleFollowsItsAlignment()
{
    QStyleOptionHeader option = sectionOption("HH");
    option.textAlignment = Qt::AlignRight | Qt::AlignVCenter;

    const QRect text = Picture(paint(QStyle::CE_HeaderLabel, option)).extentOf(Qt::black, section);

    QVERIFY(text.left() > section.center().x());
    QVERIFY(text.right() >= section.right() - 4);
}

void AdvancedHeaderViewStyleTest::everythingElseIsTheApplicationsStyle()
{
    QStyleOptionButton option;
    option.rect = section;
    option.text = "Title";
    const QSize contents(70, 20);

    QCOMPARE(m_style->sizeFromContents(QStyle::CT_PushButton, &option, contents, nullptr),
        QApplication::style()->sizeFromContents(QStyle::CT_PushButton, &option, contents, nullptr));
    QCOMPARE(m_style->subElementRect(QStyle::SE_PushButtonContents, &option, nullptr),
        QApplication::style()->subElementRect(QStyle::SE_PushButtonContents, &option, nullptr));
}

QTEST_MAIN(AdvancedHeaderViewStyleTest)

#include "tst_advancedheaderviewstyle.moc"
