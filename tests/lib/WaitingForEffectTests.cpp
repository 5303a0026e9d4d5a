#include <chrono>

#include "tests/lib/FilesFixture.h"

using std::chrono::seconds;

namespace {

using Clock = std::chrono::steady_clock;

// Administrators' tools are started and not waited for, so their effect comes later.
class WaitingForAnEffect : public FilesFixture {
protected:
    // From now on the host is of no help and what is done with rights takes effect when the test says so.
    void onlyAdministratorsMayChangeAnything() {
        files.fails = [](const Call& call) -> std::optional<int> {
            switch (call.operation) {
                case Operation::removeItem:
                case Operation::createDirectory:
                case Operation::copyItem:
                case Operation::moveItem:
                    return EACCES;
                default:
                    return {};
            }
        };
        workspace.recycleFailure = platform::Error{EACCES, "refused"};
    }

    template <typename Work>
    static auto offTheMainThread(Work work) {
        bool result = false;
        std::thread([&] { result = work(); }).join();
        return result;
    }

    template <typename Work>
    static Clock::duration timeOf(Work work) {
        const auto start = Clock::now();
        work();
        return Clock::now() - start;
    }
};

TEST_F(WaitingForAnEffect, ReturnsAtOnceWhenItIsThere) {
    const auto a = add("a");
    const auto b = add("b");
    EXPECT_TRUE(KZFileManager::createDirectory(disk / "folder", seconds{10}));
    EXPECT_TRUE(KZFileManager::copyFile(a, disk / "copy", seconds{10}));
    EXPECT_TRUE(KZFileManager::moveFile(a, disk / "moved", seconds{10}));
    EXPECT_TRUE(KZFileManager::trashFile(b, seconds{10}));
    EXPECT_TRUE(KZFileManager::removeFile(disk / "copy", seconds{10}));
    EXPECT_TRUE(KZFileManager::trashFile(disk / "gone", seconds{10}));
    EXPECT_TRUE(KZFileManager::removeFile(disk / "gone", seconds{10}));
    EXPECT_EQ(mainThread.slices, 0);
}

TEST_F(WaitingForAnEffect, ReturnsAtOnceWhenTheOperationFailed) {
    onlyAdministratorsMayChangeAnything();
    authorization.rightsStatus = -60006;
    const auto file = add("file");
    EXPECT_FALSE(KZFileManager::createDirectory(disk / "folder", seconds{10}));
    EXPECT_FALSE(KZFileManager::copyFile(file, disk / "copy", seconds{10}));
    EXPECT_FALSE(KZFileManager::moveFile(file, disk / "moved", seconds{10}));
    EXPECT_FALSE(KZFileManager::trashFile(file, seconds{10}));
    EXPECT_FALSE(KZFileManager::removeFile(file, seconds{10}));
    EXPECT_EQ(mainThread.slices, 0);
}

TEST_F(WaitingForAnEffect, RunsTheEventLoopOnTheMainThreadUntilItComes) {
    onlyAdministratorsMayChangeAnything();
    authorization.runsTool = [&](const auto&) {
        mainThread.perform([] {});
        mainThread.perform([this] { std::filesystem::create_directory(disk / "folder"); });
        mainThread.perform([] { FAIL() << "an event after the effect was served"; });
    };
    EXPECT_TRUE(KZFileManager::createDirectory(disk / "folder", seconds{10}));
    EXPECT_EQ(mainThread.slices, 2);
    EXPECT_EQ(mainThread.longestSlice, std::chrono::milliseconds{10});
}

TEST_F(WaitingForAnEffect, TakesTheLongestTimeThereIsForLongAndTheShortestForNone) {
    onlyAdministratorsMayChangeAnything();
    authorization.runsTool = [&](const auto&) {
        mainThread.perform([this] { std::filesystem::create_directory(disk / "folder"); });
    };
    EXPECT_TRUE(KZFileManager::createDirectory(disk / "folder", seconds::max()));
    authorization.runsTool = {};
    EXPECT_FALSE(KZFileManager::createDirectory(disk / "other", seconds::min()));
    EXPECT_EQ(mainThread.slices, 1);
}

TEST_F(WaitingForAnEffect, SleepsBetweenLooksOnOtherThreads) {
    onlyAdministratorsMayChangeAnything();
    const auto file = add("file");
    std::thread later;
    authorization.runsTool = [&](const auto&) {
        later = std::thread([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds{50});
            std::filesystem::remove(file);
        });
    };
    bool gone = false;
    const auto time =
        timeOf([&] { gone = offTheMainThread([&] { return KZFileManager::removeFile(file, seconds{10}); }); });
    later.join();
    EXPECT_TRUE(gone);
    EXPECT_GE(time, std::chrono::milliseconds{300});
    EXPECT_LT(time, std::chrono::milliseconds{8000});
    EXPECT_EQ(mainThread.slices, 0);
}

