#include "tools/wickfield-bundle/check/MachO.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/bundle/MachOSamples.h"

namespace wickfield_bundle {
namespace {

using samples::Signer;
using Signature = MachOSlice::Signature;

// Counts what is read, and never hands out more than there is.
struct CountedBytes {
    explicit CountedBytes(std::string all) : bytes(std::move(all)) {}

    ByteSource source() {
        return {.size = bytes.size(), .read = [this](std::uint64_t offset, std::span<char> room) {
                    const std::size_t at = std::min<std::uint64_t>(offset, bytes.size());
                    const std::size_t count = std::min(room.size(), bytes.size() - at);
                    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), count, room.begin());
                    readBytes += count;
                    return count;
                }};
    }

    std::string bytes;
    std::size_t readBytes = 0;
};

std::variant<NotMachO, MachOFile, DamagedMachO> read(std::string bytes) {
    CountedBytes counted(std::move(bytes));
    return readMachO(counted.source());
}

std::vector<MachOSlice> slices(std::string bytes) {
    const auto result = read(std::move(bytes));
    const auto* file = std::get_if<MachOFile>(&result);
    EXPECT_NE(file, nullptr);
    return file == nullptr ? std::vector<MachOSlice>{} : file->slices;
}

MachOSlice onlySlice(std::string bytes) {
    const auto all = slices(std::move(bytes));
    EXPECT_EQ(all.size(), 1U);
    return all.empty() ? MachOSlice{} : all.front();
}

std::string damage(std::string bytes) {
    const auto result = read(std::move(bytes));
    const auto* damaged = std::get_if<DamagedMachO>(&result);
    return damaged == nullptr ? "not damaged" : damaged->reason;
}

bool isMachO(std::string bytes) { return !std::holds_alternative<NotMachO>(read(std::move(bytes))); }

std::string changed(std::string bytes, std::size_t offset, const std::string& to) {
    return bytes.replace(offset, to.size(), to);
}

TEST(CodeForMacOS, NamesItsProcessor) {
    EXPECT_EQ(onlySlice(samples::machO({.processor = samples::arm64})).processor, "arm64");
    EXPECT_EQ(onlySlice(samples::machO({.processor = samples::arm64, .subtype = 0x80000002})).processor, "arm64e");
    EXPECT_EQ(onlySlice(samples::machO({.processor = samples::x86_64})).processor, "x86_64");
    EXPECT_EQ(onlySlice(samples::machO({.processor = samples::x86})).processor, "i386");
    EXPECT_EQ(onlySlice(samples::machO({.processor = 99})).processor, "processor 99");
}

TEST(CodeForMacOS, IsReadInEitherByteOrder) {
    const auto slice = onlySlice(
        samples::machO({.processor = samples::powerPC, .order = ByteOrder::big, .oldest = (10U << 16U) | (5U << 8U)}));
    EXPECT_EQ(slice.processor, "ppc");
    EXPECT_EQ(slice.oldestSystem, (MachOVersion{10, 5}));
}

TEST(CodeForMacOS, NamesTheProcessorsOfAUniversalFileInOrder) {
    for (const bool has64Bits : {false, true}) {
        const auto all = slices(samples::universal(
            {{samples::x86_64, samples::machO({.processor = samples::x86_64})}, {samples::arm64, samples::machO()}},
            has64Bits));
        ASSERT_EQ(all.size(), 2U) << has64Bits;
        EXPECT_EQ(all[0].processor, "x86_64");
        EXPECT_EQ(all[1].processor, "arm64");
    }
}

TEST(CodeForMacOS, TellsWhoSignedIt) {
    const auto signatureOf = [](Signer signer) { return onlySlice(samples::machO({.signer = signer})).signature; };
    EXPECT_EQ(signatureOf(Signer::nobody), Signature::none);
    EXPECT_EQ(signatureOf(Signer::adHoc), Signature::adHoc);
    EXPECT_EQ(signatureOf(Signer::linker), Signature::adHoc);
    EXPECT_EQ(signatureOf(Signer::somebody), Signature::signedBySomebody);
}

TEST(CodeForMacOS, TellsWhoSignedEachPartOfAUniversalFile) {
    const auto all = slices(
        samples::universal({{samples::x86_64, samples::machO({.processor = samples::x86_64, .signer = Signer::nobody})},
                            {samples::arm64, samples::machO({.signer = Signer::adHoc})}}));
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].signature, Signature::none);
    EXPECT_EQ(all[1].signature, Signature::adHoc);
}

TEST(CodeForMacOS, HasABrokenSignatureWhereItIsOverwritten) {
    const std::string bytes = samples::machO();
    const std::size_t at = bytes.size() - samples::signature(Signer::somebody).size();
    EXPECT_EQ(onlySlice(changed(bytes, at, std::string(4, 'x'))).signature, Signature::broken);
    // More parts than a signature has.
    EXPECT_EQ(onlySlice(changed(bytes, at + 8, std::string(4, '\xFF'))).signature, Signature::broken);
    // A part that lies behind the end.
    EXPECT_EQ(onlySlice(changed(bytes, at + 16, std::string(4, '\xFF'))).signature, Signature::broken);
}

