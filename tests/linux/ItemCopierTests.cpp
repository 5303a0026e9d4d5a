#include "platform/linux/services/files/ItemCopier.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <thread>

#include "platform/posix/Descriptor.h"
#include "tests/linux/FilesFixture.h"

namespace {

using platform::linux_host::copyItem;

using Copying = FilesFixture;

std::string accessList(std::initializer_list<std::array<std::uint32_t, 2>> entries) {
    // version 2, then tag, permissions and identifier of each entry, little-endian
    std::string list{2, 0, 0, 0};
    for (const auto& [tagAndRights, identifier] : entries) {
        for (const std::uint32_t word : {tagAndRights, identifier}) {
            for (unsigned shift = 0; shift < 32; shift += 8) {
                list += static_cast<char>((word >> shift) & 0xFFU);
            }
        }
    }
    return list;
}

constexpr std::uint32_t nobodyInParticular = 0xFFFFFFFF;

// rw- for the owner, r-- for user 1234, the group and others
std::string listForUser1234() {
    return accessList({{0x0006'0001, nobodyInParticular},
                       {0x0004'0002, 1234},
                       {0x0004'0004, nobodyInParticular},
                       {0x0004'0010, nobodyInParticular},
                       {0x0004'0020, nobodyInParticular}});
}

TEST_F(Copying, CarriesContentsOfEverySizeAroundTheBuffers) {
    for (const std::size_t size : {0U, 1U, 65'535U, 65'536U, 65'537U, 131'072U, 1'000'003U}) {
        std::string contents(size, '\0');
        std::generate(contents.begin(), contents.end(), [n = 0U]() mutable { return static_cast<char>(n++ * 7U); });
        write("from", contents);
        const std::string to = "to" + std::to_string(size);
        ASSERT_FALSE(copyItem(at("from"), at(to)));
        EXPECT_EQ(read(to), contents) << size;
    }
}

TEST_F(Copying, CarriesTheModeWhateverTheMask) {
    const mode_t mask = ::umask(077);
    for (const mode_t mode : {0400U, 0444U, 0640U, 0755U, 0777U, 01644U}) {
        write("from", "x");
        setMode("from", mode);
        ASSERT_FALSE(copyItem(at("from"), at("to")));
        EXPECT_EQ(status("to").st_mode & 07777U, mode);
        std::filesystem::remove(at("to"));
        std::filesystem::remove(at("from"));
    }
    ::umask(mask);
}

TEST_F(Copying, CarriesTimesToTheNanosecond) {
    write("from", "x");
    const std::array<timespec, 2> times{timespec{1000, 123'456'789}, timespec{2000, 987'654'321}};
    ASSERT_EQ(::utimensat(AT_FDCWD, at("from").c_str(), times.data(), 0), 0);
    ASSERT_FALSE(copyItem(at("from"), at("to")));
    EXPECT_EQ(status("to").st_atim.tv_nsec, 123'456'789);
    EXPECT_EQ(status("to").st_mtim.tv_sec, 2000);
    EXPECT_EQ(status("to").st_mtim.tv_nsec, 987'654'321);
}

TEST_F(Copying, CarriesExtendedAttributesOfFilesAndFolders) {
    makeFolder("from");
    write("from/file", "x");
    if (!setAttribute("from/file", "user.one", "1") || !setAttribute("from/file", "user.empty", "") ||
        !setAttribute("from/file", "user.large", std::string(3000, 'v')) || !setAttribute("from", "user.two", "2")) {
        GTEST_SKIP() << "no extended attributes here";
    }
    ASSERT_FALSE(copyItem(at("from"), at("to")));
    EXPECT_EQ(attribute("to/file", "user.one"), "1");
    EXPECT_EQ(attribute("to/file", "user.empty"), "");
    EXPECT_EQ(attribute("to/file", "user.large"), std::string(3000, 'v'));
    EXPECT_EQ(attribute("to", "user.two"), "2");
}

TEST_F(Copying, CarriesAttributesOfAReadOnlyFile) {
    write("from", "x");
    if (!setAttribute("from", "user.one", "1")) {
        GTEST_SKIP() << "no extended attributes here";
    }
    setMode("from", 0444);
    ASSERT_FALSE(copyItem(at("from"), at("to")));
    EXPECT_EQ(attribute("to", "user.one"), "1");
    EXPECT_EQ(status("to").st_mode & 07777U, 0444U);
}

TEST_F(Copying, CarriesAccessLists) {
    makeFolder("from");
    write("from/file", "x");
    if (!setAttribute("from/file", "system.posix_acl_access", listForUser1234()) ||
        !setAttribute("from", "system.posix_acl_default", listForUser1234())) {
        GTEST_SKIP() << "no access lists here";
    }
    ASSERT_FALSE(copyItem(at("from"), at("to")));
    EXPECT_EQ(attribute("to/file", "system.posix_acl_access"), listForUser1234());
    EXPECT_EQ(attribute("to", "system.posix_acl_default"), listForUser1234());
}

TEST_F(Copying, TakesNoAccessListFromTheFolderThatItGoesInto) {
    makeFolder("tree/sub");
    write("tree/sub/file", "x");
    write("file", "x");
    makeFolder("into");
    if (!setAttribute("into", "system.posix_acl_default", listForUser1234())) {
        GTEST_SKIP() << "no access lists here";
    }
    ASSERT_FALSE(copyItem(at("file"), at("into/file")));
    ASSERT_FALSE(copyItem(at("tree"), at("into/tree")));
    for (const char* name : {"into/file", "into/tree", "into/tree/sub", "into/tree/sub/file"}) {
        EXPECT_EQ(attribute(name, "system.posix_acl_access"), std::nullopt) << name;
        EXPECT_EQ(attribute(name, "system.posix_acl_default"), std::nullopt) << name;
    }
}

TEST_F(Copying, CarriesTheOwnerForTheSuperuser) {
    if (!isSuperuser()) {
        GTEST_SKIP() << "only the superuser may give files away";
    }
    makeFolder("from");
    write("from/file", "x");
    link("from/link", "file");
    for (const char* name : {"from", "from/file", "from/link"}) {
        ASSERT_EQ(::lchown(at(name).c_str(), 1234, 2345), 0);
    }
    setMode("from/file", 06755);
    ASSERT_FALSE(copyItem(at("from"), at("to")));
    for (const char* name : {"to", "to/file", "to/link"}) {
        EXPECT_EQ(status(name).st_uid, 1234U) << name;
        EXPECT_EQ(status(name).st_gid, 2345U) << name;
    }
    EXPECT_EQ(status("to/file").st_mode & 07777U, 06755U);
}

TEST_F(Copying, DropsSetIdBitsWithTheOwnerThatTheyStoodFor) {
    if (isSuperuser()) {
        GTEST_SKIP() << "the superuser keeps the owner";
    }
    const std::string tool = "/usr/bin/passwd";  // set-id and somebody else's on every Linux host
    struct stat source {};
    if (::stat(tool.c_str(), &source) != 0 || (source.st_mode & S_ISUID) == 0 || ::access(tool.c_str(), R_OK) != 0) {
        GTEST_SKIP() << "no readable set-id tool of somebody else";
    }
    ASSERT_FALSE(copyItem(tool, at("to")));
    EXPECT_EQ(status("to").st_mode & 07777U, source.st_mode & 0777U);
}

TEST_F(Copying, KeepsLinksAsLinks) {
    makeFolder("from");
    link("from/dangling", "nowhere");
    link("from/loop", "loop");
    link("from/absolute", "/etc/passwd");
    link("from/long", std::string(3000, 'n'));
    ASSERT_FALSE(copyItem(at("from"), at("to")));
    EXPECT_EQ(std::filesystem::read_symlink(at("to/dangling")), "nowhere");
    EXPECT_EQ(std::filesystem::read_symlink(at("to/loop")), "loop");
    EXPECT_EQ(std::filesystem::read_symlink(at("to/absolute")), "/etc/passwd");
    EXPECT_EQ(m_files.destinationOfSymbolicLink(at("to/long")), std::string(3000, 'n'));
}

TEST_F(Copying, CopiesALinkThatIsNamedItself) {
    makeFolder("folder");
    link("from", "folder");
    const std::array<timespec, 2> times{timespec{1000, 0}, timespec{2000, 5}};
    ASSERT_EQ(::utimensat(AT_FDCWD, at("from").c_str(), times.data(), AT_SYMLINK_NOFOLLOW), 0);
    ASSERT_FALSE(copyItem(at("from"), at("to")));
    EXPECT_EQ(std::filesystem::read_symlink(at("to")), "folder");
    EXPECT_EQ(status("to").st_mtim.tv_nsec, 5);
}

TEST_F(Copying, KeepsHoles) {
    const std::string data(4096, 'd');
    {
        const platform::posix::Descriptor file(::open(at("from").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        ASSERT_EQ(::pwrite(file.get(), data.data(), data.size(), 4L << 20U), 4096);
        ASSERT_EQ(::ftruncate(file.get(), 16L << 20U), 0);
    }
    if (status("from").st_blocks > 1000) {
        GTEST_SKIP() << "this file system keeps no holes";
    }
    ASSERT_FALSE(copyItem(at("from"), at("to")));
    EXPECT_EQ(read("to"), read("from"));
    EXPECT_LT(status("to").st_blocks, 1000);
}

TEST_F(Copying, CopiesAFileThatDoesNotKnowItsSize) {
    ASSERT_FALSE(copyItem("/proc/self/status", at("to")));
    EXPECT_NE(read("to").find("Pid:"), std::string::npos);
}

TEST_F(Copying, RefusesPipesSocketsAndDevicesWithoutWaiting) {
    ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
    const platform::posix::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, at("socket").c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    for (const std::string& item : {at("pipe"), at("socket"), std::string("/dev/zero")}) {
        const auto failed = copyItem(item, at("to"));
        ASSERT_TRUE(failed) << item;
        EXPECT_NE(failed->description.find(item), std::string::npos);
        EXPECT_FALSE(isThere("to"));
    }
}

TEST_F(Copying, PipeInsideAFolderFailsAndLeavesNothing) {
    makeFolder("from");
    write("from/file", "x");
    ASSERT_EQ(::mkfifo(at("from/pipe").c_str(), 0600), 0);
    const auto failed = copyItem(at("from"), at("to"));
    ASSERT_TRUE(failed);
    EXPECT_NE(failed->description.find(at("from/pipe")), std::string::npos);
    EXPECT_EQ(names("."), std::vector<std::string>{"from"});
}

TEST_F(Copying, UnreadableFileFailsAndIsNamed) {
    if (isSuperuser()) {
        GTEST_SKIP() << "the superuser reads everything";
    }
    makeFolder("from/closed");
    write("from/closed/file", "secret");
    setMode("from/closed/file", 0);
    setMode("from/closed", 0555);
    const auto failed = copyItem(at("from"), at("to"));
    setMode("from/closed", 0755);
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->code, EACCES);
    EXPECT_NE(failed->description.find(at("from/closed/file")), std::string::npos);
    EXPECT_EQ(names("."), std::vector<std::string>{"from"});
}

TEST_F(Copying, FolderIntoItselfFailsAlsoThroughALink) {
    makeFolder("folder/sub");
    link("link", "folder/sub");
    EXPECT_TRUE(copyItem(at("folder"), at("folder/copy")));
    EXPECT_TRUE(copyItem(at("folder"), at("link/copy")));
    EXPECT_EQ(names("folder"), std::vector<std::string>{"sub"});
    EXPECT_TRUE(names("folder/sub").empty());
}

TEST_F(Copying, ReadOnlyFoldersArriveReadOnlyWithTheirTimes) {
    makeFolder("from/closed");
    write("from/closed/file", "x");
    setMode("from/closed", 0555);
    const std::array<timespec, 2> times{timespec{1000, 0}, timespec{2000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, at("from/closed").c_str(), times.data(), 0), 0);
    const auto failed = copyItem(at("from"), at("to"));
    EXPECT_EQ(status("to/closed").st_mode & 07777U, 0555U);
    EXPECT_EQ(status("to/closed").st_mtim.tv_sec, 2000);
    setMode("from/closed", 0755);
    setMode("to/closed", 0755);
    EXPECT_FALSE(failed);
}

TEST_F(Copying, TakesAnyBytesAsNames) {
    for (const std::string& name :
         {std::string("new\nline"), std::string("\xF0\x9F\x8E\xB5"), std::string("e\xCC\x81"), std::string("\xFF\xFE"),
          std::string(255, 'n'), std::string(" "), std::string("-rf"), std::string("%@%n"), std::string("a\\b")}) {
        write("from", name);
        ASSERT_FALSE(copyItem(at("from"), at(name)));
        EXPECT_EQ(read(name), name);
    }
    EXPECT_EQ(copyItem(at("from"), at(std::string(256, 'n')))->code, ENAMETOOLONG);
}

TEST_F(Copying, PathsThatAreNoneAreRefused) {
    write("from", "x");
    EXPECT_EQ(copyItem("", at("to"))->code, ENOENT);
    EXPECT_EQ(copyItem(at("from"), "")->code, ENOENT);
    EXPECT_EQ(copyItem(at("from"), at(std::string("to\0x", 4)))->code, EINVAL);
    EXPECT_EQ(names("."), std::vector<std::string>{"from"});
}

TEST_F(Copying, SlashesAtTheEndDoNotMatter) {
    makeFolder("from/sub");
    ASSERT_FALSE(copyItem(at("from//"), at("to/")));
    EXPECT_TRUE(isThere("to/sub"));
}

TEST_F(Copying, DestinationFolderThatMayNotBeWrittenToFails) {
    if (isSuperuser()) {
        GTEST_SKIP() << "the superuser writes everywhere";
    }
    write("from", "x");
    makeFolder("closed");
    setMode("closed", 0555);
    const auto failed = copyItem(at("from"), at("closed/to"));
    setMode("closed", 0755);
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->code, EACCES);
    EXPECT_NE(failed->description.find(at("closed/to")), std::string::npos);
}

TEST_F(Copying, StaysInTheFolderThatItBeganInWhenALinkIsSwappedIntoTheWay) {
    makeFolder("from/sub");
    write("from/sub/file", "x");
    makeFolder("into");
    makeFolder("elsewhere");
    link("link", "elsewhere");
    std::atomic<bool> over{false};
    std::thread swapping([&] {
        while (!over) {
            (void)::renameat2(AT_FDCWD, at("into").c_str(), AT_FDCWD, at("link").c_str(), RENAME_EXCHANGE);
        }
    });
    constexpr int count = 500;
    for (int i = 0; i < count; ++i) {
        const auto failed = copyItem(at("from"), at("into/copy" + std::to_string(i)));
        EXPECT_FALSE(failed) << failed->description;
    }
    over = true;
    swapping.join();
    std::vector<std::string> found = names("elsewhere");
    for (const std::string& name : names(std::filesystem::is_symlink(at("into")) ? "link" : "into")) {
        found.push_back(name);
    }
    EXPECT_EQ(found.size(), static_cast<std::size_t>(count));
    EXPECT_TRUE(std::ranges::all_of(found, [](const auto& name) { return name.starts_with("copy"); }));
}

// In memory where possible: making 10,000 levels is a matter of minutes for some disks. Made and measured through
// descriptors, since no path is that long.
TEST_F(Copying, TreeOfTenThousandLevelsArrivesWhole) {
    const fakes::TemporaryFolder place(::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp");
    platform::posix::Descriptor folder(::open(place.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::string name = "from";
    for (int level = 0; level < 10'000; ++level) {
        ASSERT_EQ(::mkdirat(folder.get(), name.c_str(), 0755), 0);
        folder.reset(::openat(folder.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        name = "d";
    }
    const auto failed = copyItem(place / "from", place / "to");
    EXPECT_FALSE(failed) << failed->description;
    int levels = 0;
    name = "to";
    folder.reset(::open(place.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    while (folder) {
        folder.reset(::openat(folder.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        name = "d";
        levels += folder ? 1 : 0;
    }
    EXPECT_EQ(levels, 10'000);
    EXPECT_FALSE(m_files.removeItem(place / "from"));
    EXPECT_FALSE(m_files.removeItem(place / "to"));
    EXPECT_TRUE(std::filesystem::is_empty(place.path()));
}

}  // namespace
