// The superuser trashes items for a user who arranges his own folders as he likes, and at the worst moment.
#include <fcntl.h>
#include <sys/sysmacros.h>

#include <atomic>
#include <thread>

#include "platform/linux/services/workspace/Trash.h"
#include "tests/fakes/PrivateMounts.h"
#include "tests/linux/FilesFixture.h"

namespace {

using platform::linux_host::recycleItem;

constexpr uid_t userNumber = 1234;
constexpr gid_t groupNumber = 2345;

class TrashingForAUser : public FilesFixture {
protected:
    void SetUp() override {
        if (!isSuperuser()) {
            GTEST_SKIP() << "only the superuser acts for somebody else";
        }
        m_mounts.emplace();
        if (!m_mounts->fileSystemAt(at("disk")) || !m_mounts->fileSystemAt(at("far"))) {
            GTEST_SKIP() << "no right to mount a file system";
        }
        setMode(".", 0755);
        makeFolder("disk/home");
        giveToUser("disk/home");
        makeFolder("disk/place");
        makeFolder("disk/etc");
        write("disk/etc/shadow", "secret");
        setMode("disk/etc/shadow", 0600);
    }

    platform::Failure recycle(const std::string& name, const std::string& folder = "disk/place") const {
        return recycleItem(at(folder), name, {at("disk/home/.Trash"), at("disk/home/.local/share")});
    }
    void giveToUser(const std::string& name) const {
        ASSERT_EQ(::lchown(at(name).c_str(), userNumber, groupNumber), 0) << name;
    }
    void makeFolderOfUser(const std::string& name) const {
        makeFolder(name);
        giveToUser(name);
    }
    bool belongsToUser(const std::string& name) const {
        return status(name).st_uid == userNumber && status(name).st_gid == groupNumber;
    }
    bool belongsToSuperuser(const std::string& name) const { return status(name).st_uid == 0; }
    void expectNothingHappenedTo(const std::string& folder) const {
        EXPECT_EQ(names(folder), std::vector<std::string>{"shadow"});
        EXPECT_TRUE(belongsToSuperuser(folder));
        EXPECT_TRUE(belongsToSuperuser(folder + "/shadow"));
        EXPECT_EQ(read(folder + "/shadow"), "secret");
    }
    void exchange(const std::string& one, const std::string& other) const {
        (void)::renameat2(AT_FDCWD, at(one).c_str(), AT_FDCWD, at(other).c_str(), RENAME_EXCHANGE);
    }

