#include <gmock/gmock.h>

#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <thread>

#include "platform/linux/qt/ElidedLabel.h"
#include "platform/linux/qt/PasswordField.h"
#include "platform/linux/qt/PasswordSheet.h"
#include "platform/linux/qt/PasswordWindow.h"
#include "platform/linux/qt/QtPasswordPrompt.h"
#include "platform/linux/qt/QtText.h"
#include "platform/linux/qt/SheetOverlay.h"
#include "platform/linux/qt/Spinner.h"
#include "platform/linux/qt/TextScroller.h"
#include "tests/qt/WindowFixture.h"

using platform::qt::ElidedLabel;
using platform::qt::PasswordField;
using platform::qt::PasswordSheet;
using platform::qt::PasswordWindow;
using platform::qt::SheetOverlay;
using platform::rights::PasswordAnswer;
using platform::rights::PasswordRequest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Problem = PasswordRequest::Problem;

class ThePasswordSheet : public windowtests::WindowTest {
protected:
    ThePasswordSheet() {
        window.setWindowTitle(QString::fromLatin1("Larkspur Reverb Installer"));
        prompt.attachTo(window);
    }

    static PasswordRequest one() {
        PasswordRequest request;
        request.administrators = {{.user = "ann", .realName = "Ann Other"}};
        return request;
    }
    static PasswordRequest several(bool mayNameAnother = false) {
        PasswordRequest request = one();
        request.administrators.push_back({.user = "bob", .realName = "Bob"});
        request.administrators.push_back({.user = "root", .realName = ""});
        request.mayNameAnother = mayNameAnother;
        return request;
    }
    static PasswordRequest again(PasswordRequest request, Problem problem, std::string details = {}) {
        request.problem = problem;
        request.details = std::move(details);
        return request;
    }

    // Answers are kept as "user password", a cancel as "cancelled".
    void ask(PasswordRequest request) {
        prompt.ask(std::move(request), [this](std::optional<PasswordAnswer> given) {
            answers.push_back(given ? given->user + " " + std::string(given->password.view()) : "cancelled");
        });
        QTest::qWait(10);
    }
    void close() {
        prompt.close();
        QTest::qWait(10);
    }

    PasswordSheet* sheet() {
        for (auto* top : QApplication::topLevelWidgets()) {
            if (auto* found = top->findChild<PasswordSheet*>(); found != nullptr && found->isVisible()) {
                return found;
            }
        }
        return nullptr;
    }
    template <typename Widget = QWidget>
    Widget& part(const char* name) {
        auto* found = sheet() != nullptr ? sheet()->findChild<Widget*>(QString::fromLatin1(name)) : nullptr;
        if (found == nullptr) {
            throw std::runtime_error(std::string("no widget ") + name);
        }
        return *found;
    }
    PasswordField& field() { return part<PasswordField>("password"); }
    std::string shows(const char* name) {
        const auto& label = part<QLabel>(name);
        return label.isVisible() ? label.text().toStdString() : "";
    }
    void type(const char* text) {
        for (const char* key = text; *key != '\0'; ++key) {
            QTest::keyClick(QApplication::activeWindow()->windowHandle(), *key);
        }
    }
    static std::string focused() {
        return QApplication::focusWidget() != nullptr ? QApplication::focusWidget()->objectName().toStdString() : "";
    }
    bool isInside(QWidget& widget) {
        return window.rect().contains(QRect(widget.mapTo(&window, QPoint(0, 0)), widget.size()));
    }

    platform::qt::QtPasswordPrompt prompt{application};
    std::vector<std::string> answers;
};

}  // namespace

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
