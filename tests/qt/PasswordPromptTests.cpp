#include <gmock/gmock.h>

#include <QComboBox>
#include <QLabel>
#include <thread>

#include "tests/qt/PasswordPromptFixture.h"

using platform::rights::PasswordAnswer;
using testing::ElementsAre;
using testing::IsEmpty;
using windowtests::ThePasswordSheet;

using Problem = platform::rights::PasswordRequest::Problem;

TEST_F(ThePasswordSheet, ComesUpOnTheWindowAndBlocksIt) {
    ask(one());
    EXPECT_TRUE(outlets().window->hasAttachedSheet());
    EXPECT_FALSE(find("btnInstall").isEnabled());
    EXPECT_TRUE(window.isAncestorOf(sheet()));
}

TEST_F(ThePasswordSheet, SaysWhoAsksAndForWhat) {
    ask(one());
    EXPECT_EQ(shows("headline"), "\u2068Larkspur Reverb Installer\u2069 wants to make changes.");
    EXPECT_EQ(shows("explanation"),
              "Enter the password of an administrator to install files in folders that you may not change.");
}

TEST_F(ThePasswordSheet, IsAnsweredByTypingAndReturn) {
    ask(one());
    type("s3cret");
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("ann s3cret"));
}

TEST_F(ThePasswordSheet, IsAnsweredByTheMouse) {
    ask(one());
    type("s3cret");
    QTest::mouseClick(&part("allow"), Qt::LeftButton);
    EXPECT_THAT(answers, ElementsAre("ann s3cret"));
}

TEST_F(ThePasswordSheet, IsCancelledByEscapeAndGoesAtOnce) {
    ask(one());
    type("s3cret");
    press(Qt::Key_Escape);
    EXPECT_THAT(answers, ElementsAre("cancelled"));
    EXPECT_EQ(sheet(), nullptr);
    EXPECT_TRUE(find("btnInstall").isEnabled());
}

TEST_F(ThePasswordSheet, IsCancelledByItsButton) {
    ask(one());
    QTest::mouseClick(&part("cancel"), Qt::LeftButton);
    EXPECT_THAT(answers, ElementsAre("cancelled"));
}

TEST_F(ThePasswordSheet, AllowsNothingWithoutAPassword) {
    ask(one());
    EXPECT_FALSE(part("allow").isEnabled());
    press(Qt::Key_Return);
    EXPECT_THAT(answers, IsEmpty());
    type("x");
    EXPECT_TRUE(part("allow").isEnabled());
    press(Qt::Key_Backspace);
    EXPECT_FALSE(part("allow").isEnabled());
}

TEST_F(ThePasswordSheet, IsUsedByTheKeyboardAlone) {
    ask(several());
    EXPECT_EQ(focused(), "password");
    type("pw");
    std::vector<std::string> visited;
    for (int i = 0; i < 4; ++i) {
        press(Qt::Key_Tab);
        visited.push_back(focused());
    }
    EXPECT_THAT(visited, ElementsAre("cancel", "allow", "names", "password"));
    press(Qt::Key_Tab);
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("cancelled"));
}

TEST_F(ThePasswordSheet, FixesTheNameOfTheOnlyAdministrator) {
    ask(one());
    EXPECT_EQ(shows("onlyName"), "\u2068Ann Other\u2069 (ann)");
    EXPECT_FALSE(part("names").isVisible());
}

TEST_F(ThePasswordSheet, OffersTheAdministratorsWhenThereAreSeveral) {
    ask(several());
    auto& names = part<QComboBox>("names");
    EXPECT_FALSE(names.isEditable());
    ASSERT_EQ(names.count(), 3);
    EXPECT_EQ(names.itemText(1).toStdString(), "\u2068Bob\u2069 (bob)");
    EXPECT_EQ(names.itemText(2).toStdString(), "root");
    names.setFocus();
    press(Qt::Key_Down);
    field().setFocus();
    type("pw");
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("bob pw"));
}

TEST_F(ThePasswordSheet, StartsWithTheAdministratorThatIsAskedFor) {
    auto request = several();
    request.user = "root";
    ask(request);
    type("pw");
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("root pw"));
}

