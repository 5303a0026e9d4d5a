#include <gmock/gmock.h>

#include <QAccessible>
#include <QLabel>
#include <QPushButton>

#include "platform/linux/qt/ElidedLabel.h"
#include "platform/linux/qt/LinkLabel.h"
#include "platform/linux/qt/Spinner.h"
#include "tests/qt/WindowFixture.h"

using platform::AttributedString;
using platform::TextColor;
using platform::UnderlineStyle;
using platform::qt::Appearance;
using platform::qt::ElidedLabel;
using platform::qt::LinkLabel;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using TheWindow = windowtests::WindowTest;

QAccessibleInterface& accessible(QWidget& widget) { return *QAccessible::queryAccessibleInterface(&widget); }

AttributedString branding() {
    return {{.text = "Installer created with ", .link = {}},
            {.text = "Tallowmere",
             .link = "https://example.com/suite",
             .color = TextColor::blue,
             .underline = UnderlineStyle::single},
            {.text = " by Corvane.", .link = {}}};
}

// Whether every button lies wholly inside the window and covers no other one.
bool showsEveryButton(const QWidget& window) {
    std::vector<QRect> places;
    for (const auto* button : window.findChildren<QPushButton*>()) {
        const QRect place(button->mapTo(&window, QPoint(0, 0)), button->size());
        for (const QRect& other : places) {
            if (place.intersects(other)) {
                return false;
            }
        }
        if (!window.rect().contains(place) || place.width() < button->minimumSizeHint().width()) {
            return false;
        }
        places.push_back(place);
    }
    return places.size() >= 2;
}

}  // namespace

TEST_F(TheWindow, NamesEveryOutletAsItsLayoutDoes) {
    for (const char* name : {"textPluginName", "textPluginAuthor", "textPluginVersion", "spinner", "btnInstall",
                             "tallowmereLinkText", "bgImageView", "btnGantry"}) {
        EXPECT_NE(window.findChild<QWidget*>(QString::fromLatin1(name)), nullptr) << name;
    }
}

TEST_F(TheWindow, ShowsNameVersionAuthorAndTitle) {
    outlets().textPluginName->setStringValue("Larkspur Reverb");
    outlets().textPluginVersion->setStringValue("2.4.1");
    outlets().textPluginAuthor->setStringValue("by Orrin Audio");
    outlets().window->setTitle("Larkspur Reverb Installer");
    QTest::qWait(10);
    EXPECT_EQ(find<ElidedLabel>("textPluginName").shownText().toStdString(), "Larkspur Reverb");
    EXPECT_EQ(find<ElidedLabel>("textPluginVersion").shownText().toStdString(), "2.4.1");
    EXPECT_EQ(find<ElidedLabel>("textPluginAuthor").shownText().toStdString(), "by Orrin Audio");
    EXPECT_EQ(window.windowTitle().toStdString(), "Larkspur Reverb Installer");
}

TEST_F(TheWindow, ShowsAMissingValueAsItStands) {
    outlets().textPluginName->setStringValue("(null)");
    EXPECT_EQ(find<ElidedLabel>("textPluginName").shownText().toStdString(), "(null)");
}

TEST_F(TheWindow, ElidesALongNameAndKeepsAllOfItForAssistiveTechnology) {
    const std::string name(500, 'W');
    outlets().textPluginName->setStringValue(name);
    QTest::qWait(0);
    auto& label = find<ElidedLabel>("textPluginName");
    EXPECT_TRUE(label.shownText().endsWith(QChar(0x2026)));
    EXPECT_LE(label.fontMetrics().horizontalAdvance(label.shownText()), label.width());
    EXPECT_EQ(accessible(label).text(QAccessible::Name).toStdString(), name);
    EXPECT_LE(window.width(), 660);
}

TEST_F(TheWindow, KeepsAVersionWholeBesideALongAuthor) {
    outlets().textPluginVersion->setStringValue("2.4.1-rc.12");
    outlets().textPluginAuthor->setStringValue("by " + std::string(300, 'W'));
    QTest::qWait(10);
    EXPECT_EQ(find<ElidedLabel>("textPluginVersion").shownText().toStdString(), "2.4.1-rc.12");
}

