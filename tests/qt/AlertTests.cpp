#include <gmock/gmock.h>

#include <QAccessible>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <thread>

#include "lib/KZAlert.h"
#include "platform/linux/qt/AlertView.h"
#include "platform/linux/qt/AlertWindow.h"
#include "platform/linux/qt/SheetOverlay.h"
#include "tests/qt/WindowFixture.h"

using platform::AlertContents;
using platform::qt::AlertView;
using platform::qt::AlertWindow;
using platform::qt::SheetOverlay;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

AlertContents contents(std::optional<std::string> defaultButton = {}, std::optional<std::string> alternate = {},
                       std::optional<std::string> other = {}) {
    AlertContents made;
    made.messageText = "This feature requires Tallowmere";
    made.informativeText = "Gantry gives you more options.";
    made.defaultButton = std::move(defaultButton);
    made.alternateButton = std::move(alternate);
    made.otherButton = std::move(other);
    return made;
}

class AnAlert : public windowtests::WindowTest {
protected:
    std::unique_ptr<platform::Alert> begin(const AlertContents& what, platform::Window* parent) {
        auto alert = alerts.make(what);
        alert->begin(parent, [this](long code) { answers.push_back(code); });
        QTest::qWait(10);
        return alert;
    }
    AlertView* view() {
        for (QWidget* top : QApplication::topLevelWidgets()) {
            for (auto* found : top->findChildren<AlertView*>()) {
                if (found->isVisible()) {
                    return found;
                }
            }
        }
        return nullptr;
    }
    AlertWindow* freeStanding() {
        for (QWidget* top : QApplication::topLevelWidgets()) {
            if (auto* found = qobject_cast<AlertWindow*>(top); found != nullptr && found->isVisible()) {
                return found;
            }
        }
        return nullptr;
    }
    std::vector<std::string> texts() {
        std::vector<std::string> found;
        for (const auto* label : view()->findChildren<QLabel*>()) {
            found.push_back(label->text().toStdString());
        }
        return found;
    }

    std::vector<long> answers;
};

}  // namespace

TEST_F(AnAlert, ComesUpAsASheetOfItsWindow) {
    const auto alert = begin(contents(), outlets().window);
    EXPECT_TRUE(outlets().window->hasAttachedSheet());
    EXPECT_TRUE(alert->isVisible());
    EXPECT_EQ(freeStanding(), nullptr);
}

TEST_F(AnAlert, ShowsItsTextsAsTheyAre) {
    AlertContents what;
    what.messageText = "<b>100%@</b>";
    what.informativeText = "%@ & <i>%s</i>";
    const auto alert = begin(what, outlets().window);
    EXPECT_THAT(texts(), ElementsAre("<b>100%@</b>", "%@ & <i>%s</i>"));
    for (const auto* label : view()->findChildren<QLabel*>()) {
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
    }
}

TEST_F(AnAlert, HasOneOKWithoutTitles) {
    const auto alert = begin(contents(), outlets().window);
    const auto buttons = view()->findChildren<QPushButton*>();
    ASSERT_EQ(buttons.size(), 1);
    EXPECT_EQ(buttons.front()->text().toStdString(), "OK");
}

TEST_F(AnAlert, AnswersOneZeroAndMinusOneByItsButtons) {
    for (const long code : {1L, 0L, -1L}) {
        const auto alert = begin(contents("Download", "Cancel", "Later"), outlets().window);
        QTest::mouseClick(view()->button(code), Qt::LeftButton);
        EXPECT_FALSE(alert->isVisible());
    }
    EXPECT_THAT(answers, ElementsAre(1, 0, -1));
}

TEST_F(AnAlert, TakesReturnForTheDefaultButton) {
    const auto alert = begin(contents("Download", "Cancel"), outlets().window);
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre(1));
}

TEST_F(AnAlert, TakesEscapeForTheAlternateButton) {
    const auto alert = begin(contents("Download", "Cancel", "Later"), outlets().window);
    press(Qt::Key_Escape);
    EXPECT_THAT(answers, ElementsAre(0));
}

TEST_F(AnAlert, LeavesEscapeAloneWithoutAnAlternateButton) {
    for (const auto& what : {contents(), contents("Yes", {}, "No")}) {
        const auto alert = begin(what, outlets().window);
        press(Qt::Key_Escape);
        EXPECT_THAT(answers, IsEmpty());
        EXPECT_TRUE(alert->isVisible());
    }
}

TEST_F(AnAlert, ShowsAnAmpersandOfATitleAndMakesNoShortcutOfIt) {
    const auto alert = begin(contents("Rock & Roll"), outlets().window);
    auto* button = view()->button(1);
    EXPECT_TRUE(button->shortcut().isEmpty());
    EXPECT_EQ(QAccessible::queryAccessibleInterface(button)->text(QAccessible::Name).toStdString(), "Rock & Roll");
}

