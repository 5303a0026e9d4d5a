#include "platform/linux/rights/HelperImage.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/posix/Descriptor.h"

namespace {

using platform::posix::Descriptor;
using platform::rights::HelperImage;

std::string bytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(HelperProgram, IsAProgram) {
    const HelperImage image;
    ASSERT_EQ(image.error(), 0);
    EXPECT_EQ(bytesOf(image.path()).substr(0, 4),
              "\x7f"
              "ELF");
}

TEST(HelperProgram, CannotBeWrittenByAnybody) {
    const HelperImage image;
    const auto before = bytesOf(image.path());
    const Descriptor file(::open(image.path().c_str(), O_RDWR));
    if (file) {  // only the superuser gets that far
        errno = 0;
        EXPECT_EQ(::write(file.get(), "x", 1), -1);
        EXPECT_EQ(errno, EPERM);
        EXPECT_EQ(::mmap(nullptr, 4096, PROT_WRITE, MAP_SHARED, file.get(), 0), MAP_FAILED);
    } else {
        EXPECT_EQ(errno, EACCES);
    }
    EXPECT_EQ(bytesOf(image.path()), before);
}

TEST(HelperProgram, CannotBeCutOrGrown) {
    const HelperImage image;
    const auto before = bytesOf(image.path());
    EXPECT_EQ(::truncate(image.path().c_str(), 0), -1);
    EXPECT_EQ(::truncate(image.path().c_str(), 100000000), -1);
    EXPECT_EQ(bytesOf(image.path()), before);
}

TEST(HelperProgram, CannotBeUnsealed) {
    const HelperImage image;
    const Descriptor file(::open(image.path().c_str(), O_RDONLY));
    EXPECT_EQ(::fcntl(file.get(), F_GET_SEALS), F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE);
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
