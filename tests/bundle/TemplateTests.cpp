#include "tools/wickfield-bundle/create/Template.h"

#include "tests/bundle/CreateFixture.h"
#include "tests/fakes/FakeMainBundle.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using wickfield_bundle::chooseTemplates;
using wickfield_bundle::CreateFailure;

class Templates : public CreateFixture {
protected:
    std::string makeTemplate(const std::string& name, const std::string& folder) {
        write(name + "/Contents/" + folder + "/Wickfield", "#!/bin/sh\n", 0755);
        return place / name;
    }
    static std::string refusal(const wickfield_bundle::TemplateWishes& wishes) {
        try {
            chooseTemplates(wishes);
        } catch (const CreateFailure& failure) {
            return failure.what();
        }
        return "";
    }
};

TEST_F(Templates, AreForTheHostsWhoseFoldersTheyHave) {
    const auto forLinux = makeTemplate("L.app", "Linux");
    const auto forMac = makeTemplate("M.app", "MacOS");
    const auto found = chooseTemplates({.paths = {forLinux, forMac}, .hosts = {}});
    ASSERT_EQ(found.size(), 2U);
    EXPECT_THAT(found[0].hosts, ElementsAre("linux"));
    EXPECT_THAT(found[1].hosts, ElementsAre("macos"));
}

TEST_F(Templates, GiveOnlyThePartsForTheHostsThatAreWanted) {
    const auto both = makeTemplate("B.app", "Linux");
    makeTemplate("B.app", "MacOS");
    write("B.app/Contents/Resources/icon.icns");
    write("B.app/Contents/Info.plist", "{}");
    write("B.app/Contents/_CodeSignature/CodeResources");
    const auto found = chooseTemplates({.paths = {both}, .hosts = {"macos"}});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_THAT(found[0].parts, ElementsAre("MacOS", "Resources/icon.icns"));
}

TEST_F(Templates, ThatNoWantedHostNeedsAreLeftOut) {
    const auto forLinux = makeTemplate("L.app", "Linux");
    const auto forMac = makeTemplate("M.app", "MacOS");
    EXPECT_EQ(chooseTemplates({.paths = {forLinux, forMac}, .hosts = {"macos"}}).size(), 1U);
}

TEST_F(Templates, AreMissedForAHostThatNoneIsFor) {
    const auto forLinux = makeTemplate("L.app", "Linux");
    EXPECT_THAT(refusal({.paths = {forLinux}, .hosts = {"linux", "macos"}}), HasSubstr("no template is for macos"));
    EXPECT_THAT(refusal({.paths = {forLinux}, .hosts = {"amiga"}}), HasSubstr("“amiga” is unknown"));
}

TEST_F(Templates, AreRefusedWhenTwoAreForOneHost) {
    EXPECT_THAT(refusal({.paths = {makeTemplate("L.app", "Linux"), makeTemplate("K.app", "Linux")}, .hosts = {}}),
                HasSubstr("two templates are for linux"));
}

TEST_F(Templates, AreRefusedWhenTheyAreSomethingElse) {
    EXPECT_THAT(refusal({.paths = {makeFolder("empty.app")}, .hosts = {}}), HasSubstr("is no template"));
    EXPECT_THAT(refusal({.paths = {place / "none.app"}, .hosts = {}}), HasSubstr("is no template"));
    const auto installer = makeTemplate("I.app", "Linux");
    makeFolder("I.app/Contents/Resources/PluginStructure");
    EXPECT_THAT(refusal({.paths = {installer}, .hosts = {}}), HasSubstr("is an installer already"));
}

TEST_F(Templates, AreRefusedWithoutAProgramThatCanBeExecuted) {
    makeFolder("L.app/Contents/Linux");
    EXPECT_THAT(refusal({.paths = {place / "L.app"}, .hosts = {}}), HasSubstr("is not there or cannot be executed"));
    write("L.app/Contents/Linux/Wickfield", "#!/bin/sh\n", 0644);
    EXPECT_THAT(refusal({.paths = {place / "L.app"}, .hosts = {}}), HasSubstr("is not there or cannot be executed"));
}

TEST_F(Templates, SayByThemselvesWhatTheirProgramIsCalled) {
    write("P.app/Contents/MacOS/Setup", "#!/bin/sh\n", 0755);
    write("P.app/Contents/Info.plist", "{ CFBundleExecutable = Setup; NSPrincipalClass = NSApplication; }");
    const auto found = chooseTemplates({.paths = {place / "P.app"}, .hosts = {}});
    EXPECT_EQ(found[0].executable, "Setup");
    EXPECT_TRUE(found[0].information.contains("NSPrincipalClass"));
    EXPECT_THAT(refusal({.paths = {place / "P.app", makeTemplate("L.app", "Linux")}, .hosts = {}}),
                HasSubstr("different names"));
}

TEST_F(Templates, AreFoundFromWhereTheProgramLies) {
    makeTemplate("prefix/share/wickfield/templates/linux/Wickfield.app", "Linux");
    makeTemplate("prefix/share/wickfield/templates/macos/Wickfield.app", "MacOS");
    makeFolder("prefix/bin");
    fakes::FakeMainBundle bundle;
    bundle.executable = place / "prefix/bin/wickfield-bundle";
    auto services = platform::linux_host::services();
    services.bundle = &bundle;
    const platform::ScopedHost installed(services);
    EXPECT_EQ(chooseTemplates({}).size(), 2U);
    std::filesystem::remove_all(place / "prefix/share");
    EXPECT_THAT(refusal({}), HasSubstr("there is no template at"));
}

}  // namespace
