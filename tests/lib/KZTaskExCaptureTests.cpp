#include <new>
#include <thread>

#include "tests/lib/TaskFixture.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::StartsWith;

class CapturingATool : public TaskFixture {
protected:
    static std::optional<std::string> data(const std::string& text, LogOutput output = LogOutput::yes,
                                           LogError error = LogError::yes) {
        return KZTaskEx::dataFromTask("/bin/bash", script(text), nullptr, std::nullopt, output, error);
    }
};

TEST_F(CapturingATool, GivesItsOutput) { EXPECT_EQ(data("echo out"), "out\n"); }

TEST_F(CapturingATool, GivesItsErrorTextWhenThereIsNoOutput) { EXPECT_EQ(data("echo error >&2"), "error\n"); }

TEST_F(CapturingATool, GivesOnlyTheOutputWhenThereAreBoth) { EXPECT_EQ(data("echo error >&2; echo out"), "out\n"); }

TEST_F(CapturingATool, GivesEmptyDataWhenNothingIsPrinted) { EXPECT_EQ(data("exit 1"), ""); }

TEST_F(CapturingATool, KeepsEveryByte) {
    EXPECT_EQ(KZTaskEx::dataFromTask("/usr/bin/printf", {"a\\0b\\377\\n\\n"}, nullptr), std::string("a\0b\xff\n\n", 6));
}

TEST_F(CapturingATool, GivesNoneForAMissingTool) {
    EXPECT_EQ(KZTaskEx::dataFromTask("/no/such/tool", {}, nullptr), std::nullopt);
    EXPECT_THAT(newLogEntries(), ElementsAre("Error: /no/such/tool is not executable"));
}

TEST_F(CapturingATool, GivesNoneForAFileWithoutTheExecutableBit) {
    const auto file = add("file", "#!/bin/bash\n", false);
    EXPECT_EQ(KZTaskEx::dataFromTask(file, {}, nullptr), std::nullopt);
    EXPECT_THAT(newLogEntries(), ElementsAre("Error: " + file + " is not executable"));
}

TEST_F(CapturingATool, GivesNoneForAPackage) {
    workspace.packages.insert("/bin/true");
    EXPECT_EQ(KZTaskEx::dataFromTask("/bin/true", {}, nullptr), std::nullopt);
}

TEST_F(CapturingATool, GivesNoneAndPrintsWhyWhenItCannotBeStarted) {
    const auto file = add("file", "#!/no/such/interpreter\n");
    EXPECT_EQ(KZTaskEx::dataFromTask(file, {}, nullptr), std::nullopt);
    EXPECT_THAT(newLogEntries(), ElementsAre(StartsWith("Exception running task " + file + ": ")));
    EXPECT_THAT(newPrint(), StartsWith("Exception running task "));
}

TEST_F(CapturingATool, ReplacesTheWholeEnvironment) {
    const KZTaskEx::Environment environment{{"ONLY", "this"}};
    EXPECT_EQ(KZTaskEx::dataFromTask("/usr/bin/env", {}, nullptr, environment), "ONLY=this\n");
}

TEST_F(CapturingATool, LetsTheOutputThroughWhenItIsNotCaptured) {
    EXPECT_EQ(data("echo out; echo error >&2", LogOutput::no), "error\n");
    EXPECT_EQ(newPrint(), "out\n");
}

TEST_F(CapturingATool, DropsTheErrorTextWhenItIsNotCaptured) {
    EXPECT_EQ(data("echo error >&2", LogOutput::yes, LogError::no), "");
    EXPECT_EQ(data("echo error >&2; echo out", LogOutput::yes, LogError::no), "out\n");
}

TEST_F(CapturingATool, KeepsTheErrorTextOffTheProgramsOwnErrorStreamToo) {
    testing::internal::CaptureStderr();
    data("echo error >&2", LogOutput::yes, LogError::no);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(CapturingATool, ReturnsWithoutWaitingWhenNothingIsCaptured) {
    const auto start = Clock::now();
    EXPECT_EQ(data("sleep 2 >/dev/null", LogOutput::no, LogError::no), "");
    EXPECT_LT(Clock::now() - start, 1900ms);
}

TEST_F(CapturingATool, ReturnsWhenTheStreamsEndThoughTheToolGoesOn) {
    const auto start = Clock::now();
    EXPECT_EQ(data("echo out; exec >&- 2>&-; sleep 3"), "out\n");
    EXPECT_LT(Clock::now() - start, 2900ms);
}

TEST_F(CapturingATool, WaitsForASubtaskThatKeepsTheOutput) {
    EXPECT_EQ(data("(sleep 0.3; echo late) & echo early"), "early\nlate\n");
}

TEST_F(CapturingATool, IsNotStalledByAFloodOnEitherStream) {
    const auto result = data("head -c 3000000 /dev/zero >&2; head -c 3000000 /dev/zero; head -c 3000000 /dev/zero >&2");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->size(), 3000000U);
}

