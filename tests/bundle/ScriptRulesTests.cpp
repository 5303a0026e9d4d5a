#include <sys/socket.h>
#include <unistd.h>

#include "tests/bundle/CheckFixture.h"

namespace wickfield_bundle {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class CheckingScripts : public CheckFixture {
protected:
    const std::string script = "Contents/Resources/preinstall.sh";

    std::vector<Found> foundIn(const std::string& text) {
        write(script, text);
        return found(checkScripts);
    }
    std::string resource(const std::string& name) const { return "Contents/Resources/" + name; }
};

TEST_F(CheckingScripts, HasNothingToSayOfAGoodOne) {
    EXPECT_THAT(foundIn("#!/bin/bash\nset -e\necho \"$1\"\n"), IsEmpty());
    EXPECT_THAT(foundIn("#!/bin/sh\necho\n"), IsEmpty());
    EXPECT_THAT(foundIn("#!/usr/bin/env bash\necho\n"), IsEmpty());
    EXPECT_THAT(foundIn("echo\n"), IsEmpty());
}

TEST_F(CheckingScripts, HasNothingToSayWhereThereAreNone) { EXPECT_THAT(found(checkScripts), IsEmpty()); }

TEST_F(CheckingScripts, SaysWhereOneDoesNotParse) {
    EXPECT_THAT(foundIn("#!/bin/bash\nif then\nfi\n"), ElementsAre(Found{"script-syntax", script}));
    EXPECT_EQ(reason(checkScripts), "bash says: line 2: syntax error near unexpected token `then'");
}

TEST_F(CheckingScripts, FindsAHereDocumentWithoutAnEnd) {
    EXPECT_THAT(foundIn("#!/bin/bash\ncat <<END\ntext\n"), ElementsAre(Found{"script-syntax", script}));
    EXPECT_THAT(reason(checkScripts), HasSubstr("delimited by end-of-file"));
}

TEST_F(CheckingScripts, FindsOneThatCustomersMayNotRead) {
    write(script, "#!/bin/bash\necho\n", 0600);
    EXPECT_THAT(found(checkScripts), ElementsAre(Found{"mode-part-private", script}));
    EXPECT_EQ(reason(checkScripts),
              "Its mode is 0600: for other users of the computer the installation fails before it has begun.");
    if (::geteuid() == 0) {  // anybody else is told that it cannot be opened, too
        write(script, "#!/bin/bash\necho\n", 0044);
        EXPECT_THAT(found(checkScripts), ElementsAre(Found{"mode-part-unreadable", script}));
    }
}

TEST_F(CheckingScripts, NeverRunsOne) {
    write(script, "#!/bin/bash\ntouch '" + (around() / "ran") + "'\n");
    found(checkScripts);
    EXPECT_FALSE(std::filesystem::exists(around() / "ran"));
}

TEST_F(CheckingScripts, ParsesOneWhateverItsNameHas) {
    const std::filesystem::path odd = around() / "odd \n'$(x) -n.app";
    write(script, "if\n");
    std::filesystem::rename(bundle(), odd);
    const platform::ScopedHost scope(platform::linux_host::services());
    Findings findings;
    checkScripts(lookAt(odd), findings);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings.front().rule, "script-syntax");
}

TEST_F(CheckingScripts, CallsTheLineEndsOfWindowsAnError) {
    EXPECT_THAT(foundIn("#!/bin/bash\necho a\r\nif true; then\r\nfi\r\n"), ElementsAre(Found{"script-crlf", script}));
    EXPECT_EQ(reason(checkScripts), "The first line that ends so is line 2.");
}

TEST_F(CheckingScripts, WarnsOfALastLineThatIsNotEnded) {
    EXPECT_THAT(foundIn("#!/bin/bash\necho a"), ElementsAre(Found{"script-line-end", script}));
}

TEST_F(CheckingScripts, CallsOtherLanguagesAnError) {
    EXPECT_THAT(foundIn("#!/usr/bin/python3\nprint(1)\n"), ElementsAre(Found{"script-language", script}));
    EXPECT_EQ(reason(checkScripts), "It asks for /usr/bin/python3.");
    EXPECT_THAT(foundIn("#! /usr/bin/env -S LANG=C ruby -w\nputs 1\n"), ElementsAre(Found{"script-language", script}));
    EXPECT_EQ(reason(checkScripts), "It asks for ruby.");
    EXPECT_THAT(foundIn("#!/usr/bin/fish\nset x 1\n"), ElementsAre(Found{"script-language", script}));
}

TEST_F(CheckingScripts, WarnsOfOtherShells) {
    EXPECT_THAT(foundIn("#!/bin/zsh\necho a\n"), ElementsAre(Found{"script-shell", script}));
    EXPECT_THAT(foundIn("#!/usr/bin/env ksh\necho a\n"), ElementsAre(Found{"script-shell", script}));
    EXPECT_THAT(foundIn("#!/opt/homebrew/bin/bash\necho a\n"), ElementsAre(Found{"script-shell", script}));
}

TEST_F(CheckingScripts, WarnsOfOptionsThatItIsRunWithout) {
    for (const char* line : {"#!/bin/bash -e", "#! /bin/sh -eu", "#!/usr/bin/env -S bash -x"}) {
        EXPECT_THAT(foundIn(line + std::string("\necho\n")), ElementsAre(Found{"script-options", script})) << line;
    }
    EXPECT_THAT(reason(checkScripts), HasSubstr("-x"));
    EXPECT_THAT(foundIn("#!/bin/sh -\necho\n"), IsEmpty());
}