TEST_F(TheWindow, TellsALongNameInAToolTipAndAShortOneNot) {
    auto& label = find<ElidedLabel>("textPluginName");
    QHelpEvent asked(QEvent::ToolTip, QPoint(1, 1), label.mapToGlobal(QPoint(1, 1)));
    outlets().textPluginName->setStringValue("Short");
    QCoreApplication::sendEvent(&label, &asked);
    EXPECT_FALSE(asked.isAccepted());
    outlets().textPluginName->setStringValue(std::string(500, 'W'));
    QTest::qWait(0);
    asked.accept();
    QCoreApplication::sendEvent(&label, &asked);
    EXPECT_TRUE(asked.isAccepted());
}

TEST_F(TheWindow, TakesTextForTextAndNeverForMarkup) {
    outlets().textPluginName->setStringValue("<b>Drum & Bass</b>");
    auto& label = find<ElidedLabel>("textPluginName");
    EXPECT_EQ(label.shownText().toStdString(), "<b>Drum & Bass</b>");
    EXPECT_EQ(accessible(label).text(QAccessible::Name).toStdString(), "<b>Drum & Bass</b>");
}

TEST_F(TheWindow, KeepsANameWithLineBreaksOnOneLine) {
    outlets().textPluginName->setStringValue("One\nTwo\tThree");
    EXPECT_EQ(find<ElidedLabel>("textPluginName").shownText().toStdString(), "One Two Three");
}

TEST_F(TheWindow, DrawsAMegabyteOfNameWithoutAHitch) {
    outlets().textPluginName->setStringValue(std::string(1 << 20, 'x'));
    const auto began = std::chrono::steady_clock::now();
    window.grab();
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(2));
}

TEST_F(TheWindow, HandsNoMoreThanALineToTheWindowSystemAndAssistiveTechnology) {
    const std::string name(1 << 20, 'x');
    outlets().window->setTitle(name);
    outlets().textPluginName->setStringValue(name);
    EXPECT_LE(window.windowTitle().size(), 5000);
    EXPECT_LE(accessible(find("textPluginName")).text(QAccessible::Name).size(), 5000);
}

TEST_F(TheWindow, InstallsOnReturn) {
    press(Qt::Key_Return);
    EXPECT_THAT(delegate.calls, ElementsAre("install"));
}

TEST_F(TheWindow, InstallsOnReturnWhereverNoButtonHasTheFocus) {
    find("btnInstall").clearFocus();
    press(Qt::Key_Return);
    EXPECT_THAT(delegate.calls, ElementsAre("install"));
}

TEST_F(TheWindow, InstallsByAClickOrItsShortcut) {
    QTest::mouseClick(&find("btnInstall"), Qt::LeftButton);
    press(Qt::Key_I, Qt::AltModifier);
    QTest::qWait(150);
    EXPECT_THAT(delegate.calls, ElementsAre("install", "install"));
}

TEST_F(TheWindow, HandsThePluginOverByItsOtherButton) {
    QTest::mouseClick(&find("btnGantry"), Qt::LeftButton);
    EXPECT_THAT(delegate.calls, ElementsAre("gantry"));
}

TEST_F(TheWindow, DoesNothingOnReturnWhileInstallIsDisabled) {
    outlets().btnInstall->setEnabled(false);
    press(Qt::Key_Return);
    EXPECT_THAT(delegate.calls, IsEmpty());
}

TEST_F(TheWindow, TurnsTheSpinnerOnlyWhileItIsAnimated) {
    auto& spinner = find<platform::qt::Spinner>("spinner");
    const QImage idle = spinner.grab().toImage();
    outlets().spinner->startAnimation();
    EXPECT_NE(spinner.grab().toImage(), idle);
    outlets().spinner->stopAnimation();
    EXPECT_EQ(spinner.grab().toImage(), idle);
}

