#include "tools/wickfield-bundle/project/ProjectFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "tests/bundle/CreateFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using wickfield_bundle::parseProject;
using wickfield_bundle::Project;
using wickfield_bundle::ProjectProblems;

std::vector<std::string> problemsOf(const std::string& contents) {
    try {
        parseProject(contents, "repo/wickfield.json");
    } catch (const ProjectProblems& problems) {
        return problems.lines();
    }
    return {};
}

std::string fileOfSources(const std::string& name) {
    const auto path = std::filesystem::path(__FILE__).parent_path() / "../../tools/wickfield-bundle" / name;
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

class ProjectFiles : public CreateFixture {
protected:
    static std::vector<std::string> problemsOfFile(const std::string& path) {
        try {
            wickfield_bundle::readProjectFile(path);
        } catch (const ProjectProblems& problems) {
            return problems.lines();
        }
        return {};
    }
};

TEST(ProjectFile, GivesEveryValue) {
    const Project project = parseProject(R"({
        "name": "Brook", "version": "1.3", "author": "Fenwick", "identifier": "com.example.brook",
        "agreement": "a.rtf", "background": "b.png", "branding": false, "preinstall": "p.sh", "postinstall": "q.sh",
        "tree": "tree", "items": [{"source": "x", "destination": "/Library/x"}]})",
                                         "repo/wickfield.json");
    EXPECT_EQ(project.name + "|" + project.version + "|" + project.author + "|" + project.identifier,
              "Brook|1.3|Fenwick|com.example.brook");
    EXPECT_EQ(project.agreement, "repo/a.rtf");
    EXPECT_EQ(project.background, "repo/b.png");
    EXPECT_EQ(project.preinstall, "repo/p.sh");
    EXPECT_EQ(project.postinstall, "repo/q.sh");
    EXPECT_EQ(project.tree, "repo/tree");
    EXPECT_TRUE(project.removesBranding);
    ASSERT_EQ(project.items.size(), 1U);
    EXPECT_EQ(project.items[0].source + "|" + project.items[0].destination, "repo/x|/Library/x");
}

TEST(ProjectFile, LeavesOutWhatItDoesNotSay) {
    const Project project = parseProject("{}", "wickfield.json");
    EXPECT_EQ(project.name + project.version + project.author + project.identifier, "");
    EXPECT_FALSE(project.agreement || project.background || project.preinstall || project.postinstall || project.tree);
    EXPECT_FALSE(project.removesBranding);
    EXPECT_TRUE(project.items.empty());
}

TEST(ProjectFile, TakesPathsFromItsFolderUnlessTheyAreAbsolute) {
    EXPECT_EQ(parseProject(R"({"tree": "/abs/tree"})", "repo/wickfield.json").tree, "/abs/tree");
    EXPECT_EQ(parseProject(R"({"tree": "tree"})", "wickfield.json").tree, "tree");
    EXPECT_EQ(parseProject(R"({"tree": "../tree"})", "/a/b/wickfield.json").tree, "/a/b/../tree");
}

TEST(ProjectFile, MayHaveCommentsAndAByteOrderMark) {
    EXPECT_EQ(parseProject("\xEF\xBB\xBF// a line\n{ /* and\nmore */ \"name\": \"B\" }\n", "w.json").name, "B");
}

TEST(ProjectFile, NamesTheLineAndTheKeyOfAValueOfAWrongKind) {
    EXPECT_THAT(problemsOf("{\n  \"name\": \"B\",\n  \"branding\": \"no\"\n}"),
                ElementsAre("repo/wickfield.json:3: “branding” has to be true or false, and is a text"));
}

TEST(ProjectFile, SaysThatANumberWantsQuotes) {
    EXPECT_THAT(problemsOf("{\n\"version\":\n 1.3\n}"),
                ElementsAre("repo/wickfield.json:2: “version” has to be a text, and is a number; write it in quotes"));
}

TEST(ProjectFile, RefusesEveryKeyOfEveryWrongKind) {
    const std::vector<std::pair<std::string, std::string>> values{
        {"text", "\"t\""}, {"boolean", "true"}, {"number", "7"},   {"null", "null"},
        {"list", "[[]]"},  {"object", "{}"},    {"real", "-1e99"},
    };
    for (const auto key : wickfield_bundle::projectKeys()) {
        const std::string right = key == "branding" ? "boolean" : key == "items" ? "" : "text";
        for (const auto& [kind, value] : values) {
            const auto problems = problemsOf("{\n\n\"" + std::string(key) + "\": " + value + "}");
            if (kind == right) {
                EXPECT_TRUE(problems.empty()) << key << " " << kind;
                continue;
            }
            ASSERT_EQ(problems.size(), 1U) << key << " " << kind;
            EXPECT_THAT(problems[0], HasSubstr("repo/wickfield.json:3: “" + std::string(key))) << kind;
        }
    }
    for (const auto key : wickfield_bundle::itemKeys()) {
        for (const auto& [kind, value] : values) {
            if (kind != "text") {
                EXPECT_THAT(problemsOf("{\"items\": [{\"source\": \"s\", \"destination\": \"/d\", \"" +
                                       std::string(key) + "\": " + value + "}]}"),
                            ::testing::Contains(HasSubstr("twice")))
                    << key;
            }
        }
    }
}

