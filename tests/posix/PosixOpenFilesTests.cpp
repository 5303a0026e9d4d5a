#include "platform/posix/PosixOpenFiles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/fakes/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;

class OpeningFiles : public testing::Test {
protected:
    std::string add(const std::string& name, const std::string& contents) {
        std::ofstream(disk / name, std::ios::binary) << contents;
        return disk / name;
    }
    std::string addPipe() {
        const std::string path = disk / "pipe";
        EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
        return path;
    }
    std::string addSocket() {
        const std::string path = disk / "socket";
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): as sockets want it
        EXPECT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        ::close(socket);
        return path;
    }
    static std::string read(const std::string& path) {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
    static std::span<const std::byte> bytesOf(std::string_view text) { return std::as_bytes(std::span(text)); }
    static std::size_t descriptors() {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
    }

    fakes::TemporaryFolder disk;
    platform::posix::PosixOpenFiles files{[](int, int) { return EPERM; }};
};

TEST_F(OpeningFiles, ReadsWhatIsThereAndThenItsEnd) {
    const auto opened = files.openForReading(add("file", "hello"));
    std::array<std::byte, 16> buffer{};

    const auto first = opened.file->read(buffer);
    const auto second = opened.file->read(buffer);

    EXPECT_EQ(first.bytes, 5U);
    EXPECT_EQ(std::memcmp(buffer.data(), "hello", 5), 0);
    EXPECT_EQ(second.bytes, 0U);
    EXPECT_EQ(second.code, 0);
}

TEST_F(OpeningFiles, MakesAMissingFileForItsOwnerAlone) {
    const auto opened = files.openForWriting(disk / "new");

    EXPECT_TRUE(opened.created);
    EXPECT_EQ(fs::status(disk / "new").permissions(), fs::perms(0600));
}

TEST_F(OpeningFiles, KeepsTheContentsOfAFileThatIsThereUntilTold) {
    const auto opened = files.openForWriting(add("file", "before"));

    EXPECT_FALSE(opened.created);
    EXPECT_EQ(read(disk / "file"), "before");
    EXPECT_EQ(opened.file->truncate(), 0);
    EXPECT_EQ(read(disk / "file"), "");
}

TEST_F(OpeningFiles, WritesWhereItWasPositioned) {
    const auto opened = files.openForWriting(add("file", "abcdef"));

    EXPECT_EQ(opened.file->seek(2), 0);
    EXPECT_EQ(opened.file->write(bytesOf("XY")).bytes, 2U);

    EXPECT_EQ(read(disk / "file"), "abXYef");
}

TEST_F(OpeningFiles, WritesThroughALink) {
    add("file", "");
    fs::create_symlink(disk / "file", disk / "link");

    const auto opened = files.openForWriting(disk / "link");
    opened.file->write(bytesOf("text"));

    EXPECT_EQ(read(disk / "file"), "text");
    EXPECT_TRUE(fs::is_symlink(disk / "link"));
}

TEST_F(OpeningFiles, RefusesToMakeAFileThroughADanglingLink) {
    fs::create_symlink(disk / "nothing", disk / "link");

    const auto opened = files.openForWriting(disk / "link");

    EXPECT_EQ(opened.file, nullptr);
    EXPECT_EQ(opened.code, ENOENT);
    EXPECT_FALSE(fs::exists(disk / "nothing"));
}

TEST_F(OpeningFiles, RefusesWithoutWaitingWhatIsNoRegularFile) {
    fs::create_directory(disk / "folder");
    for (const std::string& path : {addPipe(), addSocket(), std::string("/dev/zero"), disk / "folder"}) {
        EXPECT_EQ(files.openForReading(path).file, nullptr) << path;
        EXPECT_NE(files.openForReading(path).code, 0) << path;
        EXPECT_EQ(files.openForWriting(path).file, nullptr) << path;
        EXPECT_NE(files.openForWriting(path).code, 0) << path;
    }
}

TEST_F(OpeningFiles, ReadsAndWritesAsAFileThatMayWait) {
    const auto flagsOf = [](const std::string& path) {
        for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
            std::error_code error;
            if (fs::read_symlink(entry.path(), error) == path) {
                return ::fcntl(std::stoi(entry.path().filename()), F_GETFL);
            }
        }
        return -1;
    };
    const auto made = files.openForWriting(disk / "new");
    const auto reading = files.openForReading(add("source", "x"));
    const auto writing = files.openForWriting(add("there", "x"));

    for (const std::string& path : {disk / "new", disk / "source", disk / "there"}) {
        EXPECT_EQ(flagsOf(path) & O_NONBLOCK, 0) << path;
    }
}

