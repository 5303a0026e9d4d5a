#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "lib/KZFileManager.h"
#include "lib/base/PathText.h"
#include "platform/ports/Host.h"
#include "tools/commandline/Interruption.h"
#include "tools/commandline/Streams.h"
#include "tools/kzfile/Algorithms.h"
#include "tools/kzfile/Command.h"
#include "tools/kzfile/Paths.h"
#include "tools/kzfile/ProgressBar.h"
#include "tools/kzfile/ReportingHost.h"

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

// What speaks against the source, in words; "" when nothing does.
std::string objectionToSource(const std::string& name) {
    switch (kindOf(absolutePath(name))) {
        case ItemKind::missing:
        case ItemKind::danglingLink:
            return missingText(name);
        case ItemKind::folder:
            return name + ": is a folder; one file is copied at a time";
        case ItemKind::file:
        case ItemKind::other:
            break;
    }
    return "";
}

struct Destination {
    std::string name;  // as it was given
    std::string path;
};

std::string objectionTo(const Destination& destination, bool mayOverwrite) {
    const auto& [name, path] = destination;
    const ItemKind kind = kindOf(path);
    if (kind == ItemKind::folder) {
        return shownPath(path) + ": is a folder";
    }
    if (kind == ItemKind::missing) {
        const std::string folder = kz::deletingLastPathComponent(path);
        const bool hasFolder = kindOf(folder) == ItemKind::folder && !name.ends_with('/');
        return hasFolder ? "" : (name.ends_with('/') ? name : shownPath(folder)) + ": there is no such folder";
    }
    return mayOverwrite ? "" : shownPath(path) + ": is there already (--overwrite replaces its contents)";
}

// Under other names too.
std::string objectionToSameFiles(const std::string& source, const std::vector<Destination>& destinations) {
    auto& files = *platform::host().files;
    for (auto at = destinations.begin(); at != destinations.end(); ++at) {
        const auto identity = files.identity(at->path);
        if (identity && identity == files.identity(source)) {
            return at->name + ": is the source itself";
        }
        if (std::any_of(destinations.begin(), at, [&](const Destination& earlier) {
                return earlier.path == at->path || (identity && identity == files.identity(earlier.path));
            })) {
            return at->name + ": is named twice";
        }
    }
    return "";
}

std::string objection(const std::string& sourceName, const std::vector<Destination>& destinations, bool mayOverwrite) {
    std::string words = objectionToSource(sourceName);
    if (words.empty()) {
        words = objectionToSameFiles(absolutePath(sourceName), destinations);
    }
    for (const Destination& destination : destinations) {
        if (words.empty()) {
            words = objectionTo(destination, mayOverwrite);
        }
    }
    return words;
}

struct Outcome {
    std::vector<std::string> damaged;
    bool copied = false;
};

void printReasons(const Outcome& outcome, const std::string& source) {
    for (const std::string& path : outcome.damaged) {
        commandline::printError(shownPath(path) + ": did not read as the source did, and was removed");
    }
    if (!outcome.damaged.empty()) {
        return;
    }
    commandline::printError(
        reports().lastFailure().value_or(source + ": was not copied; it may have changed meanwhile"));
}

Outcome copy(const std::string& source, const std::vector<std::string>& destinations, FileCopyVerification verification,
             ProgressBar::Wanted barWanted) {
    std::error_code error;
    const std::uintmax_t found = std::filesystem::file_size(source, error);
    const std::uint64_t size = error ? 0 : found;
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
    const commandline::TidyWork tidy;
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
    std::vector<Destination> destinations;
    std::vector<std::string> paths;
    for (auto name = arguments.operands().begin() + 1; name != arguments.operands().end(); ++name) {
        paths.push_back(destinationPath(*name, source));
        destinations.push_back({*name, paths.back()});
    }
    if (const std::string words = objection(sourceName, destinations, arguments.has("overwrite")); !words.empty()) {
        commandline::printError(words);
        return failed;
    }
    const Outcome outcome =
        copy(source, paths, verification, arguments.has("quiet") ? ProgressBar::Wanted::no : ProgressBar::Wanted::yes);
    if (outcome.copied) {
        for (const std::string& line : reports().consoleLines()) {
            commandline::printError(line);  // attributes that a destination could not take
        }
        return done;
    }
    if (commandline::isInterrupted()) {
        return commandline::interruptionCode();
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
