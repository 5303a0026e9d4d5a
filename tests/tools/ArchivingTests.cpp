// Storing trees, read back by our own reader.
#include <sys/socket.h>
#include <sys/un.h>

#include "platform/linux/tools/archive/ToolFailure.h"
#include "platform/linux/tools/archive/TreeArchiver.h"
#include "platform/linux/tools/archive/TreeExtractor.h"
#include "platform/linux/tools/archive/ZipDirectory.h"
#include "platform/posix/Descriptor.h"
#include "tests/fakes/ScopedEnvironment.h"
#include "tests/tools/ToolsFixture.h"

using platform::linux_host::archiveTree;
using platform::linux_host::extractArchive;
using platform::linux_host::KeepParent;
using platform::linux_host::ToolFailure;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

class Archiving : public ToolsFixture {
protected:
    void archive(const std::string& source, KeepParent keepParent = KeepParent::no, const std::string& name = "a.zip") {
        archiveTree(source.starts_with('/') ? source : place / source, place / name, keepParent,
                    [this](const std::string& line) { told.push_back(line); });
    }
    void archiveAndExtract(const std::string& source, KeepParent keepParent = KeepParent::no) {
        archive(source, keepParent);
        extractArchive(place / "a.zip", place / "out");
    }
    std::vector<std::string> namesInArchive() {
        const platform::posix::Descriptor file(::open((place / "a.zip").c_str(), O_RDONLY | O_CLOEXEC));
        std::vector<std::string> names;
        for (const auto& entry : platform::linux_host::readZipDirectory(file.get())) {
            names.push_back(entry.name);
        }
        return names;
    }

    std::vector<std::string> told;
};

TEST_F(Archiving, StoresTheContentsOfAFolder) {
    write("f/b/c");
    write("f/a");
    archive("f");
    EXPECT_THAT(namesInArchive(), ElementsAre("a", "b/", "b/c"));
}

TEST_F(Archiving, HasTheSameBytesInEveryTimeZoneWithUniversalTimes) {
    write("f/a");
    const auto bytesIn = [&](const char* zone) {
        const fakes::ScopedEnvironment there("TZ", zone);
        ::tzset();
        archiveTree(place / "f", place / "a.zip", KeepParent::no, {}, platform::linux_host::ClockTimes::universal);
        return read("a.zip");
    };
    const std::string bytes = bytesIn("UTC");
    EXPECT_EQ(bytesIn("Asia/Tokyo"), bytes);
    ::tzset();
}

TEST_F(Archiving, StoresTheFolderItselfWithItsParentKept) {
    write("f/a");
    archive("f/", KeepParent::yes);
    EXPECT_THAT(namesInArchive(), ElementsAre("f/", "f/a"));
}

TEST_F(Archiving, FindsTheNameOfAFolderWhosePathEndsInDots) {
    write("f/sub/a");
    archive("f/sub/..", KeepParent::yes);
    EXPECT_THAT(namesInArchive(), ElementsAre("f/", "f/sub/", "f/sub/a"));
}

TEST_F(Archiving, StoresASingleFileUnderItsName) {
    write("f/a", "text");
    archive("f/a");
    EXPECT_THAT(namesInArchive(), ElementsAre("a"));
    archive("f/a", KeepParent::yes);
    EXPECT_THAT(namesInArchive(), ElementsAre("a"));
}

TEST_F(Archiving, MakesAnArchiveOfAnEmptyFolder) {
    makeFolder("f");
    archiveAndExtract("f");
    EXPECT_THAT(tree("out"), IsEmpty());
}

TEST_F(Archiving, FollowsASourceThatIsALink) {
    write("f/a");
    std::filesystem::create_symlink("f", place / "l");
    archive("l", KeepParent::yes);
    EXPECT_THAT(namesInArchive(), ElementsAre("l/", "l/a"));
}