TEST_F(CheckingScripts, WarnsOfWhatTheBashOfAMacDoesNotKnow) {
    EXPECT_THAT(foundIn("#!/bin/bash\ndeclare -A x\n"), ElementsAre(Found{"script-bash-4", script}));
    EXPECT_EQ(reason(checkScripts), "Line 2 has \"declare -A\".");
}

TEST_F(CheckingScripts, WarnsOfOnesThatDoNothing) {
    EXPECT_THAT(foundIn(""), ElementsAre(Found{"script-empty", script}));
    EXPECT_THAT(foundIn("#!/bin/bash\n\n  # nothing yet"), ElementsAre(Found{"script-empty", script}));
}

TEST_F(CheckingScripts, WarnsOfOtherEncodings) {
    EXPECT_THAT(foundIn("\xEF\xBB\xBF#!/bin/bash\necho\n"), ElementsAre(Found{"script-encoding", script}));
    EXPECT_THAT(foundIn("#!/bin/bash\necho gr\xFC\xDF\n"), ElementsAre(Found{"script-encoding", script}));
}

TEST_F(CheckingScripts, FindsTextOfWindowsInTwoBytesUnreadable) {
    const std::string text = "echo hello\n";
    std::string wide = "\xFF\xFE";
    for (const char c : text) {
        wide += std::string{c, '\0'};
    }
    EXPECT_THAT(foundIn(wide), testing::Contains(Found{"script-encoding", script}));
}

TEST_F(CheckingScripts, WarnsOfOnesThatAnotherHides) {
    write(resource("preinstall.swift"), "print(1)\n");
    write(script, "if\n");
    EXPECT_THAT(found(checkScripts), UnorderedElementsAre(Found{"script-swift", resource("preinstall.swift")},
                                                          Found{"script-hidden", script}));
}

TEST_F(CheckingScripts, WarnsOfLanguagesThatFewCustomersHave) {
    write(resource("preinstall.scpt"), "beep\n");
    write(resource("postinstall.swift"), "print(1)\n");
    EXPECT_THAT(found(checkScripts), UnorderedElementsAre(Found{"script-one-host", resource("preinstall.scpt")},
                                                          Found{"script-swift", resource("postinstall.swift")}));
}

TEST_F(CheckingScripts, NamesThoseThatRunOnlyWhereCaseDoesNotCount) {
    write(resource("PreInstall.sh"));
    write(resource("postinstall.SH"));
    EXPECT_THAT(found(checkScripts), UnorderedElementsAre(Found{"script-name-case", resource("PreInstall.sh")},
                                                          Found{"script-name-case", resource("postinstall.SH")}));
}

TEST_F(CheckingScripts, NamesThoseThatAreNeverRun) {
    for (const char* name : {"preinstall", "preinstall.py", "post-install.sh", "PRE_INSTALL.command",
                             "postinstall.sh.txt", "Scripts/preinstall.sh", "en.lproj/postinstall.scpt"}) {
        write(resource(name));
        EXPECT_THAT(found(checkScripts), ElementsAre(Found{"script-never-run", resource(name)}));
        std::filesystem::remove(bundle() + "/" + resource(name));
    }
}

TEST_F(CheckingScripts, HasNothingToSayOfFilesThatScriptsUse) {
    write(resource("preinstall.txt"));
    write(resource("postinstall.plist"));
    write(resource("preinstaller.sh"));
    write(inTree("Library/Echo/preinstall.py"));
    EXPECT_THAT(found(checkScripts), IsEmpty());
}

TEST_F(CheckingScripts, FindsNoFileInAFolder) {
    folder(script);
    EXPECT_THAT(found(checkScripts), ElementsAre(Found{"script-not-a-file", script}));
}

TEST_F(CheckingScripts, WaitsForNoPipe) {
    ASSERT_EQ(::mkfifo((bundle() + "/" + script).c_str(), 0644), 0);
    EXPECT_THAT(found(checkScripts), ElementsAre(Found{"script-not-a-file", script}));
}

TEST_F(CheckingScripts, FollowsALinkToTheScript) {
    write(resource("before.sh"), "if\n");
    link(script, "before.sh");
    EXPECT_THAT(found(checkScripts), ElementsAre(Found{"script-syntax", script}));
}

TEST_F(CheckingScripts, LooksAtTheBeginningOfAHugeOne) {
    write(script, "#!/bin/bash\necho\n");
    std::filesystem::resize_file(bundle() + "/" + script, std::uintmax_t{1} << 40U);
    EXPECT_THAT(found(checkScripts), ElementsAre(Found{"script-line-end", script}, Found{"not-checked", script}));
}

// A host that has no programs to run.
class NoPrograms : public platform::Processes {
public:
    std::shared_ptr<platform::Process> make(platform::ProcessOptions options) override {
        options.path = "/nowhere/" + options.path;
        return m_real.processes->make(std::move(options));
    }
    std::string locateTool(const std::string& path) override { return path; }

private:
    platform::Host m_real = platform::linux_host::services();
};

TEST_F(CheckingScripts, SaysThatOneWasNotParsedWhereThereIsNoBash) {
    write(script, "if\n");
    NoPrograms none;
    platform::Host host = platform::linux_host::services();
    host.processes = &none;
    const platform::ScopedHost scope(host);
    Findings findings;
    checkScripts(lookAt(bundle()), findings);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings.front().rule, "not-checked");
    EXPECT_THAT(findings.front().reason, HasSubstr("/bin/bash"));
}

}  // namespace
}  // namespace wickfield_bundle
