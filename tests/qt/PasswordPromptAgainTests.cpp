#include <gmock/gmock.h>

#include <QComboBox>
#include <QPushButton>

#include "platform/linux/qt/Spinner.h"
#include "tests/qt/PasswordPromptFixture.h"

using testing::ElementsAre;
using windowtests::ThePasswordSheet;

using Problem = platform::rights::PasswordRequest::Problem;

TEST_F(ThePasswordSheet, SaysThatThePasswordIsBeingChecked) {
    ask(one());
    EXPECT_EQ(shows("checking"), "");
    type("pw");
    press(Qt::Key_Return);
    EXPECT_EQ(shows("checking"), "Checking the password\u2026");
    EXPECT_TRUE(sheet()->findChild<platform::qt::Spinner*>()->isAnimating());
    EXPECT_FALSE(field().isEnabled());
    EXPECT_FALSE(part("allow").isEnabled());
    EXPECT_EQ(field().text().size(), 0);
}

TEST_F(ThePasswordSheet, AnswersOnceHoweverOftenReturnIsPressed) {
    ask(one());
    type("pw");
    for (int i = 0; i < 3; ++i) {
        press(Qt::Key_Return);
        press(Qt::Key_Space);
    }
    EXPECT_THAT(answers, ElementsAre("ann pw"));
}

TEST_F(ThePasswordSheet, CanBeCancelledWhileThePasswordIsBeingChecked) {
    ask(one());
    type("pw");
    press(Qt::Key_Return);
    press(Qt::Key_Escape);
    EXPECT_THAT(answers, ElementsAre("ann pw", "cancelled"));
    EXPECT_EQ(sheet(), nullptr);
}

TEST_F(ThePasswordSheet, SaysThatThePasswordWasWrongAndAsksAgain) {
    ask(one());
    type("wrong");
    press(Qt::Key_Return);
    ask(again(one(), Problem::wrongPassword));
    EXPECT_EQ(shows("problem"), "That password is not right. Try again.");
    EXPECT_EQ(focused(), "password");
    EXPECT_EQ(field().text().size(), 0);
    EXPECT_EQ(shows("checking"), "");
    type("right");
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("ann wrong", "ann right"));
}

TEST_F(ThePasswordSheet, KeepsTheNameWhenItAsksAgain) {
    ask(several(true));
    part("names").setFocus(Qt::TabFocusReason);
    type("carol");
    field().setFocus();
    type("wrong");
    press(Qt::Key_Return);
    ask(again(several(true), Problem::wrongPassword));
    type("right");
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("carol wrong", "carol right"));
}

TEST_F(ThePasswordSheet, KeepsTheChosenAdministratorWhenItAsksAgain) {
    ask(several());
    part<QComboBox>("names").setCurrentIndex(2);
    type("wrong");
    press(Qt::Key_Return);
    ask(again(several(), Problem::wrongPassword));
    type("right");
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("root wrong", "root right"));
}

TEST_F(ThePasswordSheet, AsksForAnotherNameWhenThatAccountMayNot) {
    ask(several(true));
    type("pw");
    press(Qt::Key_Return);
    ask(again(several(true), Problem::notAdministrator, "ann is not in the sudoers file."));
    EXPECT_EQ(focused(), "names");
    EXPECT_EQ(shows("details"), "ann is not in the sudoers file.");
    type("bob");
    press(Qt::Key_Tab);
    type("pw");
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("ann pw", "bob pw"));
}

TEST_F(ThePasswordSheet, OnlySaysSoWhenNoAttemptIsLeft) {
    ask(one());
    ask(again(one(), Problem::lockedOut, "Account locked for 10 minutes."));
    EXPECT_FALSE(field().isVisible());
    EXPECT_FALSE(part("cancel").isVisible());
    EXPECT_EQ(shows("onlyName"), "");
    EXPECT_EQ(shows("problem"), "No more attempts are possible for now.");
    EXPECT_EQ(shows("details"), "Account locked for 10 minutes.");
    EXPECT_EQ(part<QPushButton>("allow").text().toStdString(), "OK");
    EXPECT_EQ(focused(), "allow");
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("cancelled"));
    EXPECT_EQ(sheet(), nullptr);
}

TEST_F(ThePasswordSheet, IsClosedByEscapeWhenNoAttemptIsLeft) {
    ask(again(one(), Problem::lockedOut));
    press(Qt::Key_Escape);
    EXPECT_THAT(answers, ElementsAre("cancelled"));
}

TEST_F(ThePasswordSheet, SwaysWhenThePasswordWasWrong) {
    ask(one());
    qunsetenv("WICKFIELD_MOTION");
    const int rest = sheet()->mapTo(&window, QPoint()).x();
    ask(again(one(), Problem::wrongPassword));
    EXPECT_TRUE(QTest::qWaitFor([&] { return std::abs(sheet()->mapTo(&window, QPoint()).x() - rest) > 2; }, 2000));
    EXPECT_TRUE(QTest::qWaitFor([&] { return sheet()->mapTo(&window, QPoint()).x() == rest; }));
    qputenv("WICKFIELD_MOTION", "reduced");
}

TEST_F(ThePasswordSheet, StandsStillWhenMotionIsUnwanted) {
    ask(one());
    const int rest = sheet()->mapTo(&window, QPoint()).x();
    ask(again(one(), Problem::wrongPassword));
    EXPECT_FALSE(QTest::qWaitFor([&] { return sheet()->mapTo(&window, QPoint()).x() != rest; }, 300));
}
