#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>

#include <variant>

#include "platform/linux/services/propertylists/LinuxPropertyLists.h"
#include "tests/tools/ToolsFixture.h"

using platform::PropertyDictionary;
using ::testing::HasSubstr;

namespace {

constexpr int noMount = 77;

class Diskutil : public ToolsFixture {
protected:
    PropertyDictionary info(const std::string& mountPoint) const {
        return dictionaryOf(tool("diskutil", {"info", "-plist", mountPoint}));
    }
    static PropertyDictionary dictionaryOf(const Outcome& outcome) {
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        const auto parsed = platform::linux_host::LinuxPropertyLists().parse(outcome.output);
        const auto* value = std::get_if<platform::PropertyValue>(&parsed);
        const auto* dictionary = value != nullptr ? value->as<PropertyDictionary>() : nullptr;
        EXPECT_NE(dictionary, nullptr) << outcome.output;
        return dictionary != nullptr ? *dictionary : PropertyDictionary();
    }
};

TEST_F(Diskutil, TellsTheSizesOfTheFileSystem) {
    struct statvfs status {};
    ASSERT_EQ(::statvfs("/", &status), 0);
    auto root = info("/");
    const auto total = static_cast<std::int64_t>(status.f_blocks * status.f_frsize);
    EXPECT_EQ(*root.at("TotalSize").as<std::int64_t>(), total);
    EXPECT_EQ(*root.at("MountPoint").as<std::string>(), "/");
    EXPECT_LE(*root.at("FreeSpace").as<std::int64_t>(), total);
    EXPECT_EQ(*root.at("WritableVolume").as<bool>(), (status.f_flag & ST_RDONLY) == 0);
}

TEST_F(Diskutil, TellsOnlyWhatIsKnown) {
    const auto processes = info("/proc");
    EXPECT_EQ(*processes.at("FilesystemType").as<std::string>(), "proc");
    EXPECT_FALSE(processes.contains("DeviceNode"));
    EXPECT_FALSE(processes.contains("VolumeName"));
}

TEST_F(Diskutil, TellsOfTheLastOfSeveralFileSystemsAtOnePlace) {
    const std::string folder = makeFolder("a b\n\xC3\xA9");
    const auto mountTwice = [&] {
        const bool mounted = ::unshare(CLONE_NEWNS) == 0 &&
                             ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                             ::mount("none", folder.c_str(), "tmpfs", 0, nullptr) == 0 &&
                             ::mount("none", folder.c_str(), "ramfs", MS_RDONLY, nullptr) == 0;
        if (!mounted) {
            ::_exit(noMount);
        }
    };
    const auto outcome = tool("diskutil", {"info", "-plist", folder + "/"}, mountTwice);
    if (outcome.status == noMount) {
        GTEST_SKIP() << "this user or machine may not mount";
    }
    const auto last = dictionaryOf(outcome);
    EXPECT_EQ(*last.at("FilesystemType").as<std::string>(), "ramfs");
    EXPECT_EQ(*last.at("MountPoint").as<std::string>(), folder);
    EXPECT_FALSE(*last.at("WritableVolume").as<bool>());
}

TEST_F(Diskutil, FailsWhereNothingIsMounted) {
    makeFolder("folder");
    const auto outcome = tool("diskutil", {"info", "-plist", "folder"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "diskutil: folder: no file system is mounted there\n");
    EXPECT_THAT(tool("diskutil", {"info", "-plist", "missing"}).errors, HasSubstr("No such file"));
}

TEST_F(Diskutil, KnowsNoOtherCommandLines) {
    const std::vector<std::vector<std::string>> wrong{
        {}, {"info"}, {"info", "-plist"}, {"info", "/"}, {"info", "-plist", "/", "/"}, {"list", "-plist", "/"}};
    for (const auto& arguments : wrong) {
        const auto outcome = tool("diskutil", arguments);
        EXPECT_EQ(outcome.status, 64);
        EXPECT_THAT(outcome.errors, HasSubstr("usage: diskutil"));
    }
}

}  // namespace
