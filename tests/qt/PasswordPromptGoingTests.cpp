#include <gmock/gmock.h>

#include "platform/linux/qt/Spinner.h"
#include "tests/qt/PasswordPromptFixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using windowtests::ThePasswordSheet;

using Problem = platform::rights::PasswordRequest::Problem;

TEST_F(ThePasswordSheet, GoesWhenItIsClosed) {
    ask(one());
    type("pw");
    press(Qt::Key_Return);
    close();
    EXPECT_EQ(sheet(), nullptr);
    EXPECT_FALSE(outlets().window->hasAttachedSheet());
    EXPECT_THAT(answers, ElementsAre("ann pw"));
}

TEST_F(ThePasswordSheet, CallsNobodyWhenItIsClosedUnanswered) {
    ask(one());
    close();
    close();
    EXPECT_THAT(answers, IsEmpty());
}

TEST_F(ThePasswordSheet, GivesTheFocusBack) {
    find("btnGantry").setFocus();
    ask(one());
    close();
    EXPECT_EQ(focused(), "btnGantry");
}

TEST_F(ThePasswordSheet, IsCancelledWhenTheWindowIsClosed) {
    ask(one());
    window.close();
    EXPECT_THAT(answers, ElementsAre("cancelled"));
    EXPECT_EQ(sheet(), nullptr);
}

TEST_F(ThePasswordSheet, IsCancelledWhenTheApplicationEnds) {
    ask(one());
    application.terminate();
    QTest::qWait(10);
    EXPECT_THAT(answers, ElementsAre("cancelled"));
    EXPECT_EQ(processEnds, 1);
}

TEST_F(ThePasswordSheet, IsNoLongerShownByAnApplicationThatEnds) {
    application.terminate();
    QTest::qWait(10);
    ask(one());
    EXPECT_EQ(sheet(), nullptr);
    EXPECT_THAT(answers, ElementsAre("cancelled"));
}

TEST_F(ThePasswordSheet, IsCoveredByAnAlertAndThereAfterwards) {
    ask(one());
    type("pw");
    platform::AlertContents contents;
    contents.messageText = "Above";
    auto alert = alerts.make(contents);
    alert->begin(outlets().window, {});
    QTest::qWait(10);
    EXPECT_FALSE(field().isEnabled());
    press(Qt::Key_Return);
    EXPECT_FALSE(alert->isVisible());
    EXPECT_EQ(focused(), "password");
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("ann pw"));
}

TEST_F(ThePasswordSheet, MayGoFromUnderAnAlertThatKeepsTheWindowBlocked) {
    find("btnGantry").setFocus();
    ask(one());
    platform::AlertContents contents;
    contents.messageText = "Above";
    auto alert = alerts.make(contents);
    alert->begin(outlets().window, {});
    close();
    EXPECT_TRUE(alert->isVisible());
    EXPECT_FALSE(find("btnInstall").isEnabled());
    press(Qt::Key_Return);
    EXPECT_FALSE(alert->isVisible());
    EXPECT_TRUE(find("btnInstall").isEnabled());
    EXPECT_EQ(focused(), "btnGantry");
}

TEST_F(ThePasswordSheet, AsksAgainUnderAnAlertWithoutTakingItsKeys) {
    ask(one());
    platform::AlertContents contents;
    contents.messageText = "Above";
    auto alert = alerts.make(contents);
    alert->begin(outlets().window, {});
    ask(again(one(), Problem::wrongPassword));
    press(Qt::Key_Return);
    EXPECT_FALSE(alert->isVisible());
    EXPECT_TRUE(field().isEnabled());
    type("pw");
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("ann pw"));
}

TEST_F(ThePasswordSheet, LeavesTheSpinnerOfTheInstallationTurning) {
    outlets().spinner->setHidden(false);
    outlets().spinner->startAnimation();
    ask(one());
    EXPECT_TRUE(find<platform::qt::Spinner>("spinner").isAnimating());
}
