#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>
#include <QTimer>
#include <csignal>
#include <fstream>
#include <thread>

#include "platform/linux/qt/FirstPaint.h"
#include "platform/linux/qt/SignalWatch.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/qt/WindowFixture.h"

using testing::ElementsAre;

namespace {

using TheApplication = windowtests::WindowTest;

}  // namespace

TEST_F(TheApplication, TellsItsObserversLastRegisteredFirstAndThenEnds) {
    std::vector<int> told;
    application.onWillTerminate([&] { told.push_back(1); });
    application.onWillTerminate([&] { told.push_back(2); });
    application.terminate();
    EXPECT_THAT(told, testing::IsEmpty());
    QTest::qWait(10);
    EXPECT_THAT(told, ElementsAre(2, 1));
    EXPECT_EQ(processEnds, 1);
}

TEST_F(TheApplication, EndsOnceHoweverOftenItIsAsked) {
    int told = 0;
    application.onWillTerminate([&] { ++told; });
    application.terminate();
    application.terminate();
    QTest::qWait(10);
    application.finish();
    EXPECT_EQ(told, 1);
    EXPECT_EQ(processEnds, 1);
}

TEST_F(TheApplication, MayBeAskedToEndByAnotherThread) {
    std::thread([&] {
        application.onWillTerminate([] {});
        application.terminate();
    }).join();
    QTest::qWait(10);
    EXPECT_EQ(processEnds, 1);
}

TEST_F(TheApplication, EndsFromWithinANestedLoop) {
    QTimer::singleShot(10, [&] { application.terminate(); });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (processEnds == 0 && std::chrono::steady_clock::now() < deadline) {
        mainThread.runNextEvent(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(processEnds, 1);
}

TEST_F(TheApplication, IsToldWhenItsWindowIsClosedEvenUnderASheet) {
    int closed = 0;
    window.onClosed([&] { ++closed; });
    auto alert = alerts.make({});
    alert->begin(outlets().window, {});
    window.close();
    EXPECT_EQ(closed, 1);
}

TEST_F(TheApplication, IsToldOfASignal) {
    int asked = 0;
    {
        const platform::qt::SignalWatch watch([&] { ++asked; });
        ::raise(SIGTERM);
        ::raise(SIGHUP);
        EXPECT_EQ(asked, 0);  // never from within the handler
        EXPECT_TRUE(QTest::qWaitFor([&] { return asked > 0; }));
    }
    struct sigaction after = {};
    ::sigaction(SIGTERM, nullptr, &after);
    EXPECT_EQ(after.sa_handler, SIG_DFL);
}

TEST_F(TheApplication, LeavesASignalIgnoredThatWasIgnored) {
    ::signal(SIGHUP, SIG_IGN);
    {
        const platform::qt::SignalWatch watch([] {});
        struct sigaction present = {};
        ::sigaction(SIGHUP, nullptr, &present);
        EXPECT_EQ(present.sa_handler, SIG_IGN);
    }
    ::signal(SIGHUP, SIG_DFL);
}

TEST_F(TheApplication, EndsAtOnceOnTheSecondSignal) {
    const platform::qt::SignalWatch watch([] {});
    ::raise(SIGTERM);
    struct sigaction present = {};
    ::sigaction(SIGTERM, nullptr, &present);
    EXPECT_EQ(present.sa_handler, SIG_DFL);
}

TEST_F(TheApplication, LaunchesOnceAfterTheWindowHasBeenPainted) {
    QWidget fresh;
    int launched = 0;
    platform::qt::afterFirstPaint(fresh, [&] { ++launched; });
    EXPECT_EQ(launched, 0);
    fresh.show();
    EXPECT_TRUE(QTest::qWaitFor([&] { return launched == 1; }));
    QTest::qWait(700);
    EXPECT_EQ(launched, 1);
}

TEST_F(TheApplication, LoadsAnImageByItsContentsWhateverItsName) {
    const fakes::TemporaryFolder folder;
    QImage(4, 3, QImage::Format_RGB32).save(QString::fromStdString(folder / "image.dat"), "PNG");
    const auto image = application.loadImage(folder / "image.dat");
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(dynamic_cast<platform::qt::QtImage&>(*image).image.size(), QSize(4, 3));
}

TEST_F(TheApplication, HasNoImageForWhatIsNone) {
    const fakes::TemporaryFolder folder;
    std::ofstream(folder / "text.png") << "not an image";
    std::ofstream(folder / "empty.png") << "";
    ASSERT_EQ(::mkfifo((folder / "pipe.png").c_str(), 0600), 0);
    for (const char* name : {"text.png", "empty.png", "pipe.png", "missing.png", "."}) {
        EXPECT_EQ(application.loadImage(folder / name), nullptr) << name;
    }
}

TEST_F(TheApplication, HasNoImageForATruncatedHeader) {
    const fakes::TemporaryFolder folder;
    std::ofstream(folder / "cut.png") << "\x89PNG\r\n\x1a\n";
    EXPECT_EQ(application.loadImage(folder / "cut.png"), nullptr);
}

TEST_F(TheApplication, KeepsALargeImageWithinBounds) {
    const fakes::TemporaryFolder folder;
    QImage large(6000, 3000, QImage::Format_Mono);
    large.fill(1);
    large.save(QString::fromStdString(folder / "large.png"), "PNG");
    const auto image = application.loadImage(folder / "large.png");
    ASSERT_NE(image, nullptr);
    const QSize size = dynamic_cast<platform::qt::QtImage&>(*image).image.size();
    EXPECT_EQ(size, QSize(2560, 1280));
}

TEST_F(TheApplication, LoadsADocument) {
    const fakes::TemporaryFolder folder;
    std::ofstream(folder / "License.txt") << "Agreement";
    EXPECT_NE(application.loadDocument(folder / "License.txt"), nullptr);
    EXPECT_EQ(application.loadDocument(folder / "missing.txt"), nullptr);
}