    static constexpr const char* items = "disk/home/.local/share/Trash/files";
    static constexpr const char* notes = "disk/home/.local/share/Trash/info";
    static constexpr const char* lastResort = "disk/.Trash-1234/files";
    std::string item(const std::string& name) const { return std::string(items) + "/" + name; }

private:
    std::optional<PrivateMounts> m_mounts;
};

TEST_F(TrashingForAUser, MakesTheTrashAndItsNotesTheUsers) {
    write("disk/place/file", "x");
    EXPECT_FALSE(recycle("file"));
    const std::string note = std::string(notes) + "/file.trashinfo";
    for (const std::string& name : {std::string("disk/home/.local"), std::string("disk/home/.local/share"),
                                    std::string(items), std::string(notes), note, std::string("disk/home/.Trash")}) {
        EXPECT_TRUE(belongsToUser(name)) << name;
    }
    EXPECT_EQ(status(items).st_mode & 07777U, 0700U);
    EXPECT_EQ(status(notes).st_mode & 07777U, 0700U);
    EXPECT_EQ(status(note).st_mode & 07777U, 0600U);
    EXPECT_EQ(read("disk/home/.Trash/file"), "x");
}

TEST_F(TrashingForAUser, GivesHimTheFoldersSoThatHeCanEmptyTheTrash) {
    makeFolder("disk/place/folder/sub");
    makeFolder("disk/place/folder/colleague's");
    ASSERT_EQ(::lchown(at("disk/place/folder/colleague's").c_str(), 4321, 4321), 0);
    EXPECT_FALSE(recycle("folder"));
    EXPECT_TRUE(belongsToUser(item("folder")));
    EXPECT_TRUE(belongsToUser(item("folder/sub")));
    EXPECT_EQ(status(item("folder/colleague's")).st_uid, 4321U);
}

TEST_F(TrashingForAUser, GivesHimNoFileLinkPipeOrDevice) {
    makeFolder("disk/place/folder");
    write("disk/place/folder/file", "x");
    link("disk/place/folder/link", "../../etc");
    ASSERT_EQ(::mkfifo(at("disk/place/folder/pipe").c_str(), 0600), 0);
    const bool hasDevice = ::mknod(at("disk/place/folder/device").c_str(), S_IFBLK | 0600, makedev(7, 255)) == 0;
    std::filesystem::create_hard_link(at("disk/etc/shadow"), at("disk/place/folder/another-name"));
    EXPECT_FALSE(recycle("folder"));
    for (const char* name : {"file", "link", "pipe", "another-name"}) {
        EXPECT_TRUE(belongsToSuperuser(item("folder/") + name)) << name;
    }
    if (hasDevice) {
        EXPECT_TRUE(belongsToSuperuser(item("folder/device")));
    }
    expectNothingHappenedTo("disk/etc");
}

TEST_F(TrashingForAUser, GivesHimNoFileThatHasAnotherName) {
    std::filesystem::create_hard_link(at("disk/etc/shadow"), at("disk/place/settings"));
    EXPECT_FALSE(recycle("settings"));
    EXPECT_TRUE(isThere(item("settings")));
    expectNothingHappenedTo("disk/etc");
}

TEST_F(TrashingForAUser, TakesHisOwnFolderElsewhereForATrash) {
    makeFolderOfUser("disk/elsewhere");
    link("disk/home/.Trash", "../elsewhere");
    write("disk/place/file", "x");
    EXPECT_FALSE(recycle("file"));
    EXPECT_EQ(read("disk/elsewhere/file"), "x");
}

TEST_F(TrashingForAUser, TakesNoFolderOfSomebodyElseForATrash) {
    link("disk/home/.Trash", "../etc");
    write("disk/place/file", "x");
    EXPECT_FALSE(recycle("file"));
    EXPECT_EQ(read(item("file")), "x");
    expectNothingHappenedTo("disk/etc");
}

TEST_F(TrashingForAUser, TakesNoFolderOfTheSuperusersInHisHomeForATrash) {
    makeFolder("disk/home/.Trash");
    write("disk/place/file", "x");
    EXPECT_FALSE(recycle("file"));
    EXPECT_TRUE(names("disk/home/.Trash").empty());
    EXPECT_EQ(read(item("file")), "x");
}

TEST_F(TrashingForAUser, MakesNothingWhereHisLinksLead) {
    for (const std::string& part :
         {std::string(".local"), std::string(".local/share"), std::string(".local/share/Trash"),
          std::string(".local/share/Trash/files"), std::string(".local/share/Trash/info")}) {
        std::filesystem::remove_all(at("disk/home/.local"));
        makeFolder("disk/home/" + part);
        for (auto folder = std::filesystem::path(part); !folder.empty(); folder = folder.parent_path()) {
            giveToUser("disk/home/" + folder.string());
        }
        std::filesystem::remove(at("disk/home/" + part));
        link("disk/home/" + part, at("disk/etc"));
        write("disk/place/file", part);
        EXPECT_FALSE(recycle("file")) << part;
        EXPECT_FALSE(isThere("disk/place/file")) << part;
        expectNothingHappenedTo("disk/etc");
    }
}

TEST_F(TrashingForAUser, PutsTheItemIntoAnEmergencyTrashWhenHisOwnCannotBeUsed) {
    write("disk/home/.Trash", "a file in the way");
    write("disk/home/.local", "another");
    makeFolder("disk/place/folder");
    EXPECT_FALSE(recycle("folder"));
    EXPECT_TRUE(belongsToUser(std::string(lastResort) + "/folder"));
    EXPECT_TRUE(belongsToUser("disk/.Trash-1234"));
    EXPECT_EQ(status("disk/.Trash-1234").st_mode & 07777U, 0700U);
}

TEST_F(TrashingForAUser, UsesTheTrashOfAnotherFileSystemWhichHeCouldNotMakeHimself) {
    makeFolder("far/sub");
    write("far/sub/file", "x");
    EXPECT_FALSE(recycle("file", "far/sub"));
    EXPECT_EQ(read("far/.Trash-1234/files/file"), "x");
    EXPECT_TRUE(belongsToUser("far/.Trash-1234"));
    EXPECT_TRUE(belongsToUser("far/.Trash-1234/info/file.trashinfo"));
}

TEST_F(TrashingForAUser, MakesNoTrashForHimWhereOthersCouldExchangeIt) {
    setMode("far", 0770);  // the group's, which is not his
    write("far/file", "x");
    EXPECT_FALSE(recycle("file", "far"));
    EXPECT_TRUE(names("far").empty());
    EXPECT_EQ(read(item("file")), "x");
}

TEST_F(TrashingForAUser, FollowsNoLinkToAnotherFileSystemsTrash) {
    makeFolder("far/sub");
    makeFolder("far/open");
    setMode("far/open", 01777);
    link("far/.Trash", "open");
    makeFolderOfUser("far/his");
    link("far/.Trash-1234", "his");
    write("far/sub/file", "x");
    EXPECT_FALSE(recycle("file", "far/sub"));
    EXPECT_TRUE(names("far/open").empty());
    EXPECT_TRUE(names("far/his").empty());
    EXPECT_EQ(read(item("file")), "x");
}

TEST_F(TrashingForAUser, GivesHimTheFoldersOfWhatHadToBeCopied) {
    write("far/.Trash-1234", "a file in the way");
    makeFolder("far/folder/sub");
    write("far/folder/sub/file", "x");
    EXPECT_FALSE(recycle("folder", "far"));
    EXPECT_FALSE(isThere("far/folder"));
    EXPECT_TRUE(belongsToUser(item("folder")));
    EXPECT_TRUE(belongsToUser(item("folder/sub")));
    EXPECT_TRUE(belongsToSuperuser(item("folder/sub/file")));
}

TEST_F(TrashingForAUser, LosesNothingAndTouchesNothingOfOthersHoweverFastHeSwapsHisFolders) {
    makeFolderOfUser("disk/home/.local");
    makeFolderOfUser("disk/home/.local/share");
    makeFolderOfUser("disk/home/.local/share/Trash");
    link("disk/home/.local/share/other", at("disk/etc"));
    link("disk/home/.local/other", at("disk/etc"));
    link("disk/home/link", at("disk/etc"));
    makeFolderOfUser("disk/home/folder");
    std::atomic<bool> over{false};
    std::thread attacker([&] {
        while (!over) {
            exchange("disk/home/.local/share/Trash", "disk/home/.local/share/other");
            exchange("disk/home/.local/share", "disk/home/.local/other");
            (void)::unlink(at("disk/home/.Trash").c_str());
            (void)::symlink(at("disk/etc").c_str(), at("disk/home/.Trash").c_str());
            exchange("disk/home/.Trash", "disk/home/folder");
        }
    });
    constexpr int count = 1000;
    for (int i = 0; i < count; ++i) {
        const std::string name = "item" + std::to_string(i);
        makeFolder("disk/place/" + name + "/sub");
        EXPECT_FALSE(recycle(name)) << name;
    }
    over = true;
    attacker.join();
    expectNothingHappenedTo("disk/etc");
    int found = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(at("disk"))) {
        found += entry.path().filename().string().starts_with("item") && entry.is_directory() ? 1 : 0;
    }
    EXPECT_EQ(found, count);
    EXPECT_TRUE(names("disk/place").empty());
}

TEST_F(TrashingForAUser, GivesHimNothingThatHeSwapsIntoTheItemMeanwhile) {
    makeFolder("disk/etc/deep");
    std::atomic<bool> over{false};
    std::thread attacker([&] {
        for (int i = 0; !over; ++i) {
            const std::string path = item("folder" + std::to_string(i % 200));
            exchange(path + "/sub", path + "/link");
            exchange(path + "/sub/file", path + "/sub/shadow");
        }
    });
    for (int i = 0; i < 200; ++i) {
        const std::string path = "disk/place/folder" + std::to_string(i);
        makeFolder(path + "/sub");
        write(path + "/sub/file", "x");
        std::filesystem::create_hard_link(at("disk/etc/shadow"), at(path + "/sub/shadow"));
        link(path + "/link", at("disk/etc/deep"));
        EXPECT_FALSE(recycle("folder" + std::to_string(i)));
    }
    over = true;
    attacker.join();
    EXPECT_TRUE(belongsToSuperuser("disk/etc/deep"));
    EXPECT_TRUE(belongsToSuperuser("disk/etc/shadow"));
}

}  // namespace
