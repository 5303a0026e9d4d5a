#include "platform/linux/rights/HelperImage.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>

#include "platform/posix/Descriptor.h"

namespace {

using platform::posix::Descriptor;
using platform::rights::HelperImage;

std::string bytesOf(const HelperImage& image) {
    struct stat found {};
    if (::fstat(image.descriptor(), &found) != 0) {
        return {};
    }
    std::string bytes(static_cast<std::size_t>(found.st_size), '\0');
    bytes.resize(
        static_cast<std::size_t>(std::max(ssize_t{0}, ::pread(image.descriptor(), bytes.data(), bytes.size(), 0))));
    return bytes;
}

TEST(HelperProgram, IsAProgram) {
    const HelperImage image;
    ASSERT_EQ(image.error(), 0);
    EXPECT_EQ(bytesOf(image).substr(0, 4),
              "\x7f"
              "ELF");
}

TEST(HelperProgram, CannotBeWrittenByAnybody) {
    const HelperImage image;
    const auto before = bytesOf(image);
    const Descriptor file(::open(image.path().c_str(), O_RDWR));
    if (file) {  // only the superuser gets that far
        errno = 0;
        EXPECT_EQ(::write(file.get(), "x", 1), -1);
        EXPECT_EQ(errno, EPERM);
        EXPECT_EQ(::mmap(nullptr, 4096, PROT_WRITE, MAP_SHARED, file.get(), 0), MAP_FAILED);
    } else {
        EXPECT_EQ(errno, EACCES);
    }
    EXPECT_EQ(bytesOf(image), before);
}

TEST(HelperProgram, CannotBeCutOrGrown) {
    const HelperImage image;
    const auto before = bytesOf(image);
    EXPECT_EQ(::truncate(image.path().c_str(), 0), -1);
    EXPECT_EQ(::truncate(image.path().c_str(), 100000000), -1);
    EXPECT_EQ(bytesOf(image), before);
}

TEST(HelperProgram, CannotBeUnsealed) {
    const HelperImage image;
    EXPECT_EQ(::fcntl(image.descriptor(), F_GET_SEALS), F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE);
}

// A process that runs what its user may read could be traced by him from its first moment.
TEST(HelperProgram, CannotBeReadByItsOwner) {
    const HelperImage image;
    struct stat found {};
    ASSERT_EQ(::fstat(image.descriptor(), &found), 0);
    EXPECT_EQ(found.st_mode & 07777U, mode_t{S_IXUSR});
}

TEST(HelperProgram, IsNotInheritedAndGoesWithItsObject) {
    std::string path;
    {
        const HelperImage image;
        path = image.path();
        const int number = std::stoi(path.substr(path.rfind('/') + 1));
        EXPECT_GT(number, STDERR_FILENO);
        EXPECT_EQ(::fcntl(number, F_GETFD), FD_CLOEXEC);
    }
    EXPECT_NE(::access(path.c_str(), F_OK), 0);
}

}  // namespace
