#include <gtest/gtest.h>

#include <algorithm>

#include "HostUnderTest.h"
#include "tests/fakes/FakeStandardFolders.h"

namespace {

using platform::FolderDomain;
using platform::FolderKind;

// What every host's standard folders promise.
class StandardFoldersContract : public testing::TestWithParam<bool> {
protected:
    StandardFoldersContract() {
        m_fake.paths[{FolderKind::library, FolderDomain::user}] = {"/home/ada/Library"};
        m_fake.paths[{FolderKind::library, FolderDomain::local}] = {"/Library"};
        m_fake.paths[{FolderKind::library, FolderDomain::system}] = {"/System/Library"};
        m_fake.cache = "/home/ada/.cache";
    }
    platform::StandardFolders& folders() { return GetParam() ? *host_under_test::services().folders : m_fake; }

private:
    fakes::FakeStandardFolders m_fake;
};

TEST_P(StandardFoldersContract, HasALibraryInEveryDomain) {
    for (const auto domain : {FolderDomain::user, FolderDomain::local, FolderDomain::system}) {
        EXPECT_FALSE(folders().searchPaths(FolderKind::library, domain).empty());
    }
}

TEST_P(StandardFoldersContract, GivesAbsolutePathsWithoutATrailingSlash) {
    for (const auto domain : {FolderDomain::user, FolderDomain::local, FolderDomain::system}) {
        for (int kind = 1; kind < 20; ++kind) {
            for (const auto& path : folders().searchPaths(static_cast<FolderKind>(kind), domain)) {
                EXPECT_TRUE(path.starts_with('/') && !path.ends_with('/')) << path;
            }
        }
    }
}

TEST_P(StandardFoldersContract, HasNoDocumentsOfTheMachine) {
    for (const auto kind : {FolderKind::documents, FolderKind::desktop, FolderKind::movies}) {
        EXPECT_TRUE(folders().searchPaths(kind, FolderDomain::local).empty());
    }
}

TEST_P(StandardFoldersContract, HasATemporaryFolder) { EXPECT_TRUE(folders().temporaryFolder().starts_with('/')); }

TEST_P(StandardFoldersContract, HasACacheFolderOfTheSystem) {
    EXPECT_TRUE(folders().userCacheFolder().value_or("").starts_with('/'));
}

INSTANTIATE_TEST_SUITE_P(Hosts, StandardFoldersContract, testing::Bool(),
                         [](const auto& tested) { return tested.param ? host_under_test::name : "Fake"; });

}  // namespace
