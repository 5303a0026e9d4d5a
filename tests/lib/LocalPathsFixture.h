// The folders of a user and of the machine, from fakes.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>

#include "lib/KZLocalPaths.h"
#include "platform/ports/Host.h"
#include "tests/fakes/FakeIdentity.h"
#include "tests/fakes/FakeStandardFolders.h"
#include "tests/fakes/FakeSystemInfo.h"

class LocalPathsTest : public testing::Test {
protected:
    using FolderDomain = platform::FolderDomain;
    using FolderKind = platform::FolderKind;

    LocalPathsTest() { setUserFoldersBelow("/home/ada"); }

    void setUserFoldersBelow(const std::string& home) {
        const auto set = [this](FolderKind kind, FolderDomain domain, std::string path) {
            m_folders.paths[{kind, domain}] = {std::move(path)};
        };
        for (const auto domain : {FolderDomain::user, FolderDomain::local}) {
            const std::string root = domain == FolderDomain::user ? home : "";
            set(FolderKind::applications, domain, root + "/Applications");
            set(FolderKind::adminApplications, domain, root + "/Applications/Utilities");
            set(FolderKind::library, domain, root + "/Library");
            set(FolderKind::documentation, domain, root + "/Library/Documentation");
            set(FolderKind::caches, domain, root + "/Library/Caches");
            set(FolderKind::applicationSupport, domain, root + "/Library/Application Support");
        }
        set(FolderKind::documents, FolderDomain::user, home + "/Documents");
        set(FolderKind::desktop, FolderDomain::user, home + "/Desktop");
        set(FolderKind::movies, FolderDomain::user, home + "/Movies");
        set(FolderKind::library, FolderDomain::system, "/System/Library");
    }

    void setUserLibrary(const std::string& path) {
        m_folders.paths[{FolderKind::library, FolderDomain::user}] = {path};
    }

    // Grace is at the console.
    void becomeSuperuser(const std::string& rootHome = "/var/root") {
        m_identity.uid = 0;
        m_identity.name = "root";
        m_identity.home = rootHome;
        m_identity.console = "grace";
        m_identity.homes["grace"] = "/home/grace";
        m_identity.homes["root"] = rootHome;
        setUserFoldersBelow(rootHome);
    }

    fakes::FakeIdentity m_identity;
    fakes::FakeStandardFolders m_folders;
    fakes::FakeSystemInfo m_system;

private:
    platform::ScopedHost m_host{[this] {
        platform::Host host;
        host.identity = &m_identity;
        host.folders = &m_folders;
        host.system = &m_system;
        return host;
    }()};
};
