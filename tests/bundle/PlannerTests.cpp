#include "tools/wickfield-bundle/show/Planner.h"

#include <sys/stat.h>
#include <unistd.h>

#include "tests/bundle/PlannerFixture.h"
#include "tests/fakes/FailingFileManager.h"
#include "tests/fakes/FakeProcesses.h"
#include "tests/fakes/FakeWorkspace.h"

namespace {

using namespace std::string_literals;
using wickfield_bundle::ItemKind;
using wickfield_bundle::NoInstaller;

class Planning : public PlannerFixture {};

TEST_F(Planning, NamesEverySourceAndWhereItGoes) {
    write(inTree("a/one"), "1");
    write(tree() + "/Users/user/Documents/two", "22");
    const auto items = plan().items;
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].source, "Contents/Resources/PluginStructure/Users/user/Documents/two");
    EXPECT_EQ(items[0].destination, home + "/Dokumente/two");
    EXPECT_EQ(items[1].destination, target("a/one"));
    EXPECT_EQ(items[1].bytes, 1U);
}

TEST_F(Planning, TellsWhoseInstallerItIs) {
    EXPECT_EQ(plan().name + "|" + plan().version + "|" + plan().author, "Plug|1|by Ada");
    EXPECT_EQ(plan().home, home);
}

TEST_F(Planning, FindsWhatIsNewAndWhatIsReplaced) {
    write(inTree("new"), "1");
    write(inTree("old"), "1");
    write(target("old"), "stands there");
    EXPECT_EQ(stateFor(target("new")), "new");
    EXPECT_EQ(stateFor(target("old")), "replaced");
}

TEST_F(Planning, NamesTheFoldersThatAreMade) {
    write(inTree("a/b/one"), "1");
    fs::create_directories(target(""));
    EXPECT_EQ(plan().folders, (std::vector<std::string>{target("a"), target("a/b")}));
}

TEST_F(Planning, SaysThatAFolderGoesToTheTrashWithAllThatLiesInIt) {
    write(inTree("thing"), "file");
    write(target("thing/inside"), "old");
    EXPECT_EQ(stateFor(target("thing")), "replaced");
    EXPECT_NE(planFor(target("thing")).reason.find("all that lies in it"), std::string::npos);
}

TEST_F(Planning, TakesAPackageAsOneItemAndCountsWhatLiesInIt) {
    write(inTree("P.vst3/Contents/a"), "12345");
    write(inTree("P.vst3/Contents/.b"), "123");
    const auto item = planFor(target("P.vst3"));
    EXPECT_EQ(item.kind, ItemKind::package);
    EXPECT_EQ(item.files, 2U);
    EXPECT_EQ(item.bytes, 8U);
}

TEST_F(Planning, NamesWhatIsPassedOver) {
    write(inTree(".DS_Store"), "");
    EXPECT_TRUE(plan().items.empty());
    EXPECT_EQ(plan().passedOver, std::vector<std::string>{"Contents/Resources/PluginStructure" + target(".DS_Store")});
}

TEST_F(Planning, NamesTheScriptsAndTheirInterpreters) {
    addResource("preinstall.sh", "");
    addResource("postinstall.scpt", "");
    const auto result = plan();
    EXPECT_EQ(result.before->source + " by " + result.before->interpreter,
              "Contents/Resources/preinstall.sh by /bin/bash");
    EXPECT_TRUE(result.before->canRun);
    EXPECT_EQ(result.after->canRun, fs::exists("/usr/bin/osascript"));
}

TEST_F(Planning, RefusesThePlaceholderOfNobody) {
    identity.uid = 0;  // with nobody at the console
    write(tree() + "/Users/user/one", "1");
    const auto items = plan().items;
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].destination, std::nullopt);
    EXPECT_EQ(stateOf(items[0]), "refused");
    EXPECT_EQ(plan().home, std::nullopt);
}

TEST_F(Planning, RefusesWhatLiesBelowSomethingThatIsNoFolder) {
    write(inTree("a/b/one"), "1");
    write(target("a"), "a file");
    EXPECT_EQ(stateFor(target("a/b/one")), "refused");
    EXPECT_EQ(planFor(target("a/b/one")).reason, target("a") + " is no folder");
}