TEST_F(AnAlert, GoesWithoutAnAnswerWhenItIsOrderedOut) {
    const auto alert = begin(contents(), outlets().window);
    alert->orderOut();
    EXPECT_FALSE(alert->isVisible());
    EXPECT_FALSE(outlets().window->hasAttachedSheet());
    EXPECT_THAT(answers, IsEmpty());
}

TEST_F(AnAlert, GoesWithItsObject) {
    begin(contents(), outlets().window).reset();
    EXPECT_FALSE(outlets().window->hasAttachedSheet());
    EXPECT_TRUE(find("btnInstall").isEnabled());
}

TEST_F(AnAlert, MayBeDestroyedByItsOwnEnd) {
    auto alert = alerts.make(contents());
    alert->begin(outlets().window, [&](long code) {
        answers.push_back(code);
        alert.reset();
    });
    press(Qt::Key_Return);
    QTest::qWait(10);
    EXPECT_THAT(answers, ElementsAre(1));
    EXPECT_EQ(alert, nullptr);
}

TEST_F(AnAlert, StandsFreeWithoutAWindowAndBlocksNothing) {
    const auto alert = begin(contents(), nullptr);
    ASSERT_NE(freeStanding(), nullptr);
    EXPECT_EQ(freeStanding()->windowModality(), Qt::NonModal);
    QTest::mouseClick(&find("btnInstall"), Qt::LeftButton);
    EXPECT_THAT(delegate.calls, ElementsAre("install"));
}

TEST_F(AnAlert, IsAnsweredByReturnAndEscapeWhereItStandsFree) {
    const auto first = begin(contents("Download", "Cancel"), nullptr);
    QTest::keyClick(freeStanding()->windowHandle(), Qt::Key_Escape);
    const auto second = begin(contents("Download", "Cancel"), nullptr);
    QTest::keyClick(freeStanding()->windowHandle(), Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre(0, 1));
}

TEST_F(AnAlert, TakesTheClosingOfItsOwnWindowForTheAlternateOrTheOnlyButton) {
    const auto first = begin(contents("Download", "Cancel"), nullptr);
    freeStanding()->close();
    const auto second = begin(contents(), nullptr);
    freeStanding()->close();
    EXPECT_THAT(answers, ElementsAre(0, 1));
}

TEST_F(AnAlert, LeavesEscapeAloneWithoutAnAlternateButtonWhereItStandsFree) {
    const auto alert = begin(contents(), nullptr);
    QTest::keyClick(freeStanding()->windowHandle(), Qt::Key_Escape);
    EXPECT_THAT(answers, IsEmpty());
    EXPECT_TRUE(alert->isVisible());
}

TEST_F(AnAlert, StaysWhenItsWindowIsClosedButNoAnswerIsMeant) {
    const auto alert = begin(contents("Yes", {}, "No"), nullptr);
    freeStanding()->close();
    EXPECT_TRUE(alert->isVisible());
    EXPECT_THAT(answers, IsEmpty());
}

TEST_F(AnAlert, StandsFreeOverAWindowThatHasASheet) {
    const auto below = begin(contents(), outlets().window);
    bool answered = false;
    QTimer::singleShot(100, [&] {
        ASSERT_NE(freeStanding(), nullptr);
        QTest::mouseClick(freeStanding()->findChild<QPushButton*>(), Qt::LeftButton);
        answered = true;
    });
    EXPECT_EQ(KZAlert::alertSheetWithMessageText("second", "text", outlets().window), 1);
    EXPECT_TRUE(answered);
    EXPECT_TRUE(below->isVisible());
}

TEST_F(AnAlert, IsAnAlertToAssistiveTechnology) {
    const auto alert = begin(contents(), outlets().window);
    auto* interface = QAccessible::queryAccessibleInterface(SheetOverlay::topmost(window));
    EXPECT_EQ(interface->role(), QAccessible::AlertMessage);
    EXPECT_EQ(interface->text(QAccessible::Name).toStdString(), "This feature requires Tallowmere");
}

TEST_F(AnAlert, StaysInsideASmallWindowHoweverLongItsText) {
    window.resize(400, 240);
    AlertContents what = contents("Download", "Cancel");
    what.informativeText = std::string(5000, 'x') + std::string(1000, ' ');
    for (int i = 0; i < 500; ++i) {
        what.informativeText += " words";
    }
    const auto alert = begin(what, outlets().window);
    EXPECT_TRUE(window.rect().contains(SheetOverlay::topmost(window)->sheetGeometry()));
    for (const long code : {1L, 0L}) {
        const auto* button = view()->button(code);
        EXPECT_TRUE(window.rect().contains(QRect(button->mapTo(&window, QPoint(0, 0)), button->size()))) << code;
    }
}

