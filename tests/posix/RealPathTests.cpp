#include "platform/posix/RealPath.h"

#include "tests/fakes/FolderFixture.h"

namespace {

using platform::posix::realPath;

class RealPath : public FolderFixture {};

TEST_F(RealPath, FollowsEveryLink) {
    makeFolder("folder");
    write("folder/file", "x");
    link("link", "folder");
    EXPECT_EQ(realPath(at("link/../link/file")), realPath(at("folder")) + "/file");
}

TEST_F(RealPath, LeadsNowhereForWhatIsNotThere) {
    using namespace std::string_literals;
    link("dangling", "nowhere");
    link("loop", "loop");
    for (const std::string& path : {at("missing"), at("dangling"), at("loop"), at(".\0x"s), ""s}) {
        EXPECT_EQ(realPath(path), "") << path;
    }
}

}  // namespace
