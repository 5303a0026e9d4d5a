#include "tools/wickfield-bundle/show/PlanReport.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace {

using wickfield_bundle::Drawing;
using wickfield_bundle::ItemKind;
using wickfield_bundle::ItemState;
using wickfield_bundle::Plan;
using wickfield_bundle::PlannedItem;

constexpr const char* tree = "Contents/Resources/PluginStructure";

PlannedItem item(const std::string& path, ItemState state = ItemState::added, const std::string& reason = {}) {
    PlannedItem made;
    made.source = tree + path;
    made.path = path;
    made.destination = path;
    made.state = state;
    made.reason = reason;
    made.files = 1;
    made.bytes = 2048;
    return made;
}

Plan planOf(std::vector<PlannedItem> items) {
    Plan plan;
    plan.bundle = "/b/Plug Installer.app";
    plan.name = "Plug";
    plan.version = "1.0";
    plan.author = "by Ada";
    plan.home = "/home/ada";
    plan.items = std::move(items);
    return plan;
}

std::string table(const Plan& plan, std::size_t columns = 0) {
    std::string text;
    printTable(plan, columns, [&](std::string_view piece) { text += piece; });
    return text;
}

std::string drawn(const Plan& plan, Drawing drawing = Drawing::unicode, std::size_t columns = 0) {
    std::string text;
    printTree(plan, drawing, columns, [&](std::string_view piece) { text += piece; });
    return text;
}

nlohmann::json json(const Plan& plan) {
    std::string text;
    printJson(plan, [&](std::string_view piece) { text += piece; });
    return nlohmann::json::parse(text);
}

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

TEST(PlanTable, HasALineForEachItem) {
    const auto text = table(planOf({item("/Library/one"), item("/Library/two", ItemState::replaced)}));
    EXPECT_TRUE(holds(text, "\nnew       2.00 KB  /Library/one\nreplaced  2.00 KB  /Library/two\n")) << text;
}

TEST(PlanTable, TellsTheSums) {
    auto refused = item("/c", ItemState::refused, "why");
    auto asked = item("/d");
    asked.needsAdministrator = true;
    const auto text = table(planOf({item("/a"), item("/b", ItemState::replaced), refused, asked}));
    EXPECT_TRUE(holds(text, "4 items of 4 files and 8.00 KB: 2 new, 1 replaced, 1 refused, 1 by an administrator.\n"))
        << text;
}

TEST(PlanTable, HasReasonsBelowTheirItems) {
    auto asked = item("/d", ItemState::added, "only an administrator may change the folder /");
    asked.needsAdministrator = true;
    EXPECT_TRUE(holds(table(planOf({asked})),
                      "/d\n            asks for an administrator: only an administrator may change the folder /\n"));
}

TEST(PlanTable, BreaksReasonsAtTheTerminalsWidth) {
    const auto text = table(planOf({item("/d", ItemState::refused, "one two three four five six")}), 24);
    EXPECT_TRUE(holds(text, "            one two\n            three four\n            five six\n")) << text;
}

TEST(PlanTable, NamesTheSourceWhereTheDestinationDoesNotTellIt) {
    auto mine = item("/Users/user/x");
    mine.destination = "/home/ada/x";
    const auto text = table(planOf({item("/Library/a/longer/path"), mine}));
    EXPECT_TRUE(holds(text, "2.00 KB  /home/ada/x             /Users/user/x\n")) << text;
}

TEST(PlanTable, KeepsItsColumnsBesideWideNames) {
    auto wide = item("/Users/user/日本");
    wide.destination = "/h/日本";
    auto narrow = item("/Users/user/abcd");
    narrow.destination = "/h/abcd";
    auto combined = item("/Users/user/x");
    combined.destination = "/h/e\xCC\x81xyz";
    const auto text = table(planOf({wide, narrow, combined}));
    EXPECT_TRUE(holds(text, "/h/日本      /Users/user/日本\n")) << text;
    EXPECT_TRUE(holds(text, "/h/abcd      /Users/user/abcd\n")) << text;
    EXPECT_TRUE(holds(text, "/h/e\xCC\x81xyz      /Users/user/x\n")) << text;
}

TEST(PlanTable, LetsNoNameActOnTheTerminal) {
    auto evil = item("/a\033]0;owned\a\n\xFF\xE2\x80\xAEx");
    evil.reason = "r\033[2J";
    auto plan = planOf({evil});
    plan.name = "n\033[31m";
    plan.home = "/h\r";
    plan.passedOver = {"p\n.x"};
    for (const auto& text : {table(plan), drawn(plan)}) {
        EXPECT_FALSE(holds(text, "\033")) << text;
        EXPECT_FALSE(holds(text, "\r"));
        EXPECT_FALSE(holds(text, "\xE2\x80\xAE"));
        EXPECT_FALSE(holds(text, "\xFF"));
        EXPECT_TRUE(holds(text, "p\\n.x\n"));
    }
}

TEST(PlanTable, OfNothingSaysSo) {
    EXPECT_TRUE(holds(table(planOf({})), "Nothing is installed.\n"));
    EXPECT_FALSE(holds(table(planOf({})), "STATE"));
}