TEST_F(ThePasswordSheet, LetsAnotherAdministratorBeNamedWhenThatMayBe) {
    ask(several(true));
    ASSERT_TRUE(part<QComboBox>("names").isEditable());
    part("names").setFocus(Qt::TabFocusReason);
    type("carol");
    field().setFocus();
    type("pw");
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("carol pw"));
}

TEST_F(ThePasswordSheet, AnswersByReturnFromTheNameToo) {
    ask(several(true));
    type("pw");
    part("names").setFocus(Qt::TabFocusReason);
    type("bob");
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("bob pw"));
}

TEST_F(ThePasswordSheet, AllowsNothingWithoutAName) {
    ask(several(true));
    type("pw");
    part("names").setFocus(Qt::TabFocusReason);
    press(Qt::Key_Backspace);
    EXPECT_FALSE(part("allow").isEnabled());
}

TEST_F(ThePasswordSheet, DoesNotFinishANameThatIsTyped) {
    ask(several(true));
    part("names").setFocus(Qt::TabFocusReason);
    type("ro");
    EXPECT_EQ(part<QComboBox>("names").currentText().toStdString(), "ro");
}

TEST_F(ThePasswordSheet, AsksInTheMachinesWordsAndShowsWhatMayBeSeen) {
    auto request = one();
    request.question = "Verification code: ";
    request.isEchoed = true;
    ask(request);
    EXPECT_EQ(shows("question"), "Verification code:");
    type("123456");
    EXPECT_EQ(field().displayText().toStdString(), "123456");
    press(Qt::Key_Return);
    EXPECT_THAT(answers, ElementsAre("ann 123456"));
}

TEST_F(ThePasswordSheet, PutsALongQuestionAboveTheField) {
    ask(one());
    EXPECT_LT(part("question").mapTo(sheet(), QPoint()).x(), field().mapTo(sheet(), QPoint()).x());
    auto request = one();
    request.question = "Enter the code that was sent to the telephone that ends in 42:";
    ask(request);
    EXPECT_LT(part("question").mapTo(sheet(), QPoint()).y(), field().mapTo(sheet(), QPoint()).y());
    EXPECT_EQ(part("question").mapTo(sheet(), QPoint()).x(), field().mapTo(sheet(), QPoint()).x());
}

TEST_F(ThePasswordSheet, ShowsHostileTextAsItIs) {
    auto request = again(one(), Problem::wrongPassword, "<img src='file:///etc/passwd'><b>bold</b> & %1");
    request.question = "<h1>Root</h1> & more";
    request.administrators[0].realName = "<b>Ann</b>";
    window.setWindowTitle(QString::fromLatin1("<u>Evil</u> %1"));
    ask(request);
    EXPECT_EQ(part<QLabel>("details").accessibleName().toStdString(), "<img src='file:///etc/passwd'><b>bold</b> & %1");
    for (const auto* label : sheet()->findChildren<QLabel*>()) {
        EXPECT_EQ(label->textFormat(), Qt::PlainText) << label->text().toStdString();
    }
}

TEST_F(ThePasswordSheet, ForgetsTheNameForAnotherQuestion) {
    ask(several());
    part<QComboBox>("names").setCurrentIndex(2);
    close();
    ask(several());
    EXPECT_EQ(part<QComboBox>("names").currentIndex(), 0);
}

TEST_F(ThePasswordSheet, IsAskedForByAnotherThread) {
    std::atomic<bool> answered = false;
    std::thread asking([&] {
        prompt.ask(one(), [&](std::optional<PasswordAnswer> given) { answered = given && given->user == "ann"; });
    });
    asking.join();
    EXPECT_TRUE(QTest::qWaitFor([&] { return sheet() != nullptr; }));
    type("pw");
    press(Qt::Key_Return);
    EXPECT_TRUE(answered);
    std::thread closing([&] { prompt.close(); });
    closing.join();
    EXPECT_TRUE(QTest::qWaitFor([&] { return sheet() == nullptr; }));
}
