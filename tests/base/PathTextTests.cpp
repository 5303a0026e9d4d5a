#include "lib/base/PathText.h"

#include <gtest/gtest.h>

namespace {

using Components = std::vector<std::string>;

struct Joining {
    const char* path;
    const char* component;
    const char* joined;
};

class PathJoining : public testing::TestWithParam<Joining> {};

TEST_P(PathJoining, PutsOneSlashBetween) {
    EXPECT_EQ(kz::appendPathComponent(GetParam().path, GetParam().component), GetParam().joined);
}

INSTANTIATE_TEST_SUITE_P(Rows, PathJoining,
                         testing::Values(Joining{"/tmp", "a", "/tmp/a"}, Joining{"/tmp/", "a", "/tmp/a"},
                                         Joining{"/", "a", "/a"}, Joining{"", "a", "a"}, Joining{"", "/a", "/a"},
                                         Joining{"/tmp", "/a/b", "/tmp/a/b"}, Joining{"/tmp", "", "/tmp"},
                                         Joining{"/tmp/", "", "/tmp"}, Joining{"", "", ""},
                                         Joining{"/tmp//x", "a//b/", "/tmp/x/a/b"}, Joining{"/", "/", "/"},
                                         Joining{"a", "..", "a/.."}, Joining{"/tmp", "a\nb", "/tmp/a\nb"}));

struct Parts {
    const char* path;
    const char* last;
    const char* parent;
};

class PathParts : public testing::TestWithParam<Parts> {};

TEST_P(PathParts, SplitsBeforeTheLastComponent) {
    EXPECT_EQ(kz::lastPathComponent(GetParam().path), GetParam().last);
    EXPECT_EQ(kz::deletingLastPathComponent(GetParam().path), GetParam().parent);
}

INSTANTIATE_TEST_SUITE_P(Rows, PathParts,
                         testing::Values(Parts{"/tmp/scratch.tiff", "scratch.tiff", "/tmp"},
                                         Parts{"/tmp/lock/", "lock", "/tmp"}, Parts{"/tmp/", "tmp", "/"},
                                         Parts{"/tmp", "tmp", "/"}, Parts{"/", "/", "/"}, Parts{"///", "/", "/"},
                                         Parts{"scratch.tiff", "scratch.tiff", ""}, Parts{"scratch///", "scratch", ""},
                                         Parts{"", "", ""}, Parts{"a//b", "b", "a"}, Parts{"/a//b", "b", "/a"}));

struct Extension {
    const char* path;
    const char* extension;
    const char* rest;
};

class PathExtensions : public testing::TestWithParam<Extension> {};

TEST_P(PathExtensions, FollowTheLastDotOfTheLastComponent) {
    EXPECT_EQ(kz::pathExtension(GetParam().path), GetParam().extension);
    EXPECT_EQ(kz::deletingPathExtension(GetParam().path), GetParam().rest);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PathExtensions,
    testing::Values(Extension{"/tmp/scratch.tiff", "tiff", "/tmp/scratch"}, Extension{"x.tar.gz", "gz", "x.tar"},
                    Extension{"Pack.vst3/", "vst3", "Pack"}, Extension{".hidden", "", ".hidden"},
                    Extension{".hidden.txt", "txt", ".hidden"}, Extension{"a.", "", "a."},
                    Extension{"a..txt", "txt", "a."}, Extension{"..txt", "", "..txt"}, Extension{"..", "", ".."},
                    Extension{".", "", "."}, Extension{"a b/c.d/e", "", "a b/c.d/e"}, Extension{"/a.b/c", "", "/a.b/c"},
                    Extension{"Version 1.2 beta", "", "Version 1.2 beta"}, Extension{"My Song.mp3", "mp3", "My Song"},
                    Extension{"", "", ""}, Extension{"/", "", "/"}, Extension{"/tmp/", "", "/tmp"},
                    Extension{"name.Übung", "Übung", "name"}, Extension{"evil.\u202Egpj", "", "evil.\u202Egpj"}));

struct Appending {
    const char* path;
    const char* extension;
    const char* result;
};

class ExtensionAppending : public testing::TestWithParam<Appending> {};

TEST_P(ExtensionAppending, PutsADotBetween) {
    EXPECT_EQ(kz::appendPathExtension(GetParam().path, GetParam().extension), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(Rows, ExtensionAppending,
                         testing::Values(Appending{"/tmp/scratch.old", "tiff", "/tmp/scratch.old.tiff"},
                                         Appending{"/tmp/scratch.", "tiff", "/tmp/scratch..tiff"},
                                         Appending{"/tmp/", "tiff", "/tmp.tiff"}, Appending{"a", "b", "a.b"},
                                         Appending{"/", "b", "/"}, Appending{"", "b", ""}, Appending{"a", "", "a"},
                                         Appending{"a", "b c", "a"}, Appending{"a", "b/c", "a"}));

TEST(PathComponents, BeginWithASlashForAnAbsolutePath) {
    EXPECT_EQ(kz::pathComponents("/tmp//scratch"), (Components{"/", "tmp", "scratch"}));
    EXPECT_EQ(kz::pathComponents("tmp/scratch"), (Components{"tmp", "scratch"}));
}

TEST(PathComponents, EndWithASlashWhenThePathDoes) {
    EXPECT_EQ(kz::pathComponents("/tmp/"), (Components{"/", "tmp", "/"}));
    EXPECT_EQ(kz::pathComponents("tmp//"), (Components{"tmp", "/"}));
}

TEST(PathComponents, AreOneForTheRootAndNoneForNothing) {
    EXPECT_EQ(kz::pathComponents("/"), Components{"/"});
    EXPECT_EQ(kz::pathComponents("///"), Components{"/"});
    EXPECT_TRUE(kz::pathComponents("").empty());
}

}  // namespace