TEST_F(Planning, RefusesWhatLiesBelowALinkThatLeadsNowhere) {
    write(inTree("a/one"), "1");
    fs::create_directories(target(""));
    fs::create_symlink("nowhere", target("a"));
    EXPECT_EQ(planFor(target("a/one")).reason, target("a") + " is a link that leads nowhere");
}

TEST_F(Planning, FollowsALinkToAFolder) {
    write(inTree("a/one"), "1");
    write(target("real/one"), "old");
    fs::create_directory_symlink("real", target("a"));
    EXPECT_EQ(stateFor(target("a/one")), "replaced");
}

TEST_F(Planning, RefusesAPathThatIsTooLong) {
    identity.home = disk / std::string(200, 'h');
    for (int level = 0; level < 19; ++level) {
        identity.home += "/" + std::string(200, 'h');
    }
    folders.paths[{platform::FolderKind::documents, platform::FolderDomain::user}] = {identity.home};
    write(tree() + "/Users/user/Documents/" + std::string(200, 'd') + "/one", "1");
    const auto items = plan().items;
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].reason, "the path is too long");
}

TEST_F(Planning, RefusesAVolumeThatIsNotThere) {
    write(tree() + "/Volumes/Wickfield No Such Volume/a/one", "1");
    EXPECT_EQ(planFor("/Volumes/Wickfield No Such Volume/a/one").reason, "its volume is not there");
}

TEST_F(Planning, RefusesToReplaceTheHomeFolder) {
    write(tree() + "/Users/user", "a file");
    EXPECT_EQ(stateFor(home), "refused");
}

TEST_F(Planning, DoesNotKnowWhereAFileAtTheTreesTopGoes) {
    write(tree() + "/bare", "1");
    EXPECT_EQ(stateFor("bare").substr(0, 7), "unknown");
}

TEST_F(Planning, RefusesALinkThatLeadsNowhere) {
    fs::create_directories(inTree(""));
    fs::create_symlink("nowhere", inTree("link"));
    EXPECT_EQ(stateFor(target("link")), "refused");
    EXPECT_NE(planFor(target("link")).reason.find("10 seconds"), std::string::npos);
}

TEST_F(Planning, TakesALinkToWhatStandsOnTheDisk) {
    write(target("there"), "stands there");
    fs::create_directories(inTree(""));
    fs::create_symlink("there", inTree("link"));
    fs::create_symlink(target("there"), inTree("absolute"));
    EXPECT_EQ(stateFor(target("link")), "new");
    EXPECT_EQ(stateFor(target("absolute")), "new");
}

TEST_F(Planning, TakesALinkIntoAFolderThatTheInstallationMakes) {
    write(inTree("a/one"), "1");
    fs::create_directory_symlink("..", inTree("a/loop"));
    EXPECT_EQ(stateFor(target("a/loop")), "new");
    EXPECT_EQ(planFor(target("a/loop")).kind, ItemKind::link);
}

TEST_F(Planning, SaysThatWhatALinkLeadsToComesLater) {
    write(inTree("one"), "1");
    write(inTree("two"), "2");
    const auto names = *platform::host().files->contentsOfDirectory(inTree(""));
    const std::string& early = names[0].name;
    const std::string& late = names[1].name;
    fs::remove(inTree(early));
    fs::create_symlink(late, inTree(early));
    if (platform::host().files->contentsOfDirectory(inTree(""))->front().name != early) {
        GTEST_SKIP() << "this file system lists a folder in the order of its changes";
    }
    EXPECT_EQ(stateFor(target(early)), "refused");
    EXPECT_NE(planFor(target(early)).reason.find("later"), std::string::npos);
}

TEST_F(Planning, SaysThatASecondItemReplacesTheFirst) {
    write(tree() + home + "/one", "1");
    write(tree() + "/Users/user/one", "2");
    const auto items = plan().items;
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].destination, items[1].destination);
    EXPECT_NE(stateOf(items[0]), stateOf(items[1]));
}

