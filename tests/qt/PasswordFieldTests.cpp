#include "platform/linux/qt/PasswordField.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QMenu>
#include <QMimeData>
#include <QTest>

#include "platform/linux/qt/QtText.h"

using platform::qt::PasswordField;
using platform::qt::toQt;

namespace {

class APasswordField : public testing::Test {
protected:
    APasswordField() {
        field.show();
        field.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&field));
        field.setFocus();
    }

    void type(const char* text) {
        for (const char32_t character : QString::fromUtf8(text).toUcs4()) {
            QKeyEvent event(QEvent::KeyPress, 0, {}, QString::fromUcs4(&character, 1));
            QApplication::sendEvent(&field, &event);
        }
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(&field, key, modifiers);
    }
    void press(QKeySequence::StandardKey key) { QTest::keySequence(&field, QKeySequence(key)); }
    std::string taken() { return std::string(field.take().view()); }
    std::string shown() { return field.text().toStdString(); }
    static void copyElsewhere(const std::string& text) { QApplication::clipboard()->setText(toQt(text)); }

    PasswordField field;
};

std::string dots(int count) {
    std::string made;
    for (int i = 0; i < count; ++i) {
        made += "\u2022";
    }
    return made;
}

}  // namespace

TEST_F(APasswordField, GivesAwayWhatWasTyped) {
    type("tr0ub4dor &3");
    EXPECT_EQ(taken(), "tr0ub4dor &3");
}

TEST_F(APasswordField, HoldsNothingButDots) {
    type("secret");
    EXPECT_EQ(shown(), dots(6));
    EXPECT_NE(field.displayText().toStdString(), "secret");
}

TEST_F(APasswordField, IsEmptyOnceItHasGivenAway) {
    type("secret");
    taken();
    EXPECT_EQ(shown(), "");
    EXPECT_EQ(taken(), "");
}

TEST_F(APasswordField, RemovesTheCharacterBeforeTheCursor) {
    type("abc");
    press(Qt::Key_Left);
    press(Qt::Key_Backspace);
    EXPECT_EQ(shown(), dots(2));
    EXPECT_EQ(taken(), "ac");
}

TEST_F(APasswordField, RemovesTheCharacterAfterTheCursor) {
    type("abc");
    press(Qt::Key_Home);
    press(Qt::Key_Delete);
    EXPECT_EQ(taken(), "bc");
}

TEST_F(APasswordField, DoesNothingWhereThereIsNothingToRemove) {
    type("ab");
    press(Qt::Key_Delete);
    press(Qt::Key_Home);
    press(Qt::Key_Backspace);
    EXPECT_EQ(taken(), "ab");
}

TEST_F(APasswordField, TypesAtTheCursor) {
    type("bd");
    press(Qt::Key_Left);
    type("c");
    press(Qt::Key_Home);
    type("a");
    press(Qt::Key_End);
    type("e");
    EXPECT_EQ(taken(), "abcde");
}

TEST_F(APasswordField, TypesOverWhatIsSelected) {
    type("abcdef");
    press(Qt::Key_Left);
    press(Qt::Key_Left, Qt::ShiftModifier);
    press(Qt::Key_Left, Qt::ShiftModifier);
    type("X");
    EXPECT_EQ(shown(), dots(5));
    EXPECT_EQ(taken(), "abcXf");
}

TEST_F(APasswordField, RemovesWhatIsSelected) {
    type("abcdef");
    press(Qt::Key_Home);
    press(Qt::Key_Right);
    press(Qt::Key_Right, Qt::ShiftModifier);
    press(Qt::Key_Right, Qt::ShiftModifier);
    press(Qt::Key_Backspace);
    EXPECT_EQ(taken(), "adef");
}

TEST_F(APasswordField, IsEmptiedBySelectingAllAndTyping) {
    type("abc");
    press(QKeySequence::SelectAll);
    type("z");
    EXPECT_EQ(taken(), "z");
}

TEST_F(APasswordField, RemovesUpToTheStartWhereAWordWouldGo) {
    type("one two three");
    press(Qt::Key_Left);
    press(Qt::Key_Backspace, Qt::ControlModifier);
    EXPECT_EQ(taken(), "e");
}