TEST_F(TheWindow, MovesTheSpinnerOn) {
    qunsetenv("WICKFIELD_MOTION");
    auto& spinner = find<platform::qt::Spinner>("spinner");
    outlets().spinner->startAnimation();
    const QImage before = spinner.grab().toImage();
    QTest::qWait(200);
    qputenv("WICKFIELD_MOTION", "reduced");
    EXPECT_NE(spinner.grab().toImage(), before);
}

TEST_F(TheWindow, OpensTheBrandingLinkFromTheKeyboard) {
    outlets().tallowmereLinkText->setSelectable(true);
    outlets().tallowmereLinkText->setAllowsEditingTextAttributes(true);
    outlets().tallowmereLinkText->setAttributedStringValue(branding());
    find("btnInstall").setFocus();
    press(Qt::Key_Tab);
    press(Qt::Key_Return);
    EXPECT_THAT(workspace.opened, ElementsAre("https://example.com/suite"));
    EXPECT_THAT(delegate.calls, IsEmpty());
}

TEST_F(TheWindow, OpensTheBrandingLinkByAClick) {
    outlets().tallowmereLinkText->setSelectable(true);
    outlets().tallowmereLinkText->setAllowsEditingTextAttributes(true);
    outlets().tallowmereLinkText->setAttributedStringValue(branding());
    auto& label = find<LinkLabel>("tallowmereLinkText");
    const int before = label.fontMetrics().horizontalAdvance(QString::fromLatin1("Installer created with "));
    QTest::mouseClick(&label, Qt::LeftButton, {}, QPoint(before + 12, label.height() / 2));
    EXPECT_THAT(workspace.opened, ElementsAre("https://example.com/suite"));
}

TEST_F(TheWindow, LeavesALinkAloneThatMayNotBeSelected) {
    outlets().tallowmereLinkText->setSelectable(false);
    outlets().tallowmereLinkText->setAllowsEditingTextAttributes(true);
    outlets().tallowmereLinkText->setAttributedStringValue(branding());
    EXPECT_EQ(find<LinkLabel>("tallowmereLinkText").textInteractionFlags(), Qt::NoTextInteraction);
}

TEST_F(TheWindow, NeverStartsAProgramByALink) {
    outlets().tallowmereLinkText->setAttributedStringValue({{.text = "x", .link = "file:///bin/sh"}});
    Q_EMIT find<LinkLabel>("tallowmereLinkText").linkActivated(QString::fromLatin1("file:///bin/sh"));
    EXPECT_THAT(workspace.opened, IsEmpty());
}

TEST_F(TheWindow, ReadsTheBrandingLineOutAsPlainText) {
    outlets().tallowmereLinkText->setAttributedStringValue(branding());
    EXPECT_EQ(accessible(find("tallowmereLinkText")).text(QAccessible::Name).toStdString(),
              "Installer created with Tallowmere by Corvane.");
}

TEST_F(TheWindow, HidesTheBrandingAndKeepsInstallInItsPlace) {
    const QPoint before = find("btnInstall").mapTo(&window, QPoint(0, 0));
    outlets().tallowmereLinkText->setHidden(true);
    outlets().btnGantry->setHidden(true);
    QTest::qWait(10);
    EXPECT_FALSE(find("tallowmereLinkText").isVisible());
    EXPECT_FALSE(find("btnGantry").isVisible());
    EXPECT_EQ(find("btnInstall").mapTo(&window, QPoint(0, 0)).x(), before.x());
}

TEST_F(TheWindow, GivesEveryControlANameAndARole) {
    const struct {
        const char* widget;
        const char* name;
        QAccessible::Role role;
    } expected[] = {{"btnInstall", "Install", QAccessible::Button},
                    {"btnGantry", "Send to Gantry…", QAccessible::Button},
                    {"spinner", "Installing", QAccessible::ProgressBar}};
    for (const auto& row : expected) {
        auto& interface = accessible(find(row.widget));
        EXPECT_EQ(interface.text(QAccessible::Name).toStdString(), row.name);
        EXPECT_EQ(interface.role(), row.role) << row.name;
    }
}

