#include <gmock/gmock.h>

#include <QAccessible>
#include <QPushButton>
#include <QScrollBar>
#include <QTextBrowser>
#include <thread>

#include "platform/linux/qt/SheetOverlay.h"
#include "tests/qt/WindowFixture.h"

using platform::qt::SheetOverlay;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class TheAgreementSheet : public windowtests::WindowTest {
protected:
    void begin(int paragraphs = 200) {
        auto text = std::make_unique<QTextDocument>();
        text->setPlainText(QString::fromLatin1("A paragraph of the agreement.\n").repeated(paragraphs));
        outlets().eulaText->setDocument(std::make_unique<platform::qt::AgreementDocument>(std::move(text)));
        outlets().eulaText->setStandardTextColor();
        outlets().eulaText->setEditable(false);
        application.beginSheet(*outlets().windowEULA, *outlets().window, [this] { ++ended; });
        QTest::qWait(10);
    }
    SheetOverlay* sheet() { return SheetOverlay::topmost(window); }
    QTextBrowser& text() { return find<QTextBrowser>("eulaText"); }

    int ended = 0;
};

}  // namespace

TEST_F(TheAgreementSheet, BelongsToItsWindowUntilItIsEnded) {
    EXPECT_FALSE(outlets().window->hasAttachedSheet());
    begin();
    EXPECT_TRUE(outlets().window->hasAttachedSheet());
    application.endSheet(*outlets().windowEULA);
    EXPECT_FALSE(outlets().window->hasAttachedSheet());
    EXPECT_EQ(ended, 1);
}

TEST_F(TheAgreementSheet, IsAgreedToByReturn) {
    begin();
    press(Qt::Key_Return);
    EXPECT_THAT(delegate.calls, ElementsAre("agree"));
}

TEST_F(TheAgreementSheet, IsDeclinedByEscape) {
    begin();
    press(Qt::Key_Escape);
    EXPECT_THAT(delegate.calls, ElementsAre("disagree"));
}

TEST_F(TheAgreementSheet, TakesReturnForTheButtonThatHasTheFocus) {
    begin();
    find("btnDisagree").setFocus();
    press(Qt::Key_Return);
    EXPECT_THAT(delegate.calls, ElementsAre("disagree"));
}

TEST_F(TheAgreementSheet, KeepsInstallFromBeingPressed) {
    begin();
    QTest::mouseClick(&find("btnInstall"), Qt::LeftButton);
    press(Qt::Key_I, Qt::AltModifier);
    QAccessible::queryAccessibleInterface(&find("btnInstall"))
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    QTest::qWait(150);
    EXPECT_THAT(delegate.calls, IsEmpty());
}

TEST_F(TheAgreementSheet, CatchesClicksOnTheDimmedWindow) {
    begin();
    const QPoint install = find("btnInstall").mapTo(&window, find("btnInstall").rect().center());
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, install);
    EXPECT_THAT(delegate.calls, IsEmpty());
}

TEST_F(TheAgreementSheet, KeepsTabInside) {
    begin();
    std::set<std::string> visited;
    for (int i = 0; i < 8; ++i) {
        visited.insert(QApplication::focusWidget()->objectName().toStdString());
        press(Qt::Key_Tab);
    }
    EXPECT_THAT(visited, testing::UnorderedElementsAre("eulaText", "btnDisagree", "btnAgree"));
}

TEST_F(TheAgreementSheet, WalksBackwardsInsideToo) {
    begin();
    press(Qt::Key_Tab, Qt::ShiftModifier);
    EXPECT_EQ(QApplication::focusWidget()->objectName().toStdString(), "btnAgree");
}

TEST_F(TheAgreementSheet, ScrollsByTheKeyboard) {
    begin();
    EXPECT_EQ(text().verticalScrollBar()->value(), 0);
    press(Qt::Key_PageDown);
    EXPECT_GT(text().verticalScrollBar()->value(), 0);
}

TEST_F(TheAgreementSheet, CanBeReadAndSelectedButNotChanged) {
    begin();
    const QString before = text().toPlainText();
    press(Qt::Key_X);
    EXPECT_EQ(text().toPlainText(), before);
    EXPECT_TRUE(text().isReadOnly());
    EXPECT_TRUE(text().textInteractionFlags() & Qt::TextSelectableByMouse);
}

TEST_F(TheAgreementSheet, GivesTheFocusBack) {
    find("btnGantry").setFocus();
    begin();
    EXPECT_NE(QApplication::focusWidget(), &find("btnGantry"));
    application.endSheet(*outlets().windowEULA);
    QTest::qWait(10);
    EXPECT_EQ(QApplication::focusWidget(), &find("btnGantry"));
}