TEST(CodeForMacOS, KnowsTheOldestSystemByOldAndNewHeaders) {
    EXPECT_EQ(onlySlice(samples::machO({.oldest = (12U << 16U) | (3U << 8U)})).oldestSystem, (MachOVersion{12, 3}));
    const std::string old = changed(changed(samples::machO({.signer = Signer::nobody}), 32, samples::number32(0x24)),
                                    40, samples::number32((10U << 16U) | (13U << 8U)));
    EXPECT_EQ(onlySlice(old).oldestSystem, (MachOVersion{10, 13}));
}

TEST(CodeForMacOS, IsToldFromCodeForATelephone) {
    EXPECT_TRUE(onlySlice(samples::machO()).isForMacOS);
    EXPECT_FALSE(onlySlice(samples::machO({.system = 2})).isForMacOS);
    EXPECT_FALSE(onlySlice(changed(samples::machO(), 32, samples::number32(0x25))).isForMacOS);
}

TEST(CodeForMacOS, IsToldFromObjectFilesAndSymbols) {
    EXPECT_TRUE(onlySlice(samples::machO({.fileType = samples::program})).isCode);
    EXPECT_TRUE(onlySlice(samples::machO({.fileType = samples::library})).isCode);
    EXPECT_FALSE(onlySlice(samples::machO({.fileType = 1})).isCode);
    EXPECT_FALSE(onlySlice(samples::machO({.fileType = 10})).isCode);
}

TEST(CodeForMacOS, OfAUniversalStaticLibraryIsNoneThatRuns) {
    const auto slice = onlySlice(samples::universal({{samples::arm64, "!<arch>\nsomething"}}));
    EXPECT_FALSE(slice.isCode);
}

TEST(OtherFiles, AreNoCodeForMacOS) {
    EXPECT_FALSE(isMachO(""));
    EXPECT_FALSE(isMachO("abc"));
    EXPECT_FALSE(isMachO("#!/bin/sh\nexit 0\n"));
    EXPECT_FALSE(
        isMachO(std::string("\x7F"
                            "ELF\2\1\1",
                            7)));
    EXPECT_FALSE(isMachO(std::string("\xCA\xFE\xBA\xBE", 4)));
}

TEST(OtherFiles, JavaClassesAreNotTakenForUniversalCode) {
    const std::string javaClass = std::string("\xCA\xFE\xBA\xBE\0\0\0\x3D", 8) + std::string(2000, '\1');
    EXPECT_FALSE(isMachO(javaClass));
}

TEST(DamagedCode, IsToldWhereverItWasCutOff) {
    const std::string whole = samples::machO();
    for (std::size_t size = 8; size < whole.size(); ++size) {
        EXPECT_NE(damage(whole.substr(0, size)), "not damaged") << size;
    }
    const std::string both = samples::bothProcessors();
    for (std::size_t size = 8; size < both.size(); size += 7) {
        EXPECT_NE(damage(both.substr(0, size)), "not damaged") << size;
    }
}

TEST(DamagedCode, IsToldByCommandsThatCannotBe) {
    const std::string bytes = samples::machO();
    for (const std::uint32_t size : {0U, 7U, 12U, 41U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        EXPECT_NE(damage(changed(bytes, 36, samples::number32(size))), "not damaged") << size;
    }
    for (const std::uint32_t count : {3U, 65537U, 0xFFFFFFFFU}) {
        EXPECT_NE(damage(changed(bytes, 16, samples::number32(count))), "not damaged") << count;
    }
}

TEST(DamagedCode, IsToldByHeadersThatClaimMoreThanTheFileHas) {
    const std::string bytes = samples::machO();
    EXPECT_EQ(damage(changed(bytes, 20, samples::number32(2000))), "it ends within its load commands");
    EXPECT_EQ(damage(changed(bytes, 20, samples::number32(0xFFFFFFFF))), "its headers claim more than any program has");
    EXPECT_EQ(damage(changed(bytes, 64, samples::number32(0xFFFFFFF0))), "it ends before its signature does");
}

TEST(DamagedCode, IsToldByAUniversalFileOfNothing) {
    EXPECT_EQ(damage(samples::universal({})), "it is universal, but for no processor");
    EXPECT_EQ(damage(samples::universal({{samples::arm64, std::string(100, 'x')}})),
              "one of its parts is no code for macOS");
}

TEST(DamagedCode, ThatHoldsItselfIsNotReadForEver) {
    // The only slice of a universal file is the file itself.
    const std::string bytes =
        changed(samples::universal({{samples::arm64, samples::machO()}}), 16, std::string(4, '\0'));
    EXPECT_NE(damage(bytes), "not damaged");
}

TEST(ReadingCode, TakesLittleOfALargeFile) {
    CountedBytes large(samples::bothProcessors() + std::string(std::size_t{1} << 20U, 'x'));
    EXPECT_TRUE(std::holds_alternative<MachOFile>(readMachO(large.source())));
    EXPECT_LT(large.readBytes, 4096U);
}

}  // namespace
}  // namespace wickfield_bundle