TEST_F(Planning, RefusesWhatLiesBelowAFileThatIsPutThereBefore) {
    write(tree() + home + "/one", "1");
    write(tree() + "/Users/user/one/below", "2");
    const auto below = planFor(home + "/one/below");
    const auto above = planFor(home + "/one");
    // In which order the two come is the file system's affair; they do not get along in either.
    EXPECT_TRUE(stateOf(below) == "refused" || stateOf(above) == "replaced") << below.reason << above.reason;
}

TEST_F(Planning, KnowsWhatStandsInAPackageThatIsPutThereBefore) {
    identity.home = disk / "Home.vst3";
    write(tree() + identity.home + "/one", "1");
    write(tree() + "/Users/user/one", "2");
    const std::string package = stateFor(identity.home);
    const std::string within = stateFor(identity.home + "/one");
    // In which order the two come is the file system's affair: the later one replaces.
    EXPECT_TRUE((package == "new" && within == "replaced") || (package == "replaced" && within == "new"))
        << package << ", " << within;
}

TEST_F(Planning, SaysThatAPipeNeedsAnAdministratorsCopy) {
    fs::create_directories(inTree("P.vst3"));
    ASSERT_EQ(::mkfifo(inTree("pipe").c_str(), 0600), 0);
    ASSERT_EQ(::mkfifo(inTree("P.vst3/pipe").c_str(), 0600), 0);
    EXPECT_EQ(stateFor(target("pipe")), "new, administrator");
    EXPECT_EQ(stateFor(target("P.vst3")), "new, administrator");
}

TEST_F(Planning, OverwritesALinkThatLeadsNowhere) {
    write(inTree("one"), "1");
    write(inTree("P.vst3/a"), "1");
    fs::create_directories(target(""));
    fs::create_symlink("nowhere", target("one"));
    fs::create_symlink("nowhere", target("P.vst3"));
    EXPECT_EQ(stateFor(target("one")), "replaced, administrator");
    EXPECT_EQ(stateFor(target("P.vst3")), "refused");
}

TEST_F(Planning, AsksAnAdministratorForAFolderThatTheUserMayNotChange) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may write everywhere";
    }
    write(inTree("closed/one"), "1");
    write(inTree("closed/below/two"), "1");
    write(inTree("closed/old"), "1");
    write(target("closed/old"), "stands there");
    ::chmod(target("closed").c_str(), 0555);
    EXPECT_EQ(stateFor(target("closed/one")), "new, administrator");
    EXPECT_EQ(stateFor(target("closed/below/two")), "new, administrator");
    EXPECT_EQ(stateFor(target("closed/old")), "replaced, administrator");
    ::chmod(target("closed").c_str(), 0755);
}

TEST_F(Planning, RefusesAFolderThatTheUserMayNotEnter) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may enter everything";
    }
    write(inTree("closed/one"), "1");
    fs::create_directories(target("closed"));
    ::chmod(target("closed").c_str(), 0600);
    EXPECT_EQ(planFor(target("closed/one")).reason, "this user may not enter the folder " + target("closed"));
    ::chmod(target("closed").c_str(), 0755);
}

TEST_F(Planning, AsksAnAdministratorForASourceThatTheUserMayNotRead) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may read everything";
    }
    write(inTree("secret"), "1");
    write(inTree("P.vst3/Contents/secret"), "1");
    ::chmod(inTree("secret").c_str(), 0);
    ::chmod(inTree("P.vst3/Contents/secret").c_str(), 0);
    EXPECT_EQ(stateFor(target("secret")), "new, administrator");
    EXPECT_EQ(planFor(target("P.vst3")).reason, "only an administrator may read Contents/secret in it");
}

TEST_F(Planning, AsksAnAdministratorForTheDateOfWhatIsReadOnly) {
    write(inTree("read-only"), "1");
    write(inTree("P.vst3/x"), "1");
    write(inTree("Q.vst3/read-only"), "1");
    ::chmod(inTree("read-only").c_str(), 0444);
    ::chmod(inTree("P.vst3").c_str(), 0555);
    ::chmod(inTree("Q.vst3/read-only").c_str(), 0444);
    EXPECT_EQ(stateFor(target("read-only")), "new, administrator");
    EXPECT_EQ(stateFor(target("P.vst3")), "new, administrator");
    EXPECT_EQ(stateFor(target("Q.vst3")), "new");
    EXPECT_NE(planFor(target("read-only")).reason.find("fresh date"), std::string::npos);
    identity.uid = 0;  // who is never asked
    EXPECT_EQ(stateFor(target("read-only")), "new");
    ::chmod(inTree("P.vst3").c_str(), 0755);
}