TEST(PlanTable, TellsTheScripts) {
    auto plan = planOf({});
    plan.before = {
        .source = "Contents/Resources/preinstall.scpt", .interpreter = "/usr/bin/osascript", .canRun = false};
    EXPECT_TRUE(holds(table(plan),
                      "First Contents/Resources/preinstall.scpt is run by /usr/bin/osascript (which is "
                      "not on this host: the installation fails).\n"));
    EXPECT_TRUE(holds(table(plan), "Then no script is run.\n"));
}

TEST(PlanTree, JoinsFoldersThatHoldOneFolder) {
    const auto text = drawn(planOf({item("/Library/a/b/one"), item("/Library/a/b/two"), item("/Users/c/three")}));
    EXPECT_TRUE(holds(text,
                      "/\n"
                      "├── Library/a/b/\n"
                      "│   ├── one  new, 2.00 KB\n"
                      "│   └── two  new, 2.00 KB\n"
                      "└── Users/c/\n"
                      "    └── three  new, 2.00 KB\n"))
        << text;
}

TEST(PlanTree, CanBeDrawnInAscii) {
    const auto text = drawn(planOf({item("/a/one"), item("/b/two")}), Drawing::ascii);
    EXPECT_TRUE(holds(text, "|-- a/\n|   `-- one  new, 2.00 KB\n`-- b/\n    `-- two  new, 2.00 KB\n")) << text;
}

TEST(PlanTree, MarksTheFoldersThatAreMade) {
    auto plan = planOf({item("/a/b/one"), item("/a/two")});
    plan.folders = {"/a/b"};
    EXPECT_TRUE(holds(drawn(plan), "├── b/  (new folder)\n")) << drawn(plan);
    EXPECT_TRUE(holds(drawn(plan), "└── a/\n"));
}

TEST(PlanTree, CountsTheFilesOfAPackage) {
    auto package = item("/a/P.vst3");
    package.kind = ItemKind::package;
    package.files = 3;
    EXPECT_TRUE(holds(drawn(planOf({package})), "P.vst3  new, 3 files, 2.00 KB\n"));
}

TEST(PlanTree, HasAPlaceForWhatGoesNowhere) {
    auto lost = item("/Users/user/x", ItemState::refused, "nobody is there whose folder could be meant");
    lost.destination.reset();
    const auto text = drawn(planOf({lost}));
    EXPECT_TRUE(holds(text, "nowhere that is known\n└── Users/user/\n    └── x  refused, 2.00 KB\n          nobody"))
        << text;
}

TEST(PlanTree, ShowsBothItemsOfOneDestination) {
    const auto text = drawn(planOf({item("/a/x"), item("/a/x", ItemState::replaced)}));
    EXPECT_TRUE(holds(text, "└── x  new, 2.00 KB\n          replaced, 2.00 KB\n")) << text;
}

TEST(PlanJson, HasAllItsMembers) {
    auto plan = planOf({item("/a", ItemState::refused, "why")});
    plan.folders = {"/f"};
    plan.passedOver = {"p"};
    plan.after = {.source = "s", .interpreter = "i", .canRun = true};
    const auto document = json(plan);
    EXPECT_EQ(document.at("format"), 1);
    EXPECT_EQ(document.at("bundle"), "/b/Plug Installer.app");
    EXPECT_EQ(document.at("name"), "Plug");
    EXPECT_EQ(document.at("home"), "/home/ada");
    EXPECT_EQ(document.at("preinstall"), nullptr);
    EXPECT_EQ(document.at("postinstall"), (nlohmann::json{{"source", "s"}, {"interpreter", "i"}, {"canRun", true}}));
    EXPECT_EQ(document.at("items").at(0), (nlohmann::json{{"source", std::string(tree) + "/a"},
                                                          {"destination", "/a"},
                                                          {"kind", "file"},
                                                          {"state", "refused"},
                                                          {"administrator", false},
                                                          {"reason", "why"},
                                                          {"files", 1},
                                                          {"bytes", 2048}}));
    EXPECT_EQ(document.at("folders"), nlohmann::json::parse(R"([{"path": "/f"}])"));
    EXPECT_EQ(document.at("passedOver"), nlohmann::json::parse(R"([{"path": "p"}])"));
    EXPECT_EQ(document.at("totals").at("refused"), 1);
    EXPECT_EQ(document.size(), 12U);
}

TEST(PlanJson, KeepsTheBytesOfANameThatIsNotUTF8) {
    auto plan = planOf({item("/\xFF")});
    plan.folders = {"/\xFE"};
    const auto entry = json(plan).at("items").at(0);
    EXPECT_EQ(json(plan).at("folders").at(0).at("pathBytes"), "2ffe");
    EXPECT_EQ(entry.at("destination"), "/\xEF\xBF\xBD");
    EXPECT_EQ(entry.at("destinationBytes"), "2fff");
    EXPECT_TRUE(entry.contains("sourceBytes"));
}

TEST(PlanJson, HasNoDestinationWhereThereIsNone) {
    auto lost = item("/x", ItemState::refused);
    lost.destination.reset();
    auto plan = planOf({lost});
    plan.home.reset();
    EXPECT_EQ(json(plan).at("items").at(0).at("destination"), nullptr);
    EXPECT_EQ(json(plan).at("home"), nullptr);
}

TEST(PlanJson, OfNothingIsWellFormed) {
    EXPECT_EQ(json(planOf({})).at("items"), nlohmann::json::array());
    EXPECT_EQ(json(planOf({})).at("totals").at("items"), 0);
}

}  // namespace
