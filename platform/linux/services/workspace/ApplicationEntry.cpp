#include "platform/linux/services/workspace/ApplicationEntry.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <variant>

#include "platform/linux/services/files/LinuxFileManager.h"
#include "platform/linux/services/propertylists/LinuxPropertyLists.h"
#include "platform/posix/FileErrors.h"
#include "platform/posix/PathParts.h"
#include "platform/posix/WholeFile.h"

namespace platform::linux_host {

namespace {

constexpr std::uint64_t largestInformation = 1U << 20U;
constexpr std::size_t longestIdentifier = 200;  // with an extension and a temporary name's addition still a file name
constexpr std::string_view bundleExtension = ".app";
constexpr const char* doing = "register the application";

// A string of a desktop entry. Blanks at the ends would be lost.
std::string escaped(std::string_view text) {
    std::string value;
    for (std::size_t i = 0; i < text.size(); ++i) {
        constexpr std::string_view meanings = "\n\t\r\\";
        constexpr std::string_view codes = "ntr\\";
        const auto found = meanings.find(text[i]);
        const bool atAnEnd = i == 0 || i + 1 == text.size();
        if (found != std::string_view::npos) {
            value += {'\\', codes[found]};
        } else if (text[i] == ' ' && atAnEnd) {
            value += "\\s";
        } else {
            value += text[i];
        }
    }
    return value;
}

// One word of a command line in a desktop entry, before it is escaped as a string.
std::string quotedWord(std::string_view word) {
    std::string text = "\"";
    for (const char character : word) {
        if (character == '%') {
            text += '%';
        } else if (std::string_view("\"`$\\").find(character) != std::string_view::npos) {
            text += '\\';
        }
        text += character;
    }
    return text + '"';
}

bool isRegularFile(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool isProgram(const std::string& path) { return isRegularFile(path) && ::access(path.c_str(), X_OK) == 0; }

bool isPlainName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

std::string stringOf(const PropertyDictionary& information, const char* key) {
    const auto found = information.find(key);
    const auto* text = found == information.end() ? nullptr : found->second.as<std::string>();
    return text != nullptr ? *text : std::string();
}

// Empty when the bundle lacks it.
std::string programOf(const std::string& bundle, const std::string& executable) {
    for (const char* folder : {"Contents/Linux", "Contents/MacOS"}) {
        std::string path = posix::joinPath(posix::joinPath(bundle, folder), executable);
        if (isProgram(path)) {
            return path;
        }
    }
    return {};
}

std::string iconOf(const std::string& bundle, const std::string& name) {
    if (!isPlainName(name)) {
        return {};
    }
    const std::string resource = posix::joinPath(posix::joinPath(bundle, "Contents/Resources"), name);
    const std::string stem = name.ends_with(".icns") ? resource.substr(0, resource.size() - 5) : resource;
    for (const std::string& path : {stem + ".svg", stem + ".png", resource}) {  // no desktop reads the others
        if ((path.ends_with(".svg") || path.ends_with(".png")) && isRegularFile(path)) {
            return path;
        }
    }
    return {};
}

std::variant<BundleApplication, int> applicationIn(const std::string& bundle) {
    const auto bytes = posix::readWholeFile(posix::joinPath(bundle, "Contents/Info.plist"), largestInformation);
    if (!bytes) {
        return ENOENT;
    }
    const auto parsed = LinuxPropertyLists().parse(*bytes);
    const auto* value = std::get_if<PropertyValue>(&parsed);
    const auto* information = value != nullptr ? value->as<PropertyDictionary>() : nullptr;
    if (information == nullptr) {
        return EINVAL;
    }
    std::string stem = posix::splitPath(bundle).name;
    stem.resize(stem.size() - bundleExtension.size());
    const auto textOr = [&](const char* key, const std::string& otherwise) {
        std::string text = stringOf(*information, key);
        return text.empty() || text.find('\0') != std::string::npos ? otherwise : text;
    };
    BundleApplication application;
    application.identifier = stringOf(*information, "CFBundleIdentifier");
    const std::string executable = textOr("CFBundleExecutable", stem);
    if (!isUsableIdentifier(application.identifier) || !isPlainName(executable)) {
        return EINVAL;
    }
    application.name = textOr("CFBundleDisplayName", textOr("CFBundleName", stem));
    application.program = programOf(bundle, executable);
    application.icon = iconOf(bundle, stringOf(*information, "CFBundleIconFile"));
    if (application.program.empty()) {
        return ENOEXEC;
    }
    return application;
}

}  // namespace

bool isUsableIdentifier(std::string_view identifier) {
    const auto isUsual = [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
               (character >= '0' && character <= '9') || character == '-' || character == '_' || character == '.';
    };
    return !identifier.empty() && identifier.size() <= longestIdentifier &&
           std::all_of(identifier.begin(), identifier.end(), isUsual) && identifier.front() != '.' &&
           identifier.front() != '-' && identifier.back() != '.' && identifier.find("..") == std::string_view::npos;
}

std::string applicationEntry(const BundleApplication& application) {
    std::string entry = "[Desktop Entry]\nType=Application\nName=" + escaped(application.name) + "\n";
    entry += "TryExec=" + escaped(application.program) + "\n";
    entry += "Exec=" + escaped(quotedWord(application.program) + " %U") + "\n";
    if (!application.icon.empty()) {
        entry += "Icon=" + escaped(application.icon) + "\n";
    }
    return entry + "Terminal=false\n";
}

Failure writeApplicationEntry(const std::string& bundlePath, const std::string& dataFolder) {
    if (Failure refused = posix::refusedPath(doing, bundlePath)) {
        return refused;
    }
    const std::string bundle = posix::withoutTrailingSlashes(bundlePath);
    const std::string name = posix::splitPath(bundle).name;
    if (!bundle.starts_with('/') || !name.ends_with(bundleExtension) || name.size() == bundleExtension.size()) {
        return posix::fileError(doing, bundlePath, EINVAL);
    }
    const auto found = applicationIn(bundle);
    if (const int* code = std::get_if<int>(&found)) {
        return posix::fileError(doing, bundlePath, *code);
    }
    const auto& application = std::get<BundleApplication>(found);
    const std::string folder = posix::joinPath(dataFolder, "applications");
    const std::string path = posix::joinPath(folder, application.identifier + ".desktop");
    const std::string entry = applicationEntry(application);
    if (posix::readWholeFile(path, entry.size()) == entry) {
        return {};
    }
    if (Failure failure = LinuxFileManager().createDirectory(folder, Intermediates::yes)) {
        return failure;
    }
    return posix::replaceFile(path, entry);
}

}  // namespace platform::linux_host
