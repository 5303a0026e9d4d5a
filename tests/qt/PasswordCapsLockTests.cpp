#include <QKeyEvent>
#include <QLabel>

#include "platform/linux/qt/CapsLock.h"
#include "platform/linux/qt/PasswordField.h"
#include "platform/linux/qt/PasswordSheet.h"
#include "platform/linux/qt/QtPasswordPrompt.h"
#include "tests/qt/WindowFixture.h"

using platform::qt::capsLockState;

namespace {

constexpr unsigned shift = 1;
constexpr unsigned lock = 2;
constexpr unsigned someScanCode = 38;

QKeyEvent key(Qt::Key which, unsigned nativeModifiers, unsigned scanCode = someScanCode) {
    return {QEvent::KeyPress, which, {}, scanCode, 0, nativeModifiers, QString(u'a')};
}

class CapsLockOnThePasswordSheet : public windowtests::WindowTest {
protected:
    CapsLockOnThePasswordSheet() {
        if (capsLockState()) {
            return;  // a display that tells would be asked, and not these events
        }
        prompt.attachTo(window);
        platform::rights::PasswordRequest request;
        request.administrators = {{.user = "ann", .realName = ""}};
        prompt.ask(request, {});
        QTest::qWait(10);
    }
    void SetUp() override {
        if (capsLockState()) {
            GTEST_SKIP() << "this display tells about Caps Lock itself";
        }
    }
    void type(unsigned nativeModifiers) {
        auto event = key(Qt::Key_A, nativeModifiers);
        QApplication::sendEvent(&find("password"), &event);
    }
    bool warns() { return find("capsLock").isVisible(); }

    platform::qt::QtPasswordPrompt prompt{application};
};

}  // namespace

TEST(CapsLock, IsKnownByAKeyThatIsTyped) {
    EXPECT_EQ(capsLockState(key(Qt::Key_A, lock)), true);
    EXPECT_EQ(capsLockState(key(Qt::Key_A, lock | shift)), true);
    EXPECT_EQ(capsLockState(key(Qt::Key_A, shift)), false);
}

TEST(CapsLock, IsUnknownByAKeyThatNoKeyboardMade) { EXPECT_EQ(capsLockState(key(Qt::Key_A, lock, 0)), std::nullopt); }

TEST(CapsLock, IsUnknownByItsOwnKeyWhichComesBeforeTheChange) {
    EXPECT_EQ(capsLockState(key(Qt::Key_CapsLock, lock)), std::nullopt);
}

TEST_F(CapsLockOnThePasswordSheet, IsNotWarnedOfWhileNothingIsKnown) { EXPECT_FALSE(warns()); }

TEST_F(CapsLockOnThePasswordSheet, IsWarnedOfWhileItIsOn) {
    type(lock);
    EXPECT_TRUE(warns());
    type(0);
    EXPECT_FALSE(warns());
}

TEST_F(CapsLockOnThePasswordSheet, IsWarnedOfOnlyWhileTheFieldHasTheFocus) {
    type(lock);
    find("cancel").setFocus();
    EXPECT_FALSE(warns());
}
