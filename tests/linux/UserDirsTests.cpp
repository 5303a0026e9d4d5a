#include "platform/linux/services/UserDirs.h"

#include <gtest/gtest.h>

namespace {

using platform::linux_host::parseUserDirs;
using Folders = std::map<std::string, std::string>;

Folders parsed(std::string_view text) { return parseUserDirs(text, "/home/ada"); }

TEST(UserDirs, AreBelowTheHomeOrAbsolute) {
    EXPECT_EQ(parsed("# made by a tool\n"
                     "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"
                     "XDG_VIDEOS_DIR=\"/media/films\"\n"),
              (Folders{{"XDG_DESKTOP_DIR", "/home/ada/Schreibtisch"}, {"XDG_VIDEOS_DIR", "/media/films"}}));
}

TEST(UserDirs, MayBeIndentedAndEndInCarriageReturns) {
    EXPECT_EQ(parsed(" \tXDG_DESKTOP_DIR = \"$HOME/D\" \t\r\n"), (Folders{{"XDG_DESKTOP_DIR", "/home/ada/D"}}));
}

TEST(UserDirs, MayLackTheLastNewLine) {
    EXPECT_EQ(parsed("XDG_DESKTOP_DIR=\"$HOME/D\""), (Folders{{"XDG_DESKTOP_DIR", "/home/ada/D"}}));
}

TEST(UserDirs, LoseBackslashesAndTrailingSlashes) {
    EXPECT_EQ(parsed("XDG_DESKTOP_DIR=\"$HOME/a \\\"b\\\" \\$c\\\\//\""),
              (Folders{{"XDG_DESKTOP_DIR", "/home/ada/a \"b\" $c\\"}}));
}

TEST(UserDirs, CountTheLastOfEqualLines) {
    EXPECT_EQ(parsed("XDG_DESKTOP_DIR=\"/a\"\nXDG_DESKTOP_DIR=\"/b\"\n"), (Folders{{"XDG_DESKTOP_DIR", "/b"}}));
}

TEST(UserDirs, ThatAreTheHomeItselfAreSwitchedOff) {
    for (const char* line :
         {"XDG_DESKTOP_DIR=\"$HOME\"", "XDG_DESKTOP_DIR=\"$HOME/\"", "XDG_DESKTOP_DIR=\"/home/ada//\""}) {
        EXPECT_EQ(parsed(line), Folders{}) << line;
    }
}

TEST(UserDirs, OfAnyOtherFormCountAsAbsent) {
    for (const char* line :
         {"", "XDG_DESKTOP_DIR", "XDG_DESKTOP_DIR=", "XDG_DESKTOP_DIR=$HOME/D", "XDG_DESKTOP_DIR='/a'",
          "XDG_DESKTOP_DIR=\"/a", "XDG_DESKTOP_DIR=\"/a\" x", "XDG_DESKTOP_DIR=\"/a\\", "XDG_DESKTOP_DIR=\"a\"",
          "XDG_DESKTOP_DIR=\"$HOMEx/a\"", "XDG_DESKTOP_DIR=\"${HOME}/a\"", "XDG_DESKTOP_DIR=\"\"",
          "XDG_DESKTOP_DIR=\"/\"", "#XDG_DESKTOP_DIR=\"/a\"", "DESKTOP=\"/a\"", "export XDG_DESKTOP_DIR=\"/a\""}) {
        EXPECT_EQ(parsed(line), Folders{}) << line;
    }
}

TEST(UserDirs, WithANulAreNoPaths) {
    using namespace std::string_view_literals;
    EXPECT_EQ(parsed("XDG_DESKTOP_DIR=\"/a\0b\""sv), Folders{});
}

}  // namespace