TEST_F(AnAlert, StacksLongTitlesInsteadOfCuttingThem) {
    window.resize(400, 300);
    const std::string title(30, 'W');
    const auto alert = begin(contents(title, title, title), outlets().window);
    EXPECT_EQ(view()->button(1)->x(), view()->button(0)->x());
    EXPECT_LT(view()->button(1)->y(), view()->button(0)->y());
}

TEST_F(AnAlert, HasNoSuppressionBoxUnlessItIsAskedFor) {
    const auto alert = begin(contents(), outlets().window);
    EXPECT_EQ(view()->suppressionBox(), nullptr);
}

TEST_F(AnAlert, WritesTheUserDefaultWhenTheBoxIsTicked) {
    AlertContents what = contents();
    what.suppressionKey = "dont-ask";
    const auto alert = begin(what, outlets().window);
    EXPECT_FALSE(view()->suppressionBox()->isChecked());
    view()->suppressionBox()->click();
    EXPECT_EQ(defaults.values["dont-ask"], platform::PropertyValue{true});
    view()->suppressionBox()->click();
    EXPECT_EQ(defaults.values["dont-ask"], platform::PropertyValue{false});
}

TEST_F(AnAlert, SetsTheBoxByTheUserDefault) {
    defaults.values["dont-ask"] = platform::PropertyValue{true};
    AlertContents what = contents();
    what.suppressionKey = "dont-ask";
    const auto alert = begin(what, outlets().window);
    EXPECT_TRUE(view()->suppressionBox()->isChecked());
}

TEST_F(AnAlert, ReturnsTheAnswerToAWaitingCallOnTheMainThread) {
    QTimer::singleShot(50, [&] { press(Qt::Key_Escape); });
    EXPECT_EQ(
        KZAlert::alertSheetWithMessageText("t", "Download", "Cancel", std::nullopt, "i", outlets().window, Block::yes),
        0);
    EXPECT_FALSE(outlets().window->hasAttachedSheet());
}

TEST_F(AnAlert, ReturnsTheAnswerToAWorkerThatWaits) {
    std::atomic<std::int64_t> code = -7;
    std::thread worker([&] { code = KZAlert::alertSheetWithMessageText("t", "i", outlets().window); });
    EXPECT_TRUE(QTest::qWaitFor([&] { return view() != nullptr; }));
    press(Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return code == 1; }));
    worker.join();
}

TEST_F(AnAlert, IsTakenAwayByItsTimer) {
    EXPECT_EQ(KZAlert::timedAlertSheetWithMessageText("t", "a", "b", std::nullopt, "i", outlets().window, 1), 1);
    EXPECT_FALSE(outlets().window->hasAttachedSheet());
    EXPECT_TRUE(find("btnInstall").isEnabled());
}

TEST_F(AnAlert, SurvivesTheTimerThatFiresAfterTheAnswer) {
    QTimer::singleShot(50, [&] { press(Qt::Key_Escape); });
    EXPECT_EQ(KZAlert::timedAlertSheetWithMessageText("t", "a", "b", std::nullopt, "i", outlets().window, 1), 0);
    QTest::qWait(1200);
    EXPECT_FALSE(outlets().window->hasAttachedSheet());
}

TEST_F(AnAlert, BlocksTheWholeApplicationAsAPanelUntilItIsDismissed) {
    bool modal = false;
    QTimer::singleShot(100, [&] {
        modal = freeStanding() != nullptr && freeStanding()->windowModality() == Qt::ApplicationModal;
        QTest::keyClick(freeStanding()->windowHandle(), Qt::Key_Return);
    });
    application.runAlertPanel("Unable to install", "This installer has been damaged.");
    EXPECT_TRUE(modal);
    EXPECT_EQ(freeStanding(), nullptr);
}

TEST_F(AnAlert, LetsOtherThreadsBeServedWhileAPanelIsUp) {
    bool served = false;
    std::thread worker([&] {
        mainThread.performAndWait([&] { served = true; });
        mainThread.performAndWait([&] { freeStanding()->close(); });
    });
    application.runAlertPanel("t", "m");
    worker.join();
    EXPECT_TRUE(served);
}

TEST_F(AnAlert, OfTheApplicationWorksBeforeTheWindowIsShown) {
    window.hide();
    QTimer::singleShot(100, [&] { QTest::keyClick(freeStanding()->windowHandle(), Qt::Key_Return); });
    application.runAlertPanel("Unable to install", "This installer has been damaged.");
    EXPECT_EQ(freeStanding(), nullptr);
}