TEST_F(APasswordField, RemovesUpToTheEndWhereAWordWouldGo) {
    type("one two");
    press(Qt::Key_Home);
    press(Qt::Key_Right);
    press(Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_EQ(taken(), "o");
}

TEST_F(APasswordField, IsCleared) {
    type("abc");
    field.clear();
    EXPECT_EQ(taken(), "");
}

TEST_F(APasswordField, CountsACharacterOnceHoweverManyBytesItTakes) {
    type("a\u00e9\u20ac\U0001F511z");
    EXPECT_EQ(shown(), dots(5));
    press(Qt::Key_Left);
    press(Qt::Key_Backspace);
    EXPECT_EQ(taken(), "a\u00e9\u20acz");
}

TEST_F(APasswordField, KeepsTheOrderOfOtherScripts) {
    field.insertText(toQt("\u05e9\u05dc\u05d5\u05dd 1"));
    press(Qt::Key_Backspace);
    EXPECT_EQ(taken(), "\u05e9\u05dc\u05d5\u05dd ");
}

TEST_F(APasswordField, DropsHalvesOfSurrogatePairs) {
    field.insertText(QString(QChar(0xD83D)) + QString::fromLatin1("ab") + QChar(0xDD11));
    EXPECT_EQ(taken(), "ab");
}

TEST_F(APasswordField, TakesAPastedPasswordOverTheSelection) {
    type("abc");
    press(QKeySequence::SelectAll);
    copyElsewhere("pasted\u00fc");
    press(QKeySequence::Paste);
    EXPECT_EQ(shown(), dots(7));
    EXPECT_EQ(taken(), "pasted\u00fc");
}

TEST_F(APasswordField, LeavesTheClipboardAsItWas) {
    copyElsewhere("pasted");
    press(QKeySequence::Paste);
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "pasted");
}

TEST_F(APasswordField, TakesTheFirstLineOfWhatIsPasted) {
    copyElsewhere("one\ttwo\r\nrm -rf\n");
    press(QKeySequence::Paste);
    EXPECT_EQ(taken(), "onetwo");
}

TEST_F(APasswordField, TakesNoNullCharacter) {
    field.insertText(QString::fromLatin1("a\0b", 3));
    EXPECT_EQ(taken(), "ab");
}

TEST_F(APasswordField, CopiesAndCutsNothing) {
    copyElsewhere("before");
    type("abc");
    press(QKeySequence::SelectAll);
    press(QKeySequence::Copy);
    press(QKeySequence::Cut);
    field.copy();
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "before");
    EXPECT_EQ(taken(), "abc");
}

TEST_F(APasswordField, BringsNothingBackThatWasRemoved) {
    type("abc");
    press(Qt::Key_Backspace);
    press(QKeySequence::Undo);
    press(QKeySequence::Redo);
    EXPECT_EQ(shown(), dots(2));
    EXPECT_EQ(taken(), "ab");
}

TEST_F(APasswordField, RefusesWhatWouldNotFitAndKeepsTheRest) {
    type("ab");
    field.insertText(QString(platform::rights::Secret::capacity, u'x'));
    EXPECT_EQ(shown(), dots(2));
    EXPECT_EQ(taken(), "ab");
}

TEST_F(APasswordField, HoldsAsMuchAsASecret) {
    field.insertText(QString(platform::rights::Secret::capacity, u'x'));
    type("y");
    EXPECT_EQ(taken(), std::string(platform::rights::Secret::capacity, 'x'));
}

TEST_F(APasswordField, MakesRoomByWhatIsSelected) {
    field.insertText(QString(platform::rights::Secret::capacity, u'x'));
    press(QKeySequence::SelectAll);
    type("new");
    EXPECT_EQ(taken(), "new");
}

TEST_F(APasswordField, SurvivesATextOfMegabytes) {
    field.insertText(QString(8'000'000, QChar(0x20AC)));
    EXPECT_EQ(taken(), "");
}

TEST_F(APasswordField, TakesWhatAnInputMethodCommits) {
    QInputMethodEvent composing(QString::fromLatin1("vi"), {});
    QApplication::sendEvent(&field, &composing);
    EXPECT_EQ(field.displayText().toStdString(), "");
    QInputMethodEvent committing;
    committing.setCommitString(toQt("\u7fa9a"));
    QApplication::sendEvent(&field, &committing);
    EXPECT_EQ(shown(), dots(2));
    EXPECT_EQ(taken(), "\u7fa9a");
}