TEST_F(WaitingForAnEffect, GivesUpWhenTheTimeIsUp) {
    onlyAdministratorsMayChangeAnything();
    const auto file = add("file");
    bool done = true;
    const auto time = timeOf([&] { done = KZFileManager::trashFile(file, seconds{1}); });
    EXPECT_FALSE(done);
    EXPECT_GE(time, seconds{1});
    EXPECT_LT(time, seconds{3});
    EXPECT_GT(mainThread.slices, 10);
}

// Each of the five with its administrator's tool, whose effect the test makes come or not.
struct Waiting {
    const char* name;
    std::function<bool(const std::string& file, const std::string& place)> call;
    std::function<void(const std::string& file, const std::string& place)> effect;
};

class WaitingForTheEffectOf : public WaitingForAnEffect, public testing::WithParamInterface<Waiting> {
protected:
    void SetUp() override { onlyAdministratorsMayChangeAnything(); }

    const std::string file = add("file");
    const std::string place = disk / "place";
};

TEST_P(WaitingForTheEffectOf, AToolThatTakesItsTimeIsDone) {
    std::thread tool;
    authorization.runsTool = [&](const auto&) {
        tool = std::thread([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds{500});
            GetParam().effect(file, place);
        });
    };
    bool done = false;
    const auto time = timeOf([&] { done = GetParam().call(file, place); });
    tool.join();
    EXPECT_TRUE(done);
    EXPECT_GE(time, std::chrono::milliseconds{450});
    EXPECT_LT(time, std::chrono::milliseconds{1900});
}

TEST_P(WaitingForTheEffectOf, AToolThatDoesNothingIsGivenUp) {
    bool done = true;
    const auto time = timeOf([&] { done = GetParam().call(file, place); });
    EXPECT_FALSE(done);
    EXPECT_EQ(authorization.executions.size(), 1U);
    EXPECT_GE(time, seconds{2});
    EXPECT_LT(time, seconds{6});
}

const auto fileGoes = [](const std::string& file, const std::string&) { std::filesystem::remove(file); };
const auto placeComes = [](const std::string&, const std::string& place) { std::filesystem::create_directory(place); };

INSTANTIATE_TEST_SUITE_P(
    Each, WaitingForTheEffectOf,
    testing::Values(
        Waiting{"Trashing", [](auto& file, auto&) { return KZFileManager::trashFile(file, seconds{2}); }, fileGoes},
        Waiting{"Removing", [](auto& file, auto&) { return KZFileManager::removeFile(file, seconds{2}); }, fileGoes},
        Waiting{"CreatingAFolder", [](auto&, auto& place) { return KZFileManager::createDirectory(place, seconds{2}); },
                placeComes},
        Waiting{"Copying", [](auto& file, auto& place) { return KZFileManager::copyFile(file, place, seconds{2}); },
                placeComes},
        Waiting{"Moving", [](auto& file, auto& place) { return KZFileManager::moveFile(file, place, seconds{2}); },
                fileGoes}),
    [](const auto& one) { return one.param.name; });

TEST_F(WaitingForAnEffect, LooksOnceWithoutAnyTime) {
    onlyAdministratorsMayChangeAnything();
    const auto file = add("file");
    EXPECT_FALSE(KZFileManager::removeFile(file, seconds{0}));
    EXPECT_FALSE(KZFileManager::trashFile(file, seconds{-5}));
    EXPECT_EQ(mainThread.slices, 0);

    authorization.runsTool = [&](const auto&) { std::filesystem::remove(file); };
    EXPECT_TRUE(KZFileManager::removeFile(file, seconds{0}));
}

TEST_F(WaitingForAnEffect, OfACopyLooksAtTheDestination) {
    onlyAdministratorsMayChangeAnything();
    const auto file = add("file");
    EXPECT_FALSE(KZFileManager::copyFile(file, disk / "copy", seconds{0}));
    authorization.runsTool = [&](const auto&) { add("copy"); };
    EXPECT_TRUE(KZFileManager::copyFile(file, disk / "copy", seconds{0}));
}

TEST_F(WaitingForAnEffect, OfAMoveLooksAtTheSource) {
    onlyAdministratorsMayChangeAnything();
    const auto file = add("file");
    authorization.runsTool = [&](const auto&) { add("moved"); };
    EXPECT_FALSE(KZFileManager::moveFile(file, disk / "moved", seconds{0}));
    authorization.runsTool = [&](const auto&) { std::filesystem::remove(file); };
    EXPECT_TRUE(KZFileManager::moveFile(file, disk / "moved", seconds{0}));
}

TEST_F(WaitingForAnEffect, TakesACopyThatIsADanglingLinkForAbsent) {
    const auto link = addLink("link", "nowhere");
    EXPECT_FALSE(KZFileManager::copyFile(link, disk / "copy", seconds{0}));
    EXPECT_TRUE(std::filesystem::is_symlink(disk / "copy"));
}

}  // namespace
