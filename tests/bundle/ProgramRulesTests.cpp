#include "tests/bundle/CheckFixture.h"
#include "tests/bundle/MachOSamples.h"

namespace wickfield_bundle {
namespace {

using samples::Signer;
using testing::ElementsAre;
using testing::IsEmpty;

class CheckingPrograms : public CheckFixture {
protected:
    const std::string binary = inTree("Library/Audio/Plug-Ins/VST3/Echo.vst3/Contents/MacOS/Echo");

    std::vector<Found> foundIn(const std::string& bytes, unsigned mode = 0755) {
        write(binary, bytes, mode);
        return found(checkPrograms);
    }
};

TEST_F(CheckingPrograms, HasNothingToSayOfSignedCodeForBothProcessors) {
    EXPECT_THAT(foundIn(samples::bothProcessors()), IsEmpty());
}

TEST_F(CheckingPrograms, NamesTheProcessorThatIsMissing) {
    EXPECT_THAT(foundIn(samples::machO({.processor = samples::x86_64})),
                ElementsAre(Found{"code-architecture", binary}));
    EXPECT_EQ(reason(checkPrograms), "It is for x86_64, not for arm64.");
    EXPECT_THAT(foundIn(samples::machO()), ElementsAre(Found{"code-architecture", binary}));
    EXPECT_EQ(reason(checkPrograms), "It is for arm64, not for x86_64.");
}

TEST_F(CheckingPrograms, NamesBothProcessorsForCodeOfOldMacs) {
    write(binary, samples::machO({.processor = samples::x86}), 0755);
    EXPECT_EQ(reason(checkPrograms), "It is for i386, not for arm64 and x86_64.");
}

TEST_F(CheckingPrograms, TakesArm64eForArm64) {
    EXPECT_THAT(foundIn(samples::universal({{samples::x86_64, samples::machO({.processor = samples::x86_64})},
                                            {samples::arm64, samples::machO({.subtype = 2})}})),
                IsEmpty());
}

TEST_F(CheckingPrograms, CallsUnsignedCodeForArm64AnError) {
    EXPECT_THAT(foundIn(samples::bothProcessors(Signer::nobody)), ElementsAre(Found{"code-unsigned-arm64", binary}));
    EXPECT_EQ(reason(checkPrograms), "It has no signature for x86_64, arm64.");
}

TEST_F(CheckingPrograms, WarnsOfUnsignedCodeForX86) {
    EXPECT_THAT(foundIn(samples::universal(
                    {{samples::x86_64, samples::machO({.processor = samples::x86_64, .signer = Signer::nobody})},
                     {samples::arm64, samples::machO()}})),
                ElementsAre(Found{"code-unsigned", binary}));
}

TEST_F(CheckingPrograms, WarnsOfCodeThatIsSignedByNobody) {
    EXPECT_THAT(foundIn(samples::bothProcessors(Signer::linker)), ElementsAre(Found{"code-ad-hoc", binary}));
}

TEST_F(CheckingPrograms, NotesANewerMacOSThanTheInstallerNeeds) {
    const auto slice = [](std::uint32_t processor, std::uint32_t major) {
        return std::pair(processor, samples::machO({.processor = processor, .oldest = major << 16U}));
    };
    EXPECT_THAT(foundIn(samples::universal({slice(samples::x86_64, 10), slice(samples::arm64, 13)})),
                ElementsAre(Found{"code-newer-macos", binary}));
    EXPECT_EQ(reason(checkPrograms), "It needs macOS 13.0 or later.");
    EXPECT_THAT(foundIn(samples::universal({slice(samples::x86_64, 10), slice(samples::arm64, 11)})), IsEmpty());
}

TEST_F(CheckingPrograms, CallsCodeThatWasCutOffDamaged) {
    EXPECT_THAT(foundIn(samples::bothProcessors().substr(0, 5000)), ElementsAre(Found{"code-damaged", binary}));
}

TEST_F(CheckingPrograms, CallsABrokenSignatureDamage) {
    const std::string whole = samples::machO();
    std::string broken = whole;
    broken.replace(whole.size() - samples::signature(Signer::somebody).size(), 4, "xxxx");
    EXPECT_THAT(foundIn(broken), testing::Contains(Found{"code-damaged", binary}));
}

TEST_F(CheckingPrograms, WarnsOfCodeInAPlugInThatNobodyMayExecute) {
    EXPECT_THAT(foundIn(samples::bothProcessors(), 0644), ElementsAre(Found{"code-mode", binary}));
    EXPECT_THAT(foundIn("#!/bin/sh\n", 0644), ElementsAre(Found{"code-mode", binary}));
    EXPECT_THAT(foundIn("just a text beside it\n", 0644), IsEmpty());
}

TEST_F(CheckingPrograms, FindsHelpersAndFrameworksThatLostTheirRights) {
    const std::string contents = inTree("Applications/Echo.app/Contents");
    const std::string framework = contents + "/Frameworks/Echo.framework/Versions/A";
    write(contents + "/Helpers/tool", samples::bothProcessors(), 0644);
    write(contents + "/Helpers/script", "#!/bin/sh\n", 0644);
    write(contents + "/Helpers/list.txt", "tool\n", 0644);
    write(framework + "/Echo", samples::bothProcessors(Signer::nobody), 0644);
    write(framework + "/Headers/Echo.h", samples::bothProcessors(Signer::nobody), 0644);
    EXPECT_THAT(found(checkPrograms), ElementsAre(Found{"code-unsigned-arm64", framework + "/Echo"},
                                                  Found{"code-mode", contents + "/Helpers/script"},
                                                  Found{"code-mode", contents + "/Helpers/tool"}));
}

TEST_F(CheckingPrograms, CallsAnApplicationThatCannotBeStartedAnError) {
    const std::string first = inTree("Applications/Echo.app/Contents/MacOS/Echo");
    const std::string nested = inTree("Library/Echo.bundle/Contents/Resources/Tool.app/Contents/MacOS/Tool");
    write(first, "#!/bin/bash\n", 0644);
    write(nested, samples::bothProcessors(), 0644);
    EXPECT_THAT(found(checkPrograms), ElementsAre(Found{"application-mode", first}, Found{"application-mode", nested}));
}

TEST_F(CheckingPrograms, LeavesTheInstallersOwnProgramsModeToItsOwnRule) {
    write("Contents/MacOS/Example", samples::bothProcessors(), 0644);
    EXPECT_THAT(found(checkPrograms), IsEmpty());
}

TEST_F(CheckingPrograms, FindsLibrariesAndExecutableFilesOutsideOfBundlesToo) {
    const std::string library = inTree("Library/Application Support/Echo/libecho.dylib");
    const std::string tool = inTree("usr/local/bin/echotool");
    write(library, samples::bothProcessors(Signer::nobody), 0644);
    write(tool, samples::machO({.processor = samples::x86_64, .fileType = samples::program}), 0755);
    EXPECT_THAT(found(checkPrograms),
                ElementsAre(Found{"code-unsigned-arm64", library}, Found{"code-architecture", tool}));
}

TEST_F(CheckingPrograms, LooksAtTheInstallersOwnProgram) {
    write("Contents/MacOS/Example", samples::bothProcessors(Signer::nobody), 0755);
    EXPECT_THAT(found(checkPrograms), ElementsAre(Found{"code-unsigned-arm64", "Contents/MacOS/Example"}));
}

TEST_F(CheckingPrograms, PassesOverWhatIsNotRun) {
    write(inTree("Library/Echo/data.bin"), samples::machO({.signer = Signer::nobody}), 0644);
    write(inTree("Library/Echo/object.o"), samples::machO({.fileType = 1, .signer = Signer::nobody}), 0755);
    write(inTree("Library/Echo/telephone.dylib"), samples::machO({.signer = Signer::nobody, .system = 2}), 0755);
    write(inTree("Library/Echo/Echo.class"), std::string("\xCA\xFE\xBA\xBE\0\0\0\x3D", 8), 0755);
    write(inTree("Library/Echo/empty"), "", 0755);
    EXPECT_THAT(found(checkPrograms), IsEmpty());
}

TEST_F(CheckingPrograms, OpensNoPipe) {
    folder(inTree("Library"));
    ASSERT_EQ(::mkfifo((bundle() + "/" + inTree("Library/pipe.dylib")).c_str(), 0755), 0);
    EXPECT_THAT(found(checkPrograms), IsEmpty());
}

TEST_F(CheckingPrograms, SaysWhatItCouldNotOpen) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may open everything";
    }
    EXPECT_THAT(foundIn(samples::bothProcessors(), 0111), ElementsAre(Found{"not-checked", binary}));
}

}  // namespace
}  // namespace wickfield_bundle