TEST_F(OpeningFiles, DoesNotWaitForTheKernelToHaveSomethingToSay) {
    const auto opened = files.openForReading("/proc/kmsg");
    if (!opened.file) {
        GTEST_SKIP() << "this user may not read the messages of the kernel";
    }
    ::alarm(20);  // ends a program that waits
    std::array<std::byte, 8192> buffer{};
    platform::Transfer transfer{.bytes = 1, .code = 0};
    while (transfer.bytes > 0) {
        transfer = opened.file->read(buffer);
    }
    ::alarm(0);
    EXPECT_EQ(transfer.code, EAGAIN);
}

TEST_F(OpeningFiles, SaysWhyAFileCannotBeOpened) {
    EXPECT_EQ(files.openForReading(disk / "missing").code, ENOENT);
    EXPECT_EQ(files.openForReading("").code, ENOENT);
    EXPECT_EQ(files.openForReading(std::string("/tmp\0/x", 7)).code, EINVAL);
    EXPECT_EQ(files.openForWriting(disk / "missing/file").code, ENOENT);
    EXPECT_EQ(files.openForWriting(std::string("/tmp\0/x", 7)).code, EINVAL);
    EXPECT_EQ(files.openForWriting("").code, ENOENT);
}

TEST_F(OpeningFiles, TellsSizeAndIdentityAsTheyAreNow) {
    const auto opened = files.openForWriting(disk / "file");
    opened.file->write(bytesOf("12345"));
    fs::create_hard_link(disk / "file", disk / "other name");

    EXPECT_EQ(opened.file->size(), 5U);
    EXPECT_EQ(opened.file->identity(), files.openForReading(disk / "other name").file->identity());
    EXPECT_NE(opened.file->identity(), files.openForReading(add("another", "")).file->identity());
}

TEST_F(OpeningFiles, ReportsTheNumberOfAnErrorWhenAFileCannotTakeBytes) {
    const auto opened = files.openForReading(add("file", "x"));

    EXPECT_EQ(opened.file->write(bytesOf("y")).code, EBADF);
    EXPECT_EQ(opened.file->truncate(), EINVAL);
}

TEST_F(OpeningFiles, NamesTheFileWhoseAttributesCannotBeSet) {
    const auto from = files.openForReading(add("from", ""));
    const auto to = files.openForWriting(disk / "to");

    const auto failure = to.file->copyAttributesFrom(*from.file);

    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, EPERM);
    EXPECT_NE(failure->description.find(disk / "to"), std::string::npos);
}

TEST_F(OpeningFiles, ClosesThemselves) {
    const std::size_t before = descriptors();

    { const auto opened = files.openForReading(add("file", "x")); }
    files.openForWriting(disk / "other").file->close();

    EXPECT_EQ(descriptors(), before);
}

TEST_F(OpeningFiles, AreClosedWhenAProgramIsExecuted) {
    const auto opened = files.openForReading(add("file", "x"));
    std::FILE* const stream = files.openStream(disk / "file");
    std::size_t checked = 0;

    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (fs::read_symlink(entry.path(), gone) == disk / "file") {
            ++checked;
            EXPECT_NE(::fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC, 0);
        }
    }
    std::fclose(stream);

    EXPECT_EQ(checked, 2U);
}

TEST_F(OpeningFiles, StreamsReadFilesAndRefusePipesSocketsAndDevices) {
    std::FILE* const stream = files.openStream(add("file", "text"));
    std::array<char, 8> buffer{};

    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(std::fread(buffer.data(), 1, buffer.size(), stream), 4U);
    EXPECT_EQ(std::string_view(buffer.data()), "text");
    std::fclose(stream);
    for (const std::string& path : {addPipe(), addSocket(), std::string("/dev/zero"), disk / "missing"}) {
        errno = 0;
        EXPECT_EQ(files.openStream(path), nullptr) << path;
        EXPECT_NE(errno, 0) << path;
    }
}

TEST_F(OpeningFiles, CloseADescriptorByItsNumber) {
    const int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);

    files.closeDescriptor(descriptor);
    files.closeDescriptor(-1);

    EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
}

}  // namespace
