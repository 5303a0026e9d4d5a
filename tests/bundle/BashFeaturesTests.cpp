#include "tools/wickfield-bundle/check/BashFeatures.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string newIn(std::string_view script) {
    const auto found = wickfield_bundle::newerBashFeature(script);
    return found ? std::to_string(found->line) + ": " + found->feature : "nothing";
}

TEST(NewerBash, IsAskedForByItsCommands) {
    EXPECT_EQ(newIn("cd /\ndeclare -A sizes\n"), "2: declare -A");
    EXPECT_EQ(newIn("f() { local -n target=$1; }"), "1: local -n");
    EXPECT_EQ(newIn("ls | readarray -t lines"), "1: readarray");
    EXPECT_EQ(newIn("mapfile < list"), "1: mapfile");
    EXPECT_EQ(newIn("shopt -s globstar"), "1: shopt -s globstar");
}

TEST(NewerBash, IsAskedForByItsExpansions) {
    EXPECT_EQ(newIn("echo \"${name^^}\""), "1: ${name^^}");
    EXPECT_EQ(newIn("x=${name,,}"), "1: ${name,,}");
    EXPECT_EQ(newIn("x=${name@Q}"), "1: ${name@Q}");
    EXPECT_EQ(newIn("x=${name,"), "1: ${name,");
}

TEST(NewerBash, IsAskedForByItsRedirections) {
    EXPECT_EQ(newIn("make &>> log"), "1: &>>");
    EXPECT_EQ(newIn("make |& tee log"), "1: |&");
}

TEST(NewerBash, IsNotAskedForByWhatOldOnesKnow) {
    EXPECT_EQ(
        newIn(
            "declare -a list\nlocal -r x=1\nmake &> log\nx=${list[@]} y=${#x} z=${x%,*} ${x/,/^}\nshopt -s nullglob\n"),
        "nothing");
    EXPECT_EQ(newIn(""), "nothing");
}

TEST(NewerBash, IsNotAskedForByCommentsAndTexts) {
    EXPECT_EQ(newIn("# declare -A\necho x # mapfile\n"), "nothing");
    EXPECT_EQ(newIn("echo 'mapfile |& ${x^^}'\necho \"use |& or mapfile\"\n"), "nothing");
}

TEST(NewerBash, IsNotAskedForByHereDocuments) {
    EXPECT_EQ(newIn("cat <<END\nmapfile\nEND\n"), "nothing");
    EXPECT_EQ(newIn("cat <<-'END'\n\tmapfile\n\tEND\nmapfile\n"), "4: mapfile");
    EXPECT_EQ(newIn("cat <<< text\nmapfile\n"), "2: mapfile");
}

TEST(NewerBash, ReadsTextsThatNeverEnd) {
    EXPECT_EQ(newIn("echo 'open\nmapfile\n"), "2: mapfile");
    EXPECT_EQ(newIn("echo ${"), "nothing");
    EXPECT_EQ(newIn("cat <<"), "nothing");
    EXPECT_EQ(newIn(std::string("\0\\", 2)), "nothing");
}

}  // namespace
