#include "tools/wickfield-bundle/check/ProjectKeys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>

#include "app/InstallerSettings.h"
#include "tools/wickfield-bundle/project/ProjectFile.h"
#include "tools/wickfield-bundle/project/ProjectOptions.h"

namespace wickfield_bundle {
namespace {

using testing::Contains;

const std::vector<std::string> settings{InstallerSettings::nameKey,      InstallerSettings::versionKey,
                                        InstallerSettings::authorKey,    InstallerSettings::backgroundKey,
                                        InstallerSettings::agreementKey, InstallerSettings::removesBrandingKey};

std::set<std::string> wordsLike(const std::string& pattern) {
    std::string text;
    for (const Rule& rule : allRules()) {
        if (rule.remedy.find(usualProjectFile) != std::string_view::npos) {
            text.append(rule.remedy).append("\n");
        }
    }
    for (const std::string& key : settings) {
        text.append(inProject(key)).append("\n");
    }
    const std::regex wanted(pattern);
    std::set<std::string> words;
    for (std::sregex_iterator match(text.begin(), text.end(), wanted), end; match != end; ++match) {
        words.insert((*match)[1]);
    }
    return words;
}

TEST(ProjectKeys, StandForEverySetting) {
    for (const std::string& key : settings) {
        EXPECT_NE(inProject(key), "") << key;
    }
    EXPECT_EQ(inProject("KZNothing"), "");
}

TEST(ProjectKeys, FollowTheRulesOwnRemedy) {
    EXPECT_EQ(remedyInProject("setting-text-long", InstallerSettings::nameKey),
              "Shorten it: \"name\" in wickfield.json, or --name.");
    EXPECT_EQ(remedyInProject("setting-text-long", "KZNothing"), "Shorten it.");
}

TEST(ProjectKeys, NameOptionsThatThereAre) {
    std::vector<std::string> known;
    for (const auto& option : projectOptions()) {
        known.emplace_back(option.word);
    }
    const auto named = wordsLike("--([a-z-]+)");
    EXPECT_GE(named.size(), 8U);
    for (const std::string& word : named) {
        EXPECT_THAT(known, Contains(word));
    }
}

TEST(ProjectKeys, NameKeysThatAProjectMayHave) {
    const auto known = projectKeys();
    const auto named = wordsLike("\"([a-z]+)\"");
    EXPECT_GE(named.size(), 8U);
    for (const std::string& key : named) {
        EXPECT_THAT(known, Contains(key));
    }
}

}  // namespace
}  // namespace wickfield_bundle
