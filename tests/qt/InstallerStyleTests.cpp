#include "platform/linux/qt/InstallerStyle.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QImage>
#include <QLineEdit>
#include <QScrollBar>
#include <QStyleOptionSlider>
#include <QTest>

#include "platform/linux/qt/Appearance.h"

namespace {

class TheScrollBar : public testing::Test {
protected:
    TheScrollBar() {
        bar.setStyle(&style);
        bar.setPalette(platform::qt::paletteFor(platform::qt::Appearance::light));
        bar.setRange(0, 1000);
        bar.setPageStep(100);
        bar.resize(14, 400);
        bar.show();
    }

    QRect handle() const {
        QStyleOptionSlider option;
        option.initFrom(&bar);
        option.subControls = QStyle::SC_None;
        option.orientation = bar.orientation();
        option.minimum = bar.minimum();
        option.maximum = bar.maximum();
        option.pageStep = bar.pageStep();
        option.sliderPosition = bar.sliderPosition();
        return style.subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, &bar);
    }

    platform::qt::InstallerStyle style;
    QScrollBar bar{Qt::Vertical};
};

}  // namespace

TEST_F(TheScrollBar, ReachesBothEndsWithItsHandle) {
    EXPECT_EQ(handle().top(), 0);
    bar.setValue(1000);
    EXPECT_EQ(handle().bottom(), 399);
}

TEST_F(TheScrollBar, TellsByItsHandleHowMuchThereIsAndKeepsItLargeEnoughToTake) {
    const int before = handle().height();
    bar.setRange(0, 100);
    EXPECT_GT(handle().height(), before);
    bar.setRange(0, 2000000000);
    EXPECT_GE(handle().height(), 24);
}

TEST_F(TheScrollBar, FollowsThePointer) {
    QTest::mousePress(&bar, Qt::LeftButton, {}, handle().center());
    QTest::mouseMove(&bar, QPoint(7, 399));
    QTest::mouseRelease(&bar, Qt::LeftButton, {}, QPoint(7, 399));
    EXPECT_EQ(bar.value(), 1000);
}

TEST_F(TheScrollBar, GoesOnByAPageForAClickBesideTheHandle) {
    QTest::mouseClick(&bar, Qt::LeftButton, {}, QPoint(7, 390));
    EXPECT_EQ(bar.value(), 100);
    bar.setValue(1000);
    QTest::mouseClick(&bar, Qt::LeftButton, {}, QPoint(7, 10));
    EXPECT_EQ(bar.value(), 900);
}

TEST_F(TheScrollBar, ShowsItsHandleAgainstItsGround) {
    const QImage shown = bar.grab().toImage();
    EXPECT_GE(platform::qt::contrast(shown.pixelColor(handle().center()), shown.pixelColor(7, 390)), 3);
}

TEST_F(TheScrollBar, ShowsNoHandleWhereThereIsNothingToScroll) {
    bar.setRange(0, 0);
    const QImage shown = bar.grab().toImage();
    EXPECT_EQ(shown.pixelColor(7, 200), shown.pixelColor(0, 0));
}

namespace {

// The colour in the middle of the left edge, against the one of the window around it.
double contrastOfEdge(QWidget& field, platform::qt::Appearance appearance) {
    const QPalette palette = platform::qt::paletteFor(appearance);
    field.setPalette(palette);
    field.resize(120, 32);
    const QImage drawn = field.grab().toImage();
    return platform::qt::contrast(drawn.pixelColor(0, drawn.height() / 2), palette.color(QPalette::Window));
}

}  // namespace

TEST(AField, HasAnEdgeThatIsSeenInBothAppearances) {
    platform::qt::InstallerStyle style;
    for (const auto appearance : {platform::qt::Appearance::light, platform::qt::Appearance::dark}) {
        QLineEdit line;
        QComboBox choice;
        QComboBox editable;
        editable.setEditable(true);
        for (QWidget* field :
             {static_cast<QWidget*>(&line), static_cast<QWidget*>(&choice), static_cast<QWidget*>(&editable)}) {
            field->setStyle(&style);
            EXPECT_GE(contrastOfEdge(*field, appearance), 3.0) << field->metaObject()->className();
        }
    }
}
