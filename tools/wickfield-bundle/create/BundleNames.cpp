#include "tools/wickfield-bundle/create/BundleNames.h"

#include <algorithm>
#include <cctype>

#include "platform/linux/services/propertylists/Unicode.h"
#include "tools/wickfield-bundle/create/CreateFailure.h"

namespace wickfield_bundle {

namespace {

constexpr std::size_t longestFileName = 255;  // bytes
constexpr std::string_view longestEnding = ".app";

bool isPlain(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }

// Lower-case words joined by "-": "Orrin Audio Ltd." is "orrin-audio-ltd".
std::string identifierPart(std::string_view text) {
    std::string part;
    for (const char c : text) {
        if (isPlain(c)) {
            part += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        } else if (!part.empty() && part.back() != '-') {
            part += '-';
        }
    }
    while (part.ends_with('-')) {
        part.pop_back();
    }
    return part;
}

bool isIdentifier(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return isPlain(c) || c == '-' || c == '.'; }) &&
           text.find('.') != std::string_view::npos && text.find("..") == std::string_view::npos &&
           !text.starts_with('.') && !text.ends_with('.') && text.size() <= longestFileName;
}

}  // namespace

bool isOneLine(std::string_view text) {
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
    return platform::linux_host::isUtf8(text) && std::ranges::none_of(text, isControl);
}

std::string objectionToFileName(std::string_view name) {
    if (name.empty()) {
        return "is empty";
    }
    if (name.find('/') != std::string_view::npos) {
        return "holds a “/”, which no file name can";
    }
    if (!isOneLine(name)) {
        return "holds a control character or is no UTF-8";
    }
    return name.size() > longestFileName ? "is longer than the 255 bytes of a file name" : "";
}

std::string installerName(const Project& project) {
    if (project.name.empty()) {
        throw SenselessProject("the plug-in has no name: give it by --name or as “name” in the project file");
    }
    std::string installer = project.name + " Installer";
    const std::string objection = objectionToFileName(installer + std::string(longestEnding));
    if (!objection.empty()) {
        throw SenselessProject("the name “" + project.name + "” cannot be a bundle's: “" + installer + ".app” " +
                               objection);
    }
    if (project.name.starts_with('.')) {
        throw SenselessProject("the name “" + project.name + "” would hide the bundle: let it not begin with “.”");
    }
    return installer;
}

std::string bundleIdentifier(const Project& project) {
    if (!project.identifier.empty()) {
        if (!isIdentifier(project.identifier)) {
            throw SenselessProject("the identifier “" + project.identifier +
                                   "” is none: it has letters, digits and “-” in parts between “.”, as in "
                                   "com.example.reverb.installer");
        }
        return project.identifier;
    }
    const std::string name = identifierPart(project.name);
    const std::string author = identifierPart(project.author);
    if (name.empty() || (author.empty() && !project.author.empty())) {
        throw SenselessProject("no identifier can be made of the name and the author: give one by --identifier");
    }
    return "com." + (author.empty() ? "" : author + ".") + name + ".installer";
}

std::string numericVersion(std::string_view version) {
    std::string number;
    int parts = 0;
    for (std::size_t at = 0; at < version.size() && parts < 3; ++parts) {
        std::size_t end = at;
        while (end < version.size() && version[end] >= '0' && version[end] <= '9') {
            ++end;
        }
        if (end == at) {
            break;
        }
        number += (number.empty() ? "" : ".") + std::string(version.substr(at, end - at));
        at = end < version.size() && version[end] == '.' ? end + 1 : version.size();
    }
    return number.empty() ? "1" : number;
}

}  // namespace wickfield_bundle