TEST_F(TheWindow, ShowsEveryButtonOnASmallScreen) {
    outlets().textPluginName->setStringValue(std::string(300, 'W'));
    outlets().tallowmereLinkText->setAttributedStringValue(branding());
    window.resize(480, 320);
    QTest::qWait(10);
    EXPECT_TRUE(showsEveryButton(window));
    window.resize(window.minimumSize());
    QTest::qWait(10);
    EXPECT_TRUE(showsEveryButton(window));
    EXPECT_LE(window.height(), 320);
}

TEST_F(TheWindow, KeepsTextAndLinksReadableInEitherAppearance) {
    for (const auto appearance : {Appearance::light, Appearance::dark}) {
        const QPalette palette = platform::qt::paletteFor(appearance);
        const QColor ground = palette.color(QPalette::Window);
        const QColor base = palette.color(QPalette::Base);
        EXPECT_GE(platform::qt::contrast(palette.color(QPalette::WindowText), ground), 4.5);
        EXPECT_GE(platform::qt::contrast(palette.color(QPalette::Text), base), 4.5);
        EXPECT_GE(platform::qt::contrast(palette.color(QPalette::Link), ground), 4.5);
        EXPECT_GE(platform::qt::contrast(palette.color(QPalette::Link), base), 4.5);
        EXPECT_GE(platform::qt::contrast(palette.color(QPalette::LinkVisited), base), 4.5);
        EXPECT_GE(platform::qt::contrast(palette.color(QPalette::ButtonText), palette.color(QPalette::Button)), 4.5);
        EXPECT_GE(platform::qt::contrast(palette.color(QPalette::PlaceholderText), base), 3);  // a scroll bar's handle
        EXPECT_GE(platform::qt::contrast(Qt::white, platform::qt::accentColor(palette)), 4.5);
        EXPECT_EQ(platform::qt::appearanceOf(palette), appearance);
    }
}

TEST_F(TheWindow, GivesTheLinkTheColourOfThePresentAppearance) {
    outlets().tallowmereLinkText->setAttributedStringValue(branding());
    auto& label = find<LinkLabel>("tallowmereLinkText");
    for (const auto appearance : {Appearance::dark, Appearance::light}) {
        const QPalette palette = platform::qt::paletteFor(appearance);
        window.setPalette(palette);
        QTest::qWait(0);
        EXPECT_TRUE(label.text().contains(palette.color(QPalette::Link).name()));
    }
}

TEST_F(TheWindow, PaintsTheImageOverItsWholePlace) {
    QImage red(30, 10, QImage::Format_RGB32);
    red.fill(Qt::red);
    outlets().bgImageView->setImage(std::make_unique<platform::qt::QtImage>(red));
    const QImage shown = find("bgImageView").grab().toImage();
    EXPECT_EQ(shown.pixelColor(1, 1), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(shown.width() - 2, shown.height() - 4), QColor(Qt::red));
}

TEST_F(TheWindow, KeepsTheImagesProportions) {
    QImage striped(100, 100, QImage::Format_RGB32);
    striped.fill(Qt::blue);
    for (int y = 40; y < 60; ++y) {
        for (int x = 0; x < 100; ++x) {
            striped.setPixelColor(x, y, Qt::red);
        }
    }
    outlets().bgImageView->setImage(std::make_unique<platform::qt::QtImage>(striped));
    const QImage shown = find("bgImageView").grab().toImage();
    int red = 0;
    for (int y = 0; y < shown.height(); ++y) {
        red += shown.pixelColor(shown.width() / 2, y).red() > 200 ? 1 : 0;
    }
    EXPECT_NEAR(red, shown.width() / 5.0, 4);  // the image is as wide as the view
}

TEST_F(TheWindow, EmptiesTheImageWhenThereIsNone) {
    const QImage empty = find("bgImageView").grab().toImage();
    QImage red(8, 8, QImage::Format_RGB32);
    red.fill(Qt::red);
    outlets().bgImageView->setImage(std::make_unique<platform::qt::QtImage>(red));
    outlets().bgImageView->setImage(nullptr);
    EXPECT_EQ(find("bgImageView").grab().toImage(), empty);
}
