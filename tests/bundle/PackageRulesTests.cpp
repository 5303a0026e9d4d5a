#include <map>

#include "tests/bundle/CheckFixture.h"

namespace wickfield_bundle {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class CheckingPackages : public CheckFixture {
protected:
    const std::string package = inTree("Library/Audio/Plug-Ins/VST3/Echo.vst3");
    const std::string information = package + "/Contents/Info.plist";
    const std::string executable = package + "/Contents/MacOS/Echo";

    // The usual keys but for those that are given, which an empty text leaves out.
    static std::string plist(const std::map<std::string, std::string>& others = {}) {
        std::map<std::string, std::string> all{{"CFBundleIdentifier", "com.example.echo"},
                                               {"CFBundleVersion", "1.0"},
                                               {"CFBundlePackageType", "BNDL"},
                                               {"CFBundleExecutable", "Echo"}};
        for (const auto& [key, value] : others) {
            all[key] = value;
        }
        std::string text = "<plist version=\"1.0\"><dict>";
        for (const auto& [key, value] : all) {
            if (!value.empty()) {
                text.append("<key>").append(key).append("</key><string>").append(value).append("</string>");
            }
        }
        return text + "</dict></plist>\n";
    }
    void good(const std::string& place) {
        write(place + "/Contents/Info.plist", plist());
        write(place + "/Contents/MacOS/Echo", "#!/bin/sh\n", 0755);
    }
    void good() { good(package); }
};

TEST_F(CheckingPackages, HasNothingToSayOfGoodOnes) {
    good();
    EXPECT_THAT(found(checkPackages), IsEmpty());
}

TEST_F(CheckingPackages, WantsAnInfoPlist) {
    write(executable, "#!/bin/sh\n", 0755);
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-info-missing", information}));
}

TEST_F(CheckingPackages, WantsAnInfoPlistThatCanBeRead) {
    good();
    for (const char* text : {"", "<plist><array/></plist>", "<plist><dict>", "{ torn"}) {
        write(information, text);
        EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-info-unreadable", information})) << text;
    }
}

TEST_F(CheckingPackages, ReadsNoHugeInfoPlistAndNoPipe) {
    good();
    std::filesystem::resize_file(bundle() + "/" + information, std::uintmax_t{1} << 30U);
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-info-unreadable", information}));
    std::filesystem::remove(bundle() + "/" + information);
    ASSERT_EQ(::mkfifo((bundle() + "/" + information).c_str(), 0644), 0);
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-info-unreadable", information}));
}

TEST_F(CheckingPackages, WantsIdentifierVersionAndKind) {
    good();
    write(information, plist({{"CFBundleIdentifier", ""}}));
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-identifier", information}));
    write(information, plist({{"CFBundleVersion", ""}}));
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-version", information}));
    write(information, plist({{"CFBundlePackageType", ""}}));
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-kind", information}));
}

TEST_F(CheckingPackages, WantsTheKindThatFitsTheExtension) {
    good();
    write(information, plist({{"CFBundlePackageType", "APPL"}}));
    EXPECT_EQ(reason(checkPackages), "Its CFBundlePackageType is \"APPL\"; it is to be BNDL.");
    const std::string application = inTree("Applications/Echo.app");
    good(application);
    std::filesystem::remove_all(bundle() + "/" + package);
    EXPECT_EQ(reason(checkPackages), "Its CFBundlePackageType is \"BNDL\"; it is to be APPL.");
}

TEST_F(CheckingPackages, WantsTheExecutableThatIsNamed) {
    write(information, plist({{"CFBundleExecutable", "Other"}}));
    write(executable, "#!/bin/sh\n", 0755);
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-executable", package + "/Contents/MacOS/Other"}));
}

TEST_F(CheckingPackages, WantsTheExecutableToBeCode) {
    good();
    for (const std::string text :
         {"", "code", "version https://git-lfs.github.com/spec/v1\noid sha256:0\n", "\xCA\xFE", "\xCF\xFA"}) {
        write(executable, text, 0755);
        EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-executable", executable})) << text;
    }
    for (const std::string text : {"\xCF\xFA\xED\xFE", "\xCA\xFE\xBA\xBE", "#!/usr/bin/env bash\n"}) {
        write(executable, text, 0755);
        EXPECT_THAT(found(checkPackages), IsEmpty()) << text;
    }
}

TEST_F(CheckingPackages, WantsTheCodeForLinuxToBeMoreThanAPlaceForIt) {
    const std::string code = package + "/Contents/x86_64-linux/Echo.so";
    for (const char* text : {"", "version https://git-lfs.github.com/spec/v1\n"}) {
        write(code, text);
        EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-executable", code})) << text;
    }
}

TEST_F(CheckingPackages, TakesTheFolderForTheNameOfTheExecutable) {
    good();
    write(information, plist({{"CFBundleExecutable", ""}}));
    EXPECT_THAT(found(checkPackages), IsEmpty());
    std::filesystem::remove(bundle() + "/" + executable);
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-executable", executable}));
}

TEST_F(CheckingPackages, TakesNoFolderAndNoPathForAnExecutable) {
    write(information, plist());
    folder(executable);
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-executable", executable}));
    write(information, plist({{"CFBundleExecutable", "../../Echo"}}));
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-executable", information}));
}

TEST_F(CheckingPackages, TakesALinkToTheExecutable) {
    write(information, plist());
    write(package + "/Contents/Code/Echo", "#!/bin/sh\n", 0755);
    link(executable, "../Code/Echo");
    EXPECT_THAT(found(checkPackages), IsEmpty());
}

TEST_F(CheckingPackages, TakesABundleOfResourcesWithoutCode) {
    write(inTree("Library/Echo/Sounds.bundle/Contents/Info.plist"), plist({{"CFBundleExecutable", ""}}));
    EXPECT_THAT(found(checkPackages), IsEmpty());
}

TEST_F(CheckingPackages, TakesTheFormOfLinuxWithoutAnInfoPlist) {
    write(package + "/Contents/x86_64-linux/Echo.so", "code");
    EXPECT_THAT(found(checkPackages), IsEmpty());
}

TEST_F(CheckingPackages, WantsTheCodeForLinuxToBeCalledLikeTheFolder) {
    write(package + "/Contents/x86_64-linux/echo.so", "code");
    EXPECT_THAT(found(checkPackages),
                ElementsAre(Found{"package-executable", package + "/Contents/x86_64-linux/Echo.so"}));
}

TEST_F(CheckingPackages, NotesWhereTheInstallerRunsAndThePlugInDoesNot) {
    good();
    write("Contents/Linux/Example", "code", 0755);
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-one-host", package}));
    write(package + "/Contents/x86_64-linux/Echo.so", "code");
    EXPECT_THAT(found(checkPackages), IsEmpty());
    std::filesystem::remove_all(bundle() + "/" + package + "/Contents/MacOS");
    write("Contents/MacOS/Example", "code", 0755);
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-one-host", package}));
    EXPECT_EQ(reason(checkPackages), "It has code for Linux alone.");
}

TEST_F(CheckingPackages, WarnsOfTwoWithOneIdentifier) {
    const std::string other = inTree("Library/Audio/Plug-Ins/VST3/Other/Echo.vst3");
    good();
    good(other);
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-identifier-twice", other}));
    EXPECT_THAT(reason(checkPackages), HasSubstr("com.example.echo"));
}

TEST_F(CheckingPackages, HasNothingToSayOfTheFormsOfOnePlugInWithOneIdentifier) {
    good();
    good(inTree("Library/Audio/Plug-Ins/Components/Echo.component"));
    good(inTree("Library/Audio/Plug-Ins/CLAP/Echo.clap"));
    EXPECT_THAT(found(checkPackages), IsEmpty());
}

TEST_F(CheckingPackages, WarnsOfPlacesWhereNoHostLooks) {
    for (const char* path : {"Library/Audio/Plug-Ins/VST/Echo.vst3", "Library/Echo.component", "Library/VST3/Echo.clap",
                             "Library/Components/Echo.vst", "Library/Echo/Echo.aaxplugin"}) {
        good(inTree(path));
        EXPECT_THAT(found(checkPackages), testing::Contains(Found{"package-place", inTree(path)}));
        std::filesystem::remove_all(bundle() + "/" + inTree("Library"));
    }
}

TEST_F(CheckingPackages, HasNothingToSayOfPlacesWhereHostsLook) {
    for (const char* path : {"Library/Audio/Plug-Ins/Components/Echo.component", "Users/user/.vst3/Echo.vst3",
                             "Library/Audio/Plug-Ins/CLAP/Example/Echo.clap"}) {
        good(inTree(path));
        EXPECT_THAT(found(checkPackages), IsEmpty()) << path;
        std::filesystem::remove_all(bundle() + "/" + treePlace);
    }
}

TEST_F(CheckingPackages, FindsContentsThatLieInNoBundle) {
    const std::string folder = inTree("Library/Audio/Plug-Ins/VST3");
    for (const char* part : {"/Contents/MacOS/Echo", "/Contents/x86_64-linux/Echo.so", "/Contents/Info.plist"}) {
        write(folder + part);
        write(folder + "/Contents/Resources/Echo.icns");
        EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-apart", folder})) << part;
        std::filesystem::remove_all(bundle() + "/" + folder);
    }
    write(inTree("Contents/MacOS/Echo"));
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-apart", "Contents/Resources/PluginStructure"}));
}

TEST_F(CheckingPackages, HasNothingToSayOfOtherFoldersWithContents) {
    write(inTree("Library/Echo/Contents/list.txt"));
    write(inTree("Library/Echo/Echo.dSYM/Contents/Info.plist"));
    good();
    write(package + "/Contents/Helper/Contents/MacOS/Helper");
    EXPECT_THAT(found(checkPackages), IsEmpty());
}

TEST_F(CheckingPackages, FindsAnItemInPlaceOfAFolderOfPlugIns) {
    for (const char* path :
         {"Library/Audio/Plug-Ins/CLAP", "Library/Audio/Plug-Ins/Components", "Library/Audio/plug-ins"}) {
        write(inTree(path));
        EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-folder", inTree(path)}));
        std::filesystem::remove(bundle() + "/" + inTree(path));
    }
    write(inTree("Library/Echo/clap"));
    write(inTree("Library/Audio/Plug-Ins/CLAP/clap"));
    EXPECT_THAT(found(checkPackages), IsEmpty());
}

TEST_F(CheckingPackages, TakesASingleFileForAPlugInOfLinux) {
    write(inTree("usr/lib/clap/Echo.clap"), "code");
    EXPECT_THAT(found(checkPackages), IsEmpty());
    write(inTree("usr/lib/Echo.clap"), "code");
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-place", inTree("usr/lib/Echo.clap")}));
}

TEST_F(CheckingPackages, AsksNothingOfDocumentsThatAreFolders) {
    write(inTree("Library/Echo/Manual.rtfd/TXT.rtf"), "{\\rtf1 text}");
    EXPECT_THAT(found(checkPackages), IsEmpty());
}

TEST_F(CheckingPackages, FindsNoInfoPlistInAnEmptyFolder) {
    folder(package);
    EXPECT_THAT(found(checkPackages), ElementsAre(Found{"package-info-missing", information}));
}

}  // namespace
}  // namespace wickfield_bundle