TEST_F(TheAgreementSheet, LeavesTheWindowReadyAfterwards) {
    begin();
    application.endSheet(*outlets().windowEULA);
    outlets().windowEULA->orderOut();
    press(Qt::Key_Return);
    EXPECT_THAT(delegate.calls, ElementsAre("install"));
}

TEST_F(TheAgreementSheet, KeepsAButtonDisabledThatWasDisabledMeanwhile) {
    begin();
    outlets().btnInstall->setEnabled(false);
    application.endSheet(*outlets().windowEULA);
    EXPECT_FALSE(find("btnInstall").isEnabled());
    EXPECT_TRUE(find("btnGantry").isEnabled());
}

TEST_F(TheAgreementSheet, EndsOnceHoweverOftenItIsAsked) {
    begin();
    application.endSheet(*outlets().windowEULA);
    application.endSheet(*outlets().windowEULA);
    outlets().windowEULA->orderOut();
    EXPECT_EQ(ended, 1);
}

TEST_F(TheAgreementSheet, MayEndTheApplicationFromItsEnd) {
    begin();
    application.endSheet(*outlets().windowEULA);
    application.beginSheet(*outlets().windowEULA, *outlets().window, [this] { application.terminate(); });
    application.endSheet(*outlets().windowEULA);
    application.terminate();
    QTest::qWait(10);
    EXPECT_EQ(processEnds, 1);
}

TEST_F(TheAgreementSheet, ComesUpAgainWithItsText) {
    begin();
    application.endSheet(*outlets().windowEULA);
    begin();
    EXPECT_TRUE(text().isVisible());
    EXPECT_TRUE(text().toPlainText().startsWith(QString::fromLatin1("A paragraph")));
}

TEST_F(TheAgreementSheet, StaysInsideASmallWindowWithItsButtons) {
    window.resize(400, 240);
    begin();
    EXPECT_TRUE(window.rect().contains(sheet()->sheetGeometry()));
    for (const char* name : {"btnAgree", "btnDisagree"}) {
        auto& button = find(name);
        EXPECT_TRUE(window.rect().contains(QRect(button.mapTo(&window, QPoint(0, 0)), button.size()))) << name;
    }
}

TEST_F(TheAgreementSheet, FollowsTheSizeOfItsWindow) {
    begin();
    window.resize(460, 300);
    QTest::qWait(10);
    EXPECT_EQ(sheet()->size(), window.size());
    EXPECT_TRUE(window.rect().contains(sheet()->sheetGeometry()));
}

TEST_F(TheAgreementSheet, SlidesDownFromTheTop) {
    qunsetenv("WICKFIELD_MOTION");
    begin(3);
    qputenv("WICKFIELD_MOTION", "reduced");
    auto* agree = &find("btnAgree");
    const int early = agree->mapTo(&window, QPoint(0, 0)).y();
    QTest::qWait(400);
    EXPECT_LT(early, agree->mapTo(&window, QPoint(0, 0)).y());
}

TEST_F(TheAgreementSheet, LeavesOtherWindowsAlone) {
    QPushButton other(QString::fromLatin1("Other"));
    int clicks = 0;
    QObject::connect(&other, &QPushButton::clicked, [&] { ++clicks; });
    other.show();
    begin();
    QTest::mouseClick(&other, Qt::LeftButton);
    EXPECT_EQ(clicks, 1);
}

TEST_F(TheAgreementSheet, IsAModalDialogToAssistiveTechnology) {
    begin();
    auto* interface = QAccessible::queryAccessibleInterface(sheet());
    EXPECT_EQ(interface->role(), QAccessible::Dialog);
    EXPECT_TRUE(interface->state().modal);
    EXPECT_EQ(interface->text(QAccessible::Name).toStdString(), "Licence Agreement");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&text())->text(QAccessible::Name).toStdString(),
              "Licence agreement");
}

TEST_F(TheAgreementSheet, ServesTheWorkOfOtherThreads) {
    begin();
    bool served = false;
    std::thread worker([&] { mainThread.performAndWait([&] { served = true; }); });
    QTest::qWait(50);
    worker.join();
    EXPECT_TRUE(served);
}

TEST_F(TheAgreementSheet, OpensAWebAddressOfItsText) {
    begin();
    Q_EMIT text().anchorClicked(QUrl(QString::fromLatin1("https://example.com/a%20b")));
    Q_EMIT text().anchorClicked(QUrl(QString::fromLatin1("file:///etc/passwd")));
    EXPECT_THAT(workspace.opened, ElementsAre("https://example.com/a%20b"));
}
