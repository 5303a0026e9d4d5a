#include <algorithm>
#include <array>
#include <memory>
#include <vector>

#include "lib/KZFileManager.h"
#include "lib/base/PathText.h"
#include "platform/ports/Host.h"
#include "tools/kzfile/Algorithms.h"
#include "tools/kzfile/Command.h"
#include "tools/kzfile/Interruption.h"
#include "tools/kzfile/Paths.h"
#include "tools/kzfile/ProgressBar.h"
#include "tools/kzfile/ReportingHost.h"
#include "tools/kzfile/Streams.h"

namespace kzfile {

namespace {

using KZFileManager::FileCopySettings;
using KZFileManager::FileCopyVerification;

constexpr std::array<Option, 3> options{{
    {'V', "verify", "ALGORITHM", "read the copies again and compare: md5, sha1, sha256 or sha512"},
    {'f', "overwrite", nullptr, "overwrite files that are there; else nothing is copied when one is"},
    {'q', "quiet", nullptr, "no progress bar"},
}};

// How far apart the library's reports are; when less than that is left there will be no other.
constexpr std::uint64_t leastStep = 20971520;  // bytes
constexpr std::uint64_t mostSteps = 500;

std::string destinationPath(const std::string& name, const std::string& source) {
    const std::string path = absolutePath(name);
    return kindOf(path) == ItemKind::folder ? kz::appendPathComponent(path, kz::lastPathComponent(source)) : path;
}

// What keeps the copy from being begun, in words; "" when it may.
std::string objection(const std::string& sourceName, const std::vector<std::string>& names,
                      const std::vector<std::string>& paths, bool mayOverwrite) {
    const std::string source = absolutePath(sourceName);
    switch (kindOf(source)) {
        case ItemKind::missing:
        case ItemKind::danglingLink:
            return sourceName + ": No such file or directory";
        case ItemKind::folder:
            return sourceName + ": is a folder; one file is copied at a time";
        case ItemKind::file:
        case ItemKind::other:
            break;
    }
    for (std::size_t at = 0; at < paths.size(); ++at) {
        const ItemKind kind = kindOf(paths[at]);
        if (kind == ItemKind::folder) {
            return paths[at] + ": is a folder";
        }
        if (kind == ItemKind::missing && names[at].ends_with('/')) {
            return names[at] + ": there is no such folder";
        }
        const std::string folder = kz::deletingLastPathComponent(paths[at]);
        if (kindOf(folder) == ItemKind::missing) {
            return folder + ": there is no such folder";
        }
        const auto identity = platform::host().files->identity(paths[at]);
        if (identity && identity == platform::host().files->identity(source)) {
            return names[at] + ": is the source itself";
        }
        if (kind != ItemKind::missing && !mayOverwrite) {
            return paths[at] + ": is there already (--overwrite replaces its contents)";
        }
        if (std::find(paths.begin(), paths.begin() + static_cast<std::ptrdiff_t>(at), paths[at]) !=
            paths.begin() + static_cast<std::ptrdiff_t>(at)) {
            return paths[at] + ": is named twice";
        }
    }
    return "";
}

struct Outcome {
    std::vector<std::string> damaged;
    bool copied = false;
};

void printReasons(const Outcome& outcome, const std::string& source) {
    for (const std::string& path : outcome.damaged) {
        printError(path + ": did not read as the source did, and was removed");
    }
    if (!outcome.damaged.empty()) {
        return;
    }
    printError(reports().lastFailure().value_or(source +
                                                ": changed while it was copied, is no regular file, or two of the "
                                                "destinations are the same file"));
}

Outcome copy(const std::string& source, const std::vector<std::string>& destinations, FileCopyVerification verification,
             ProgressBar::Wanted barWanted) {
    const std::uint64_t size = KZFileManager::fileSize(source);
    const auto bar = std::make_shared<ProgressBar>(kz::lastPathComponent(source), size, barWanted);
    const bool verifies = verification != FileCopyVerification::none;
    Outcome outcome;
    auto delegate = std::make_shared<KZFileManager::FileCopyDelegate>();
    delegate->fileCopyBytesWritten = [bar, size, verifies](std::uint64_t bytes, const FileCopySettings&) {
        bar->show(bytes);
        if (verifies && size - std::min(bytes, size) < std::max(leastStep, size / mostSteps)) {
            bar->showWork("then the copies are read again");
        }
    };
    delegate->fileCopyVerificationFailed = [&outcome](const FileCopySettings&, const std::string& path) {
        outcome.damaged.push_back(path);
    };
    const TidyWork tidy;
    outcome.copied = KZFileManager::copyFileWithProgress(source, destinations, verification, delegate, {}, {});
    if (outcome.copied) {
        bar->finish(verifies ? "verified" : "");
    } else {
        bar->takeAway();
    }
    return outcome;
}

int run(const Arguments& arguments) {
    const auto algorithm = arguments.value("verify");
    const auto verification = algorithm ? algorithmNamed(*algorithm).verification : FileCopyVerification::none;
    const std::string& sourceName = arguments.operands().front();
    const std::string source = absolutePath(sourceName);
    const std::vector<std::string> names(arguments.operands().begin() + 1, arguments.operands().end());
    std::vector<std::string> paths;
    std::ranges::transform(names, std::back_inserter(paths),
                           [&](const std::string& name) { return destinationPath(name, source); });
    if (const std::string words = objection(sourceName, names, paths, arguments.has("overwrite")); !words.empty()) {
        printError(words);
        return failed;
    }
    const Outcome outcome =
        copy(source, paths, verification, arguments.has("quiet") ? ProgressBar::Wanted::no : ProgressBar::Wanted::yes);
    if (outcome.copied) {
        for (const std::string& line : reports().consoleLines()) {
            printError(line);  // attributes that a destination could not take
        }
        return done;
    }
    if (isInterrupted()) {
        return interruptionCode();
    }
    printReasons(outcome, sourceName);
    return failed;
}

}  // namespace

const Command copyCommand{
    .name = "copy",
    .summary = "copy a file to several places at once, and verify the copies",
    .arguments = "SOURCE DESTINATION...",
    .help =
        "Copies the file to every destination, reading it once. A destination is a file to be\n"
        "made, or a folder to copy into. Modes, times, extended attributes and access lists are\n"
        "kept. A copy that fails, is interrupted or does not verify is removed; a file that was to\n"
        "be overwritten is left empty then. Verifying reads what the system gives, which may\n"
        "come from its memory.\n",
    .options = options,
    .fewest = 2,
    .most = Command::anyNumber,
    .run = run,
};

}  // namespace kzfile