TEST_F(Archiving, BringsBackContentsPermissionsDatesAndLinks) {
    std::string mixed(9'000'000, '\0');
    for (std::size_t i = 0; i < mixed.size(); i += 7) {
        mixed[i] = static_cast<char>(i * i >> 3U);
    }
    write("f/large", mixed);
    write("f/small", "text");
    write("f/empty", "");
    write("f/closed/file");
    makeFolder("f/empty folder");
    std::filesystem::create_symlink("/nowhere", place / "f/dangling");
    std::filesystem::create_symlink("..", place / "f/closed/loop");
    ::chmod((place / "f/small").c_str(), 0604);
    ::chmod((place / "f/closed").c_str(), 0511);
    setTime("f/small", 1'234'567'890);
    setTime("f/dangling", 1'000'000);
    setTime("f/closed", -5);
    archiveAndExtract("f");
    EXPECT_EQ(tree("out"), tree("f"));
    EXPECT_EQ(read("out/large"), mixed);
    EXPECT_EQ(read("out/small"), "text");
    EXPECT_EQ(modeOf("out/small"), 0604U);
    EXPECT_EQ(modeOf("out/closed"), 0511U);
    EXPECT_EQ(look("out/small").st_mtime, 1'234'567'890);
    EXPECT_EQ(look("out/dangling").st_mtime, 1'000'000);
    EXPECT_EQ(look("out/closed").st_mtime, -5);
    EXPECT_EQ(targetOf("out/dangling"), "/nowhere");
    EXPECT_EQ(targetOf("out/closed/loop"), "..");
    ::chmod((place / "f/closed").c_str(), 0700);
    ::chmod((place / "out/closed").c_str(), 0700);
}

TEST_F(Archiving, BringsBackNamesAsTheBytesTheyWere) {
    for (const char* name : {"\xC3\xA9", "e\xCC\x81", "\xE9", "a\nb", "back\\slash", " ", "..."}) {
        write("f/" + std::string(name), name);
    }
    archiveAndExtract("f");
    EXPECT_EQ(tree("out"), tree("f"));
    EXPECT_EQ(read("out/\xE9"), "\xE9");
}

TEST_F(Archiving, BringsBackDatesThatTheFormatHasNoPlaceForAsNearAsItCan) {
    write("f/far");
    setTime("f/far", 4'000'000'000);
    write("f/farther");
    setTime("f/farther", 9'000'000'000);
    archiveAndExtract("f");
    EXPECT_EQ(look("out/far").st_mtime, 4'000'000'000);
    EXPECT_LT(look("out/farther").st_mtime, 400'000'000);  // 1980
}

TEST_F(Archiving, PacksWhatCanBePackedAndKeepsTheRestAsItIs) {
    write("f/text", std::string(100'000, 'x'));
    std::string noise(100'000, '\0');
    std::ifstream("/dev/urandom", std::ios::binary).read(noise.data(), static_cast<std::streamsize>(noise.size()));
    write("f/noise", noise);
    archiveAndExtract("f");
    EXPECT_LT(look("a.zip").st_size, 101'000);
    EXPECT_GT(look("a.zip").st_size, 100'000);
    EXPECT_EQ(read("out/noise"), noise);
}

TEST_F(Archiving, IsNeverTakenForABombByItsOwnReader) {
    makeFolder("f");
    write("f/zeros", std::string(64U << 20U, '\0'));
    archive("f");
    extractArchive(place / "a.zip", place / "out", {.unsuspectedBytes = 1});
    EXPECT_EQ(look("out/zeros").st_size, 64 << 20);
}

TEST_F(Archiving, LeavesTheArchiveItselfOut) {
    write("f/b");
    archive("f", KeepParent::no, "f/a.zip");
    extractArchive(place / "f/a.zip", place / "out");
    EXPECT_THAT(tree("out"), ElementsAre("b"));
}

TEST_F(Archiving, LeavesOutTheArchiveThatItReplacesAndNoOtherOfThatName) {
    write("f/a.zip", "the last one");
    write("f/g/a.zip", "another");
    archive("f", KeepParent::no, "f/../f/a.zip");
    extractArchive(place / "f/a.zip", place / "out");
    EXPECT_THAT(tree("out"), ElementsAre("g", "g/a.zip"));
}

TEST_F(Archiving, RefusesToReplaceItsSource) {
    write("a.zip", "precious");
    EXPECT_THROW(archive("a.zip"), ToolFailure);
    EXPECT_EQ(read("a.zip"), "precious");
    EXPECT_THAT(tree(), ElementsAre("a.zip"));
}

TEST_F(Archiving, LeavesOutPipesAndSocketsAndSaysSo) {
    write("f/a");
    ASSERT_EQ(::mkfifo((place / "f/pipe").c_str(), 0600), 0);
    const platform::posix::Descriptor end(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (place / "f/socket").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(end.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);  // NOLINT: the call's way
    archive("f");
    EXPECT_THAT(namesInArchive(), ElementsAre("a"));
    EXPECT_THAT(told, ElementsAre(HasSubstr("“pipe”"), HasSubstr("“socket”")));
}

TEST_F(Archiving, RefusesAPipeAsSource) {
    ASSERT_EQ(::mkfifo((place / "pipe").c_str(), 0600), 0);
    EXPECT_THROW(archive("pipe"), ToolFailure);
    EXPECT_THAT(tree(), ElementsAre("pipe"));
}

TEST_F(Archiving, ReplacesAnArchiveThatIsThere) {
    write("f/a");
    write("a.zip", "old");
    archive("f");
    EXPECT_THAT(namesInArchive(), ElementsAre("a"));
}

TEST_F(Archiving, LeavesWhatIsThereWhenItFails) {
    write("a.zip", "old");
    EXPECT_THROW(archive("missing"), ToolFailure);
    EXPECT_EQ(read("a.zip"), "old");
    EXPECT_THAT(tree(), ElementsAre("a.zip"));
}

TEST_F(Archiving, RefusesAFolderAsArchive) {
    write("f/a");
    makeFolder("a.zip");
    EXPECT_THROW(archive("f"), ToolFailure);
    EXPECT_THAT(tree(), ElementsAre("a.zip", "f", "f/a"));
}

TEST_F(Archiving, RefusesAPlaceThatIsNotThere) {
    write("f/a");
    EXPECT_THROW(archive("f", KeepParent::no, "no/such/a.zip"), ToolFailure);
}

TEST_F(Archiving, LeavesNothingWhenAFileCannotBeRead) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser can read every file";
    }
    write("f/a");
    write("f/secret");
    ::chmod((place / "f/secret").c_str(), 0);
    EXPECT_THROW(archive("f"), ToolFailure);
    EXPECT_FALSE(stands("a.zip"));
}

TEST_F(Archiving, StoresMoreEntriesThanTheNarrowFormCounts) {
    makeFolder("f");
    for (int i = 0; i < 66'000; ++i) {
        ASSERT_EQ(::symlink("x", (place / ("f/" + std::to_string(i))).c_str()), 0);
    }
    archiveAndExtract("f");
    EXPECT_EQ(tree("out").size(), 66'000U);
}

TEST_F(Archiving, StoresATreeOfManyLevels) {
    std::string path = place / "f";
    for (int i = 0; i < 300; ++i) {
        ::mkdir(path.c_str(), 0755);
        path += "/d";
    }
    archiveAndExtract("f");
    EXPECT_EQ(tree("out").size(), 299U);
}

TEST_F(Archiving, BringsBackAFileBeyondFourGibibytes) {
    write("f/small");
    write("f/z");
    constexpr off_t size = (off_t{4} << 30U) + 3;
    ASSERT_EQ(::truncate(write("f/huge", "head").c_str(), size), 0);
    archiveAndExtract("f");
    EXPECT_EQ(look("out/huge").st_size, size);
    std::string head(4, '\0');
    std::ifstream(place / "out/huge", std::ios::binary).read(head.data(), 4);
    EXPECT_EQ(head, "head");
    EXPECT_EQ(read("out/z"), "contents");
}

}  // namespace
