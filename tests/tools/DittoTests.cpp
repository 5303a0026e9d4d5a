// The program, beside other archivers and in bad conditions.
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <chrono>
#include <thread>

#include "tests/tools/ToolsFixture.h"
#include "tests/tools/ZipMaker.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

constexpr int noMount = 77;

class Ditto : public ToolsFixture {
protected:
    void makeTree() {
        write("f/text", std::string(300'000, 'x'));
        write("f/sub/\xC3\xA9");
        makeFolder("f/empty");
        std::filesystem::create_symlink("text", place / "f/link");
        ::chmod((place / "f/text").c_str(), 0640);
        setTime("f/text", 1'234'567'890);
    }
    void expectTree(const std::string& folder) const {
        EXPECT_EQ(tree(folder), tree("f"));
        EXPECT_EQ(read(folder + "/text"), read("f/text"));
        EXPECT_EQ(targetOf(folder + "/link"), "text");
        EXPECT_EQ(modeOf(folder + "/text"), 0640U);
        EXPECT_EQ(look(folder + "/text").st_mtime, 1'234'567'890);
    }
    // A folder of noise, large enough to take a while.
    void makeLargeTree() {
        std::string noise(1U << 20U, '\0');
        std::ifstream("/dev/urandom", std::ios::binary).read(noise.data(), static_cast<std::streamsize>(noise.size()));
        for (int i = 0; i < 100; ++i) {
            write("f/" + std::to_string(i), noise);
        }
    }
    // Waits until a hidden item stands in the folder; false when the program has ended before.
    bool waitForHiddenItem(pid_t child) const {
        for (;;) {
            for (const auto& entry : std::filesystem::directory_iterator(place.path())) {
                if (entry.path().filename().string().starts_with(".wickfield-")) {
                    return true;
                }
            }
            siginfo_t info{};
            if (::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
                info.si_pid != 0) {
                return false;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    void expectNoneHidden() const {
        for (const auto& entry : std::filesystem::directory_iterator(place.path())) {
            EXPECT_FALSE(entry.path().filename().string().starts_with(".wickfield-")) << entry.path();
        }
    }
    static void allowNoFileAbove(rlim_t bytes) {
        const rlimit limit{bytes, bytes};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        ::signal(SIGXFSZ, SIG_IGN);
    }
};

TEST_F(Ditto, PacksAndUnpacks) {
    makeTree();
    EXPECT_EQ(tool("ditto", {"-ck", place / "f", place / "a.zip"}).status, 0);
    const auto unpacked = tool("ditto", {"-xk", place / "a.zip", place / "out"});
    EXPECT_EQ(unpacked.status, 0);
    EXPECT_EQ(unpacked.output + unpacked.errors, "");
    expectTree("out");
}

TEST_F(Ditto, KeepsTheParent) {
    makeTree();
    EXPECT_EQ(tool("ditto", {"-ck", "--keepParent", "f", "a.zip"}).status, 0);
    EXPECT_EQ(tool("ditto", {"-xk", "a.zip", "out"}).status, 0);
    expectTree("out/f");
}

TEST_F(Ditto, KnowsNoOtherCommandLines) {
    const std::vector<std::vector<std::string>> wrong{{},
                                                      {"-ck"},
                                                      {"-ck", "f"},
                                                      {"-ck", "f", "a", "b"},
                                                      {"-x", "a", "b"},
                                                      {"-xk", "a"},
                                                      {"-xk", "a", "b", "c"},
                                                      {"f", "g"},
                                                      {"--help"}};
    for (const auto& arguments : wrong) {
        const auto outcome = tool("ditto", arguments);
        EXPECT_EQ(outcome.status, 64);
        EXPECT_THAT(outcome.errors, HasSubstr("usage: ditto"));
    }
}

TEST_F(Ditto, SaysWhatIsWrongWithAnArchive) {
    write("a.zip", "no archive");
    const auto outcome = tool("ditto", {"-xk", "a.zip", "out"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "ditto: “a.zip”: not a ZIP archive, or cut short\n");
    EXPECT_FALSE(stands("out"));
}

// Other archivers.

TEST_F(Ditto, ShowsNamesFromAnArchiveWithoutObeyingThem) {
    write("a.zip", ZipMaker().file("../\x1b]0;owned\x07").bytes());
    const auto outcome = tool("ditto", {"-xk", "a.zip", "out"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("“../\\x1b]0;owned\\x07”"));
}

TEST_F(Ditto, WritesWhatUnzipReads) {
    if (!hasProgram("unzip")) {
        GTEST_SKIP() << "there is no unzip";
    }
    makeTree();
    ASSERT_EQ(tool("ditto", {"-ck", "f", "a.zip"}).status, 0);
    const auto unpacked = run({"unzip", "-q", "a.zip", "-d", "out"}, [] { ::setenv("LC_ALL", "C.UTF-8", 1); });
    EXPECT_EQ(unpacked.status, 0) << unpacked.output << unpacked.errors;
    expectTree("out");
}

TEST_F(Ditto, ReadsWhatZipWrites) {
    if (!hasProgram("zip")) {
        GTEST_SKIP() << "there is no zip";
    }
    makeTree();
    ASSERT_EQ(run({"sh", "-c", "cd f && LC_ALL=C.UTF-8 zip -q -r -y ../a.zip ."}).status, 0);
    EXPECT_EQ(tool("ditto", {"-xk", "a.zip", "out"}).errors, "");
    expectTree("out");
}

// Such an archive tells sizes and checksums behind the data.
TEST_F(Ditto, ReadsWhatZipWritesToAPipe) {
    if (!hasProgram("zip")) {
        GTEST_SKIP() << "there is no zip";
    }
    const std::string text(300'000, 'x');
    write("f/text", text);
    ASSERT_EQ(run({"sh", "-c", "cd f && zip -q -r - . | cat > ../a.zip"}).status, 0);
    EXPECT_EQ(tool("ditto", {"-xk", "a.zip", "out"}).errors, "");
    EXPECT_EQ(read("out/text"), text);
}

TEST_F(Ditto, WritesWhatPythonReads) {
    if (!hasProgram("python3")) {
        GTEST_SKIP() << "there is no Python";
    }
    makeTree();
    ASSERT_EQ(tool("ditto", {"-ck", "f", "a.zip"}).status, 0);
    const auto listed = run({"python3", "-c",
                             "import zipfile\n"
                             "zip = zipfile.ZipFile('a.zip')\n"
                             "print(zip.testzip(), len(zip.read('text')), 'sub/\\u00e9' in zip.namelist())"});
    EXPECT_EQ(listed.output, "None 300000 True\n") << listed.errors;
}

TEST_F(Ditto, ReadsWhatPythonWrites) {
    if (!hasProgram("python3")) {
        GTEST_SKIP() << "there is no Python";
    }
    const auto made = run({"python3", "-c",
                           "import zipfile\n"
                           "with zipfile.ZipFile('a.zip', 'w', zipfile.ZIP_DEFLATED) as zip:\n"
                           "    with zip.open('wide', 'w', force_zip64=True) as entry:\n"
                           "        entry.write(b'x' * 1000)\n"
                           "    zip.writestr('sub/\\u00e9', 'text')\n"
                           "    zip.comment = b'a comment'\n"});
    ASSERT_EQ(made.status, 0) << made.errors;
    EXPECT_EQ(tool("ditto", {"-xk", "a.zip", "out"}).errors, "");
    EXPECT_EQ(read("out/wide"), std::string(1000, 'x'));
    EXPECT_EQ(read("out/sub/\xC3\xA9"), "text");
}

TEST_F(Ditto, ReadsAndWritesAsBsdtarDoes) {
    if (!hasProgram("bsdtar")) {
        GTEST_SKIP() << "there is no bsdtar";
    }
    makeTree();
    ASSERT_EQ(run({"sh", "-c", "LC_ALL=C.UTF-8 bsdtar --format zip -C f -cf a.zip ."}).status, 0);
    EXPECT_EQ(tool("ditto", {"-xk", "a.zip", "out"}).errors, "");
    expectTree("out");
    ASSERT_EQ(tool("ditto", {"-ck", "f", "b.zip"}).status, 0);
    ASSERT_EQ(run({"sh", "-c", "mkdir back && LC_ALL=C.UTF-8 bsdtar -xpf b.zip -C back"}).status, 0);
    expectTree("back");
}

// Bad conditions.

TEST_F(Ditto, LeavesNoHalfOfAnArchiveWhereThereIsNoRoom) {
    makeLargeTree();
    const auto outcome = tool("ditto", {"-ck", "f", "a.zip"}, [] { allowNoFileAbove(std::uint64_t{10} << 20U); });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("File too large"));
    EXPECT_FALSE(stands("a.zip"));
    expectNoneHidden();
}

TEST_F(Ditto, LeavesNoHalfOfATreeWhereThereIsNoRoom) {
    write("a.zip", ZipMaker().file("small").file("large", std::string(2U << 20U, 'x')).bytes());
    const auto outcome = tool("ditto", {"-xk", "a.zip", "out"}, [] { allowNoFileAbove(std::uint64_t{1} << 20U); });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("“large”: cannot write: File too large"));
    EXPECT_FALSE(stands("out"));
    expectNoneHidden();
}

TEST_F(Ditto, LeavesNothingOnAFullDisk) {
    write("a.zip", ZipMaker().file("small").file("large", std::string(2U << 20U, 'x')).bytes());
    std::string noise(2U << 20U, '\0');
    std::ifstream("/dev/urandom", std::ios::binary).read(noise.data(), static_cast<std::streamsize>(noise.size()));
    write("f/noise", noise);
    makeFolder("disk");
    const std::string disk = place / "disk";
    const auto onSmallDisk = [&](const std::string& commands) {
        return run({"sh", "-c", commands + "; ls -A disk"}, [&] {
            const bool mounted = ::unshare(CLONE_NEWNS) == 0 &&
                                 ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                                 ::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=1m") == 0;
            if (!mounted) {
                ::_exit(noMount);
            }
        });
    };
    const auto packed = onSmallDisk(toolPath("ditto") + " -ck f disk/b.zip");
    if (packed.status == noMount) {
        GTEST_SKIP() << "this user or machine may not mount";
    }
    EXPECT_THAT(packed.errors, HasSubstr("No space left on device"));
    EXPECT_EQ(packed.output, "");
    const auto unpacked = onSmallDisk(toolPath("ditto") + " -xk a.zip disk/out");
    EXPECT_THAT(unpacked.errors, HasSubstr("No space left on device"));
    EXPECT_EQ(unpacked.output, "");
}

TEST_F(Ditto, CleansUpWhenItIsInterruptedWhilePacking) {
    makeLargeTree();
    const pid_t child = start({toolPath("ditto"), "-ck", "f", "a.zip"});
    ASSERT_TRUE(waitForHiddenItem(child));
    ::kill(child, SIGTERM);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
    EXPECT_FALSE(stands("a.zip"));
    expectNoneHidden();
}

TEST_F(Ditto, CleansUpWhenItIsInterruptedWhileUnpacking) {
    makeLargeTree();
    ASSERT_EQ(tool("ditto", {"-ck", "f", "a.zip"}).status, 0);
    const pid_t child = start({toolPath("ditto"), "-xk", "a.zip", "out"});
    ASSERT_TRUE(waitForHiddenItem(child));
    ::kill(child, SIGINT);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT);
    EXPECT_FALSE(stands("out"));
    expectNoneHidden();
}

TEST_F(Ditto, LeavesNothingUnderTheFinalNameWhenItIsKilled) {
    makeLargeTree();
    const pid_t child = start({toolPath("ditto"), "-ck", "f", "a.zip"});
    ASSERT_TRUE(waitForHiddenItem(child));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_FALSE(stands("a.zip"));
}

TEST_F(Ditto, ComesToAnEndWhileAFileGrows) {
    write("f/log", "start");
    const pid_t writer = start({"sh", "-c", "while :; do echo more >> f/log; done"});
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(tool("ditto", {"-ck", "f", "a.zip"}).status, 0);
        EXPECT_EQ(run({"rm", "-rf", "out"}).status, 0);
        EXPECT_EQ(tool("ditto", {"-xk", "a.zip", "out"}).errors, "");
    }
    ::kill(writer, SIGKILL);
    ::waitpid(writer, nullptr, 0);
}

}  // namespace