TEST_F(Planning, AsksAnAdministratorForTheDateOfWhatALinkLeadsTo) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may write everything";
    }
    fs::create_directories(inTree(""));
    fs::create_symlink("/etc/passwd", inTree("link"));
    EXPECT_EQ(stateFor(target("link")), "new, administrator");
}

TEST_F(Planning, AsksAnAdministratorForWhatIsSomebodyElses) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may move everything";
    }
    write(inTree("folder"), "1");
    fs::create_directories(target("folder"));
    ::chmod(target("folder").c_str(), 0555);  // its entry ".." cannot be changed
    EXPECT_EQ(stateFor(target("folder")), "replaced, administrator");
    ::chmod(target("folder").c_str(), 0755);
}

TEST_F(Planning, OfWhatIsNoInstallerIsRefused) {
    const auto refusal = [&](const std::string& path) {
        try {
            wickfield_bundle::planInstallation(path);
            return "none"s;
        } catch (const NoInstaller& reason) {
            return std::string(reason.what());
        }
    };
    EXPECT_NE(refusal(disk / "nothing.app").find("nothing of this name"), std::string::npos);
    fs::remove_all(tree());
    EXPECT_NE(refusal(bundle.bundle).find("PluginStructure"), std::string::npos);
    fs::remove(bundle.resourcesFolder + "/InstallerSettings.plist");
    EXPECT_NE(refusal(bundle.bundle).find("InstallerSettings.plist"), std::string::npos);
}

TEST_F(Planning, OfUnreadableSettingsShowsWhatTheWindowWouldShow) {
    writeSettings("not a property list {{{");
    EXPECT_EQ(plan().name, "(null)");
}

TEST_F(Planning, EndsForATreeOfLinksThatHasNoEnd) {
    for (int level = 0; level < 40; ++level) {
        const std::string folder = tree() + "/" + std::to_string(level);
        fs::create_directories(folder);
        fs::create_directory_symlink("../" + std::to_string(level + 1), folder + "/a");
        fs::create_directory_symlink("../" + std::to_string(level + 1), folder + "/b");
    }
    EXPECT_THROW(plan(), std::runtime_error);
}

TEST_F(Planning, ChangesNothing) {
    using Operation = fakes::FailingFileManager::Operation;
    write(inTree("old"), "1");
    write(inTree("new/P.vst3/x"), "1");
    write(target("old"), "stands there");
    addResource("preinstall.sh", "touch '" + disk.path() + "/ran'");
    auto host = makeHost();
    fakes::FailingFileManager files(*host.files);
    fakes::FakeProcesses processes;
    fakes::FakeConsole silent;
    host.files = &files;
    host.processes = &processes;
    host.console = &silent;
    host.openFiles = nullptr;
    host.authorization = nullptr;
    const platform::ScopedHost inner(host);
    EXPECT_EQ(plan().items.size(), 2U);
    for (const auto& call : files.calls()) {
        const bool isChange =
            call.operation == Operation::removeItem || call.operation == Operation::createDirectory ||
            call.operation == Operation::copyItem || call.operation == Operation::moveItem ||
            call.operation == Operation::setImmutable || call.operation == Operation::setPermissions ||
            call.operation == Operation::setCreationDate || call.operation == Operation::setModificationDate ||
            call.operation == Operation::setExtendedAttribute || call.operation == Operation::setLabelNumber ||
            call.operation == Operation::writeAtomically || call.operation == Operation::openForAppending;
        EXPECT_FALSE(isChange) << call.path;
    }
    EXPECT_FALSE(files.calls().empty());
    EXPECT_TRUE(processes.made().empty());
}

}  // namespace