TEST(ProjectFile, NamesTheItemWhoseValueIsOfAWrongKind) {
    EXPECT_THAT(problemsOf("{\"items\": [\n{\"source\": \"s\", \"destination\": \"/d\"},\n"
                           "{\"source\": 3,\n\"destination\": null}]}"),
                ElementsAre("repo/wickfield.json:3: “items[1].source” has to be a text, and is a number; write it in "
                            "quotes",
                            "repo/wickfield.json:4: “items[1].destination” has to be a text, and is null"));
}

TEST(ProjectFile, WantsSourceAndDestinationOfAnItem) {
    EXPECT_THAT(problemsOf("{\"items\": [{}]}"),
                ElementsAre(HasSubstr("“items[0].source” is missing"), HasSubstr("“items[0].destination” is missing")));
}

TEST(ProjectFile, GuessesWhatAnUnknownKeyWasToBe) {
    EXPECT_THAT(problemsOf("{\"nmae\": \"B\"}"), ElementsAre(HasSubstr("“nmae” is unknown; is “name” meant?")));
    EXPECT_THAT(problemsOf("{\"Version\": \"1\"}"), ElementsAre(HasSubstr("is “version” meant?")));
    EXPECT_THAT(problemsOf("{\"items\": [{\"source\": \"s\", \"destination\": \"/d\", \"sorce\": \"s\"}]}"),
                ElementsAre(HasSubstr("“items[0].sorce” is unknown; is “items[0].source” meant?")));
    EXPECT_THAT(problemsOf("{\"telephone\": \"1\"}"), ElementsAre("repo/wickfield.json:1: “telephone” is unknown"));
}

TEST(ProjectFile, RefusesAKeyThatStandsThereTwice) {
    EXPECT_THAT(problemsOf("{\"name\": \"A\",\n\"name\": \"B\"}"),
                ElementsAre("repo/wickfield.json:2: “name” stands there twice; leave out one"));
}

TEST(ProjectFile, TellsOfAllThatIsWrongAtOnce) {
    EXPECT_EQ(problemsOf("{\"name\": 1, \"nane\": 2, \"tree\": []}").size(), 3U);
}

TEST(ProjectFile, TellsOfNoMoreThanAnybodyReads) {
    std::string contents = "{\"items\": [1";
    for (int i = 0; i < 500'000; ++i) {
        contents += ",1";
    }
    const auto problems = problemsOf(contents + "]}");
    EXPECT_EQ(problems.size(), 51U);
    EXPECT_EQ(problems.back(), "repo/wickfield.json: more may be wrong; mend these first");
}

TEST(ProjectFile, SaysWhereItIsNoJson) {
    EXPECT_THAT(problemsOf("{\n\"name\": \"B\"\n\"version\": \"1\"}"),
                ElementsAre(::testing::StartsWith("repo/wickfield.json:3: is no JSON: ")));
    EXPECT_THAT(problemsOf(""), ElementsAre(HasSubstr(":1: is no JSON: ")));
    EXPECT_THAT(problemsOf("{\"name\": \"B\"} more"), ElementsAre(HasSubstr("is no JSON: ")));
    EXPECT_THAT(problemsOf("{\"name\": \"B"), ElementsAre(HasSubstr("is no JSON: ")));
    EXPECT_THAT(problemsOf("{\"name\": 1e999}"),
                ElementsAre("repo/wickfield.json:1: is no JSON: number overflow parsing '1e999'"));
}

TEST(ProjectFile, NamesTheCommaThatIsOneTooMany) {
    EXPECT_THAT(problemsOf("{\n\"name\": \"B\",\n// the last one\n}"),
                ElementsAre("repo/wickfield.json:4: is no JSON: nothing stands between the \",\" and the \"}\", so the "
                            "\",\" is one too many"));
    EXPECT_THAT(problemsOf("{\"items\": [{}, /* \" */ ]}"), ElementsAre(HasSubstr("\"]\", so the \",\" is one too")));
    EXPECT_THAT(problemsOf("{\"name\": \"//,\" }, }"), ElementsAre(Not(HasSubstr("one too many"))));
}

TEST(ProjectFile, NamesTheCommaThatIsMissing) {
    for (const char* const text : {"{\"name\": \"B\"\n\"version\": \"1\"}", "{\"branding\": true \"name\": \"B\"}",
                                   "{\"items\": [{} {}]}", "{\"items\": [] \"name\": \"a \\\" b\"}"}) {
        EXPECT_THAT(problemsOf(text), ElementsAre(HasSubstr("is no JSON: a \",\" is missing in front of this")))
            << text;
    }
    EXPECT_THAT(problemsOf("{\"name\" \"B\"}"), ElementsAre(HasSubstr("expected ':'")));
}

