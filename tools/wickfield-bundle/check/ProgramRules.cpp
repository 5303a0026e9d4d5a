// Code for macOS: the processors that it is for, who signed it, which systems it runs on.
#include <algorithm>
#include <array>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/services/workspace/Packages.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/MachO.h"
#include "tools/wickfield-bundle/check/RegularFile.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

using platform::FileType;
using Signature = MachOSlice::Signature;

constexpr MachOVersion installersOldest{.major = 11, .minor = 0};
constexpr std::string_view programFolder = "/Contents/MacOS";

std::string_view folderOf(std::string_view path) { return path.substr(0, std::max<std::size_t>(path.rfind('/'), 1)); }

// Directly in the folder where a bundle keeps its programs.
bool isInProgramFolder(std::string_view path) {
    const auto slash = path.rfind('/');
    const std::string_view folder = slash == std::string_view::npos ? "" : path.substr(0, slash);
    return folder == programFolder.substr(1) || folder.ends_with(programFolder);
}

bool isHelper(std::string_view path) { return folderOf(path).ends_with("/Contents/Helpers"); }

// The library that gives the framework its name has no extension, as few others in it.
bool mayBeFramework(std::string_view path) {
    return path.find(".framework/") != std::string_view::npos &&
           path.find('.', path.rfind('/')) == std::string_view::npos;
}

// Whatever else lies in a bundle cannot be run, so it is not opened.
bool mayBeCode(const InventoryEntry& entry) {
    constexpr unsigned anybodyRuns = 0111;
    return entry.type == FileType::regular &&
           ((entry.permissions & anybodyRuns) != 0 || isInProgramFolder(entry.path) || entry.path.ends_with(".dylib") ||
            isHelper(entry.path) || mayBeFramework(entry.path));
}

class CodeCheck {
public:
    CodeCheck(const CheckedBundle& bundle, const InventoryEntry& entry, Findings& findings)
        : m_bundle(bundle), m_entry(entry), m_findings(findings) {}

    void run() {
        std::string whyNot;
        const auto file = RegularFile::open(m_bundle.fullPath(m_entry.path), whyNot);
        if (!file) {
            report("not-checked", "It cannot be opened: " + whyNot + ".");
            return;
        }
        const auto code = readMachO({.size = file->size(), .read = [&](std::uint64_t offset, std::span<char> room) {
                                         return file->readAt(offset, room);
                                     }});
        if (const auto* damaged = std::get_if<DamagedMachO>(&code)) {
            report("code-damaged", "It begins like code for macOS, but " + damaged->reason + ".");
        } else if (const auto* whole = std::get_if<MachOFile>(&code)) {
            lookAt(*whole);
        } else if (isScriptOrElf(file->head(4))) {
            lookAtMode();
        }
    }

private:
    void report(RuleName rule, std::string reason) { add(m_findings, rule, m_entry.path, std::move(reason)); }

    static bool isScriptOrElf(std::string_view head) {
        return head.starts_with("#!") || head == std::string_view(
                                                     "\x7F"
                                                     "ELF");
    }

    void lookAtMode() {
        constexpr unsigned ownerRuns = 0100;
        if (!(isInProgramFolder(m_entry.path) || isHelper(m_entry.path)) || (m_entry.permissions & ownerRuns) != 0) {
            return;
        }
        if (!m_bundle.isInTree(m_entry.path)) {
            return;  // the installer's own program, which has a rule of its own
        }
        const std::string_view package = folderOf(folderOf(folderOf(m_entry.path)));
        const bool startsApplication = package.ends_with(".app") && !isHelper(m_entry.path);
        report(startsApplication ? RuleName("application-mode") : RuleName("code-mode"),
               "It is code, but nobody may execute it.");
    }

    void lookAt(const MachOFile& file) {
        std::vector<const MachOSlice*> slices;
        for (const MachOSlice& slice : file.slices) {
            if (slice.isCode && slice.isForMacOS) {
                slices.push_back(&slice);
            }
        }
        if (slices.empty()) {
            return;
        }
        lookAtMode();
        lookAtProcessors(slices);
        lookAtSignatures(slices);
        lookAtSystems(slices);
    }

    static bool isFor(const MachOSlice& slice, std::string_view processor) {
        return slice.processor == processor || (processor == "arm64" && slice.processor == "arm64e");
    }

    void lookAtProcessors(const std::vector<const MachOSlice*>& slices) {
        std::string present;
        for (const MachOSlice* slice : slices) {
            present += (present.empty() ? "" : ", ") + slice->processor;
        }
        std::string missing;
        for (const std::string_view wanted : {"arm64", "x86_64"}) {
            if (std::ranges::none_of(slices, [&](const auto* slice) { return isFor(*slice, wanted); })) {
                missing += (missing.empty() ? "" : " and ") + std::string(wanted);
            }
        }
        if (!missing.empty()) {
            report("code-architecture", "It is for " + present + ", not for " + missing + ".");
        }
    }

    void lookAtSignatures(const std::vector<const MachOSlice*>& slices) {
        const auto processorsWith = [&](std::initializer_list<Signature> signatures) {
            std::string processors;
            for (const MachOSlice* slice : slices) {
                if (std::ranges::find(signatures, slice->signature) != signatures.end()) {
                    processors += (processors.empty() ? "" : ", ") + slice->processor;
                }
            }
            return processors;
        };
        const std::string unsignedOnes = processorsWith({Signature::none});
        const std::string broken = processorsWith({Signature::broken});
        const std::string adHoc = processorsWith({Signature::adHoc});
        if (!unsignedOnes.empty()) {
            const bool kills = unsignedOnes.find("arm64") != std::string::npos;
            report(kills ? RuleName("code-unsigned-arm64") : RuleName("code-unsigned"),
                   "It has no signature for " + unsignedOnes + ".");
        }
        if (!broken.empty()) {
            report("code-damaged", "Its signature for " + broken + " does not hold together.");
        }
        if (!adHoc.empty()) {
            report("code-ad-hoc", "Its signature for " + adHoc + " names nobody.");
        }
    }

    void lookAtSystems(const std::vector<const MachOSlice*>& slices) {
        MachOVersion newest = installersOldest;
        for (const MachOSlice* slice : slices) {
            newest = std::max(newest, slice->oldestSystem.value_or(newest));
        }
        if (newest > installersOldest) {
            report("code-newer-macos", "It needs macOS " + std::to_string(newest.major) + "." +
                                           std::to_string(newest.minor) + " or later.");
        }
    }

    const CheckedBundle& m_bundle;
    const InventoryEntry& m_entry;
    Findings& m_findings;
};

}  // namespace

void checkPrograms(const CheckedBundle& bundle, Findings& findings) {
    for (const InventoryEntry& entry : bundle.contents.entries) {
        if (mayBeCode(entry)) {
            CodeCheck(bundle, entry, findings).run();
        }
    }
}

}  // namespace wickfield_bundle