TEST_F(APasswordField, ReplacesWhatAnInputMethodTakesBack) {
    type("abc");
    QInputMethodEvent event;
    event.setCommitString(QString::fromLatin1("X"), -2, 2);
    QApplication::sendEvent(&field, &event);
    EXPECT_EQ(taken(), "aX");
}

TEST_F(APasswordField, TellsInputMethodsThatItIsSensitive) {
    const auto hints = field.inputMethodQuery(Qt::ImHints).toInt();
    EXPECT_TRUE(hints & Qt::ImhSensitiveData);
    EXPECT_TRUE(hints & Qt::ImhHiddenText);
}

TEST_F(APasswordField, TakesWhatIsDropped) {
    type("ab");
    QMimeData dragged;
    dragged.setText(QString::fromLatin1("dropped"));
    QDragEnterEvent entering(QPoint(5, 5), Qt::CopyAction, &dragged, Qt::LeftButton, {});
    QApplication::sendEvent(&field, &entering);
    EXPECT_TRUE(entering.isAccepted());
    QDropEvent event(QPointF(field.width() - 5, field.height() / 2.0), Qt::CopyAction, &dragged, Qt::LeftButton, {});
    QApplication::sendEvent(&field, &event);
    EXPECT_EQ(shown(), dots(9));
    EXPECT_EQ(taken(), "abdropped");
}

TEST_F(APasswordField, OffersPastingInItsMenuAndNothingThatTakesTextOut) {
    copyElsewhere("from the menu");
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(2, 2), field.mapToGlobal(QPoint(2, 2)));
    QApplication::sendEvent(&field, &event);
    auto* menu = field.findChild<QMenu*>();
    ASSERT_NE(menu, nullptr);
    QStringList titles;
    for (const auto* action : menu->actions()) {
        titles.append(action->text());
    }
    EXPECT_EQ(titles.join(u' ').toStdString(), "&Paste &Clear");
    menu->actions().front()->trigger();
    menu->close();
    EXPECT_EQ(taken(), "from the menu");
}

TEST_F(APasswordField, TakesWhatAssistiveTechnologyPutsIn) {
    type("ad");
    auto* text = QAccessible::queryAccessibleInterface(&field)->editableTextInterface();
    text->insertText(1, QString::fromLatin1("bc"));
    EXPECT_EQ(shown(), dots(4));
    EXPECT_EQ(taken(), "abcd");
    text->replaceText(0, 0, QString::fromLatin1("whole"));
    EXPECT_EQ(shown(), dots(5));
    EXPECT_EQ(taken(), "whole");
}

TEST_F(APasswordField, IsAPasswordFieldToAssistiveTechnologyThatReadsNothing) {
    type("secret");
    auto* interface = QAccessible::queryAccessibleInterface(&field);
    EXPECT_TRUE(interface->state().passwordEdit);
    EXPECT_EQ(interface->text(QAccessible::Value).toStdString().find("secret"), std::string::npos);
    EXPECT_EQ(interface->textInterface()->text(0, 6).toStdString(), "");
}

TEST_F(APasswordField, ShowsWhatIsTypedWhenThatIsWanted) {
    field.setEchoed(true);
    type("12 34");
    EXPECT_EQ(field.displayText().toStdString(), "12 34");
    EXPECT_EQ(taken(), "12 34");
    EXPECT_EQ(shown(), "");
}

TEST_F(APasswordField, HidesWhatIsTypedAfterwards) {
    field.setEchoed(true);
    type("12");
    field.setEchoed(false);
    EXPECT_EQ(shown(), "");
    type("34");
    EXPECT_EQ(shown(), dots(2));
    EXPECT_EQ(taken(), "34");
}

TEST_F(APasswordField, LeavesReturnAndEscapeToItsSheet) {
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
        QKeyEvent event(QEvent::KeyPress, key, {}, QString(u'\r'));
        QApplication::sendEvent(&field, &event);
        EXPECT_FALSE(event.isAccepted()) << key;
    }
    EXPECT_EQ(taken(), "");
}
