#include <gmock/gmock.h>

#include <QAccessible>
#include <QLabel>
#include <QScrollBar>

#include "platform/linux/qt/ElidedLabel.h"
#include "platform/linux/qt/PasswordWindow.h"
#include "platform/linux/qt/SheetOverlay.h"
#include "platform/linux/qt/TextScroller.h"
#include "tests/qt/PasswordPromptFixture.h"

using platform::qt::ElidedLabel;
using platform::qt::PasswordWindow;
using platform::qt::SheetOverlay;
using platform::rights::PasswordRequest;
using testing::ElementsAre;
using windowtests::ThePasswordSheet;

using Problem = PasswordRequest::Problem;

TEST_F(ThePasswordSheet, StandsInAWindowOfItsOwnWithoutAnother) {
    window.hide();
    ask(one());
    auto* frame = qobject_cast<PasswordWindow*>(sheet()->window());
    ASSERT_NE(frame, nullptr);
    EXPECT_TRUE(QTest::qWaitForWindowActive(frame));
    EXPECT_TRUE(frame->rect().contains(sheet()->geometry()));
    type("pw");
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("ann pw"));
    close();
    EXPECT_EQ(sheet(), nullptr);
}

TEST_F(ThePasswordSheet, IsCancelledWhenItsOwnWindowIsClosed) {
    window.hide();
    ask(one());
    sheet()->window()->close();
    EXPECT_THAT(answers, ElementsAre("cancelled"));
    EXPECT_EQ(sheet(), nullptr);
}

TEST_F(ThePasswordSheet, StaysInsideASmallWindow) {
    window.resize(400, 240);
    auto request = again(several(true), Problem::wrongPassword, std::string(200, 'x'));
    ask(request);
    EXPECT_TRUE(window.rect().contains(SheetOverlay::topmost(window)->sheetGeometry()));
    EXPECT_TRUE(isInside(field()));
    EXPECT_TRUE(isInside(part("allow")));
    EXPECT_TRUE(isInside(part("cancel")));
}

TEST_F(ThePasswordSheet, ShowsTheFieldThatHasTheFocusInASmallWindow) {
    window.resize(400, 240);
    ask(several(true));
    const auto* view = sheet()->findChild<platform::qt::TextScroller*>()->viewport();
    const auto isSeen = [&](QWidget& widget) {
        return view->rect().contains(QRect(widget.mapTo(view, QPoint(0, 0)), widget.size()));
    };
    EXPECT_TRUE(isSeen(field()));
    press(Qt::Key_Tab, Qt::ShiftModifier);
    EXPECT_TRUE(isSeen(part("names")));
}

TEST_F(ThePasswordSheet, ShowsTwoHundredCharactersOfDetailsWhole) {
    std::string details;
    for (int i = 0; i < 40; ++i) {
        details += "words";
    }
    ask(again(one(), Problem::wrongPassword, details));
    QTest::qWait(50);
    auto& label = part<QLabel>("details");
    EXPECT_GE(label.height(), label.heightForWidth(label.width()));
    EXPECT_TRUE(isInside(label));
    EXPECT_EQ(sheet()->findChild<platform::qt::TextScroller*>()->verticalScrollBar()->maximum(), 0);
}

TEST_F(ThePasswordSheet, GrowsWithWhatItHasToSay) {
    ask(one());
    const int before = SheetOverlay::topmost(window)->sheetGeometry().height();
    ask(again(one(), Problem::wrongPassword, "Two attempts are left."));
    QTest::qWait(20);
    EXPECT_GT(SheetOverlay::topmost(window)->sheetGeometry().height(), before);
    EXPECT_TRUE(isInside(part("details")));
}

TEST_F(ThePasswordSheet, CutsALongNameWhereItDoesNotFit) {
    PasswordRequest request;
    request.administrators = {{.user = std::string(32, 'u'), .realName = std::string(100, 'W')}};
    ask(request);
    EXPECT_LT(part<ElidedLabel>("onlyName").shownText().size(), 100);
    EXPECT_TRUE(isInside(part("onlyName")));
    request.administrators.push_back(request.administrators[0]);
    ask(request);
    EXPECT_TRUE(isInside(part("names")));
}

TEST_F(ThePasswordSheet, IsAModalDialogWithNamedPartsToAssistiveTechnology) {
    ask(several());
    const auto nameOf = [](QWidget& widget) {
        return QAccessible::queryAccessibleInterface(&widget)->text(QAccessible::Name).toStdString();
    };
    auto* dialog = QAccessible::queryAccessibleInterface(SheetOverlay::topmost(window));
    EXPECT_EQ(dialog->role(), QAccessible::Dialog);
    EXPECT_TRUE(dialog->state().modal);
    EXPECT_NE(dialog->text(QAccessible::Name).indexOf(QString::fromLatin1("Larkspur Reverb Installer")), -1);
    EXPECT_EQ(nameOf(field()), "Password:");
    const auto labels = QAccessible::queryAccessibleInterface(&part("names"))->relations(QAccessible::Label);
    ASSERT_EQ(labels.size(), 1);
    EXPECT_EQ(labels.front().first->text(QAccessible::Name).toStdString(), "Name:");
    EXPECT_EQ(nameOf(part("allow")), "Allow");
    EXPECT_EQ(nameOf(part("cancel")), "Cancel");
}

TEST_F(ThePasswordSheet, TellsAssistiveTechnologyWhatWasWrong) {
    ask(again(one(), Problem::wrongPassword, "Two attempts are left."));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&field())->text(QAccessible::Description).toStdString(),
              "That password is not right. Try again. Two attempts are left.");
}

TEST_F(ThePasswordSheet, CanBeReadInBothAppearances) {
    for (const auto appearance : {platform::qt::Appearance::light, platform::qt::Appearance::dark}) {
        const QPalette before = QApplication::palette();
        QApplication::setPalette(platform::qt::paletteFor(appearance));
        ask(again(one(), Problem::wrongPassword, "Details."));
        for (const char* name : {"headline", "explanation", "problem", "details", "capsLock"}) {
            const auto palette = part(name).palette();
            EXPECT_GE(platform::qt::contrast(palette.color(QPalette::Active, QPalette::WindowText),
                                             palette.color(QPalette::Active, QPalette::Window)),
                      4.5)
                << name;
        }
        close();
        QApplication::setPalette(before);
    }
}