TEST(ProjectFile, RefusesARootThatIsNoObject) {
    EXPECT_THAT(problemsOf("[]"), ElementsAre(HasSubstr("has to be an object, “{ … }”, and is a list")));
    EXPECT_THAT(problemsOf("7"), ElementsAre(HasSubstr("and is a number")));
}

TEST(ProjectFile, RefusesBytesThatAreNoUtf8) {
    EXPECT_THAT(problemsOf("{\n\"name\": \"B\xff\"}"), ElementsAre("repo/wickfield.json:2: is no UTF-8"));
    EXPECT_THAT(problemsOf("{} // \xc0\xaf"), ElementsAre("repo/wickfield.json:1: is no UTF-8"));
}

TEST(ProjectFile, RefusesToFollowEndlessNesting) {
    EXPECT_THAT(problemsOf(std::string(400'000, '[')), ElementsAre(HasSubstr("nested more than 16 levels deep")));
    std::string objects;
    for (int i = 0; i < 100'000; ++i) {
        objects += "{\"a\":";
    }
    EXPECT_THAT(problemsOf(objects), ElementsAre(HasSubstr("nested more than 16 levels deep")));
}

TEST(ProjectFile, RefusesANulInATextAndAnEmptyPath) {
    EXPECT_THAT(problemsOf("{\"name\": \"B\\u0000\"}"), ElementsAre(HasSubstr("“name” holds a NUL")));
    EXPECT_THAT(problemsOf("{\"tree\": \"\"}"), ElementsAre(HasSubstr("“tree” is empty")));
}

TEST_F(ProjectFiles, SaysWhatStandsInPlaceOfTheFile) {
    EXPECT_THAT(problemsOfFile(place / "none.json"), ElementsAre(place / "none.json: is not there"));
    EXPECT_THAT(problemsOfFile(makeFolder("folder")), ElementsAre(HasSubstr(": is a folder")));
    ASSERT_EQ(::mkfifo((place / "pipe").c_str(), 0600), 0);
    EXPECT_THAT(problemsOfFile(place / "pipe"), ElementsAre(HasSubstr(": is a pipe")));
}

TEST_F(ProjectFiles, RefusesAFileThatIsTooLarge) {
    const std::string path = write("large.json", "{}");
    std::filesystem::resize_file(path, std::uintmax_t{1} << 40U);
    EXPECT_THAT(problemsOfFile(path), ElementsAre(HasSubstr("larger than 1 MiB")));
}

std::set<std::string> keysOf(const nlohmann::json& schema) {
    std::set<std::string> keys;
    for (const auto& [key, value] : schema.at("properties").items()) {
        keys.insert(key);
    }
    return keys;
}

TEST(ProjectSchema, KnowsTheKeysThatTheReaderKnows) {
    const auto schema = nlohmann::json::parse(fileOfSources("wickfield.schema.json"));
    std::set<std::string> known(wickfield_bundle::projectKeys().begin(), wickfield_bundle::projectKeys().end());
    known.insert("$schema");
    EXPECT_EQ(keysOf(schema), known);
    const std::set<std::string> ofItem(wickfield_bundle::itemKeys().begin(), wickfield_bundle::itemKeys().end());
    EXPECT_EQ(keysOf(schema.at("properties").at("items").at("items")), ofItem);
    EXPECT_FALSE(schema.at("additionalProperties").get<bool>());
}

// The kind that the schema gives a key is the one that the reader takes.
TEST(ProjectSchema, WantsTheKindsThatTheReaderWants) {
    const auto schema = nlohmann::json::parse(fileOfSources("wickfield.schema.json"));
    for (const auto& [key, value] : schema.at("properties").items()) {
        const auto& described =
            value.contains("$ref")
                ? schema.at(nlohmann::json::json_pointer(value.at("$ref").get<std::string>().substr(1)))
                : value;
        const auto kind = described.at("type").get<std::string>();
        const std::string sample = kind == "string" ? "\"x\"" : kind == "boolean" ? "true" : "[]";
        const std::string contents = std::string("{\"").append(key).append("\": ").append(sample).append("}");
        EXPECT_TRUE(problemsOf(contents).empty()) << key << " " << kind;
    }
}

TEST(ProjectExample, IsReadAndShowsEveryKey) {
    const std::string example = fileOfSources("example/wickfield.json");
    const auto values = nlohmann::json::parse(example, nullptr, true, true);
    for (const auto key : wickfield_bundle::projectKeys()) {
        EXPECT_TRUE(values.contains(std::string(key))) << key;
    }
    EXPECT_EQ(parseProject(example, "wickfield.json").name, "Brook Delay");
}

}  // namespace