TEST_F(CapturingATool, GivesAllOfALargeOutput) {
    const auto result = KZTaskEx::dataFromTask("/usr/bin/head", {"-c", "67108864", "/dev/zero"}, nullptr);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->size(), 67108864U);
    EXPECT_EQ(result->find_first_not_of('\0'), std::string::npos);
}

TEST_F(CapturingATool, ShowsItAnOpenAndEmptyInput) {
    EXPECT_EQ(data("read -t 0.2 line; (( $? > 128 )) && echo waited"), "waited\n");
}

TEST_F(CapturingATool, GivesNoneWhenTheOutputDoesNotFitIntoMemory) {
    class Flood : public fakes::FakeProcess {
    public:
        using FakeProcess::FakeProcess;
        Chunk readAvailable(std::string&, std::string&, std::optional<std::chrono::milliseconds>) override {
            throw std::bad_alloc();
        }
    };
    class Floods : public fakes::FakeProcesses {
    public:
        std::shared_ptr<platform::Process> make(platform::ProcessOptions options) override {
            return std::make_shared<Flood>(std::move(options), fakes::FakeTool{});
        }
    };
    Floods floods;
    const platform::ScopedHost flooded(with(floods));
    EXPECT_EQ(KZTaskEx::dataFromTask("/bin/true", {}, nullptr), std::nullopt);
    EXPECT_THAT(newLogEntries(), ElementsAre(StartsWith("Exception running task /bin/true: ")));
}

class TextFromATool : public TaskFixture {};

TEST_F(TextFromATool, IsASCIIWhenNoEncodingIsGiven) {
    EXPECT_EQ(KZTaskEx::stringFromTask("/bin/echo", {"text"}), "text\n");
    EXPECT_EQ(KZTaskEx::stringFromTask("/bin/echo", {"te\xc3\xa9xt"}), std::nullopt);
    EXPECT_EQ(KZTaskEx::stringFromTask("/bin/echo", {"te\xc3\xa9xt"}, Seconds{60.0}), std::nullopt);
}

TEST_F(TextFromATool, TakesTheEncoding) {
    EXPECT_EQ(KZTaskEx::stringFromTask("/bin/echo", {"-n", "\xc3\xa9"}, StringEncoding::utf8, nullptr), "\xc3\xa9");
    EXPECT_EQ(KZTaskEx::stringFromTask("/bin/echo", {"-n", "\xe9"}, StringEncoding::isoLatin1, Seconds{60.0}),
              "\xc3\xa9");
}

TEST_F(TextFromATool, IsNoneWhenItIsNotInTheEncoding) {
    EXPECT_EQ(KZTaskEx::stringFromTask("/bin/echo", {"\xff"}, StringEncoding::utf8, nullptr), std::nullopt);
}

TEST_F(TextFromATool, IsEmptyWhenNothingIsPrinted) { EXPECT_EQ(KZTaskEx::stringFromTask("/bin/true", {}), ""); }

TEST_F(TextFromATool, IsEmptyForAToolThatIsRefused) {
    EXPECT_EQ(KZTaskEx::stringFromTask("/no/such/tool", {}), "");
    EXPECT_EQ(KZTaskEx::stringFromTask("/no/such/tool", {}, Seconds{60.0}), "");
    EXPECT_THAT(newLogEntries(), testing::SizeIs(2));
}

TEST_F(TextFromATool, FollowsTheCaptureFlags) {
    EXPECT_EQ(KZTaskEx::stringFromTask("/bin/bash", script("echo error >&2"), StringEncoding::ascii, Seconds{60.0},
                                       LogOutput::yes, LogError::no),
              "");
    EXPECT_EQ(KZTaskEx::stringFromTask("/bin/bash", script("echo error >&2"), StringEncoding::ascii, Seconds{60.0},
                                       LogOutput::yes, LogError::yes),
              "error\n");
}

}  // namespace
