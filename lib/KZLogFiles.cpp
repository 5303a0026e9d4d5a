#include "lib/KZLogFiles.h"

#include <chrono>

#include "lib/KZLocalPaths.h"
#include "lib/base/Format.h"
#include "lib/base/PropertyText.h"
#include "platform/ports/Host.h"

namespace KZLogFiles {

namespace {

constexpr const char* logsFolder = "/Logs/Corvane";
constexpr const char* globalPreferences = "/com.corvane.global.plist";
constexpr double bytesPerGigabyte = 1024.0 * 1024.0 * 1024.0;

std::optional<std::string> below(const std::optional<std::string>& folder, const char* rest) {
    return folder ? std::optional(*folder + rest) : std::nullopt;
}

// A missing log is skipped; false when one that is there cannot be moved.
bool shiftLogs(const std::string& folder, const std::string& appName, const Print& print) {
    platform::FileManager& files = *platform::host().files;
    const std::string oldest = logPath(folder, appName, mostLogs);
    if (files.fileExists(oldest)) {
        files.removeItem(oldest);
    }
    for (int number = mostLogs - 1; number >= 1; --number) {
        const std::string from = logPath(folder, appName, number);
        const std::string to = logPath(folder, appName, number + 1);
        if (files.fileExists(from) && files.moveItem(from, to)) {
            print(kz::format("Unable to move file %s to %s.\n", from, to));
            return false;
        }
    }
    return true;
}

}  // namespace

Places places() {
    const bool superuser = platform::host().identity->realUserID() == 0;
    const auto folder = below(KZLocalPaths::libraryDirectory(UserDomain::yes), logsFolder);
    return {
        .preferencesFile = below(KZLocalPaths::prefsDirectory(UserDomain::yes), globalPreferences),
        .folder = folder,
        .currentFolder = superuser ? below(KZLocalPaths::libraryDirectory(UserDomain::no), logsFolder) : folder,
    };
}

std::string logPath(const std::string& folder, const std::string& appName, int number) {
    return kz::format("%@/%@.%li.log", folder, appName, number);
}

bool isDisabledByPreferences(const Places& places) {
    if (!places.preferencesFile) {
        return false;
    }
    const auto preferences = kz::dictionaryWithContentsOfFile(*places.preferencesFile);
    const auto found =
        preferences ? preferences->find("disable-logging") : platform::PropertyDictionary::const_iterator{};
    if (!preferences || found == preferences->end()) {
        return false;
    }
    const platform::PropertyValue& value = found->second;
    const auto* const text = value.as<std::string>();
    const auto* const integer = value.as<std::int64_t>();
    const auto* const real = value.as<double>();
    const auto* const flag = value.as<bool>();
    return (text != nullptr && *text == "1") || (integer != nullptr && *integer == 1) ||
           (real != nullptr && *real == 1) || (flag != nullptr && *flag);
}

bool startNewLog(const Places& places, const std::string& appName, const Print& print) {
    platform::FileManager& files = *platform::host().files;
    const auto& folder = places.folder;
    const bool folderStands =
        folder && (files.fileExists(*folder) || !files.createDirectory(*folder, platform::Intermediates::yes));
    if (!folderStands) {
        print(kz::format("Unable to create folder %s.\n", folder));
        return false;
    }
    const auto current =
        places.currentFolder ? std::optional(logPath(*places.currentFolder, appName, 1)) : std::nullopt;
    if (current && files.fileExists(*current) && !shiftLogs(*folder, appName, print)) {
        return false;
    }
    const platform::Failure failure =
        current ? files.writeAtomically(*current, "") : platform::Error{.code = 0, .description = "there is no folder"};
    if (failure) {
        print(kz::format("Unable to create log file %s - %s\n", current, failure->description));
        return false;
    }
    return true;
}

std::vector<HeaderLine> header() {
    platform::MainBundle& bundle = *platform::host().bundle;
    platform::SystemInfo& system = *platform::host().system;
    std::vector<HeaderLine> lines;
    lines.push_back({kz::format("Log started: %@\n", std::chrono::system_clock::now())});
    if (const auto version = bundle.infoValue("CFBundleVersion")) {
        lines.push_back({kz::format("Version: %@\n", *version)});
    }
    if (const std::string executable = bundle.executablePath(); !executable.empty()) {
        lines.push_back({kz::format("Path: %@\n", executable)});
    }
    const double gigabytes = static_cast<double>(system.physicalMemory()) / bytesPerGigabyte;
    lines.push_back({.text = kz::format("System: macOS %@, %li CPU(s), %0.2f GB RAM\n", system.operatingSystemVersion(),
                                        system.processorCount(), gigabytes),
                     .fast = false});
    lines.push_back({"Running in 64-bit mode\n"});
    return lines;
}

}  // namespace KZLogFiles
