#include "tools/wickfield-bundle/create/Template.h"

#include <algorithm>
#include <optional>

#include "app/InstallationTree.h"
#include "app/InstallerSettings.h"
#include "lib/base/PathText.h"
#include "lib/base/PropertyText.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/create/CreateFailure.h"

namespace wickfield_bundle {

namespace {

constexpr const char* templatesFolder = "../share/wickfield/templates";  // from the program's own
constexpr const char* executableKey = "CFBundleExecutable";
constexpr const char* usualExecutable = "Wickfield";

std::string joined(const std::string& folder, const std::string& name) { return kz::appendPathComponent(folder, name); }

std::vector<std::string> sortedNames(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry :
         platform::host().files->contentsOfDirectory(folder).value_or(std::vector<platform::DirectoryEntry>{})) {
        names.push_back(entry.name);
    }
    std::ranges::sort(names);
    return names;
}

bool isWanted(const std::string& host, const std::vector<std::string>& wanted) {
    return wanted.empty() || std::ranges::find(wanted, host) != wanted.end();
}

const HostKind* kindOfFolder(const std::string& folder) {
    const auto* const found =
        std::ranges::find_if(hostKinds, [&](const HostKind& kind) { return folder == kind.folder; });
    return found == std::end(hostKinds) ? nullptr : found;
}

std::string executableName(const platform::PropertyDictionary& information) {
    const auto found = information.find(executableKey);
    const auto* const name = found == information.end() ? nullptr : found->second.as<std::string>();
    return name == nullptr ? usualExecutable : *name;
}

void checkProgram(const std::string& contents, const std::string& folder, const std::string& executable) {
    const std::string program = joined(joined(contents, folder), executable);
    if (!platform::host().files->isExecutable(program) || platform::host().files->isFolder(program)) {
        throw CreateFailure("the template's program “" + program + "” is not there or cannot be executed");
    }
}

void checkIsNoInstaller(const Template& present) {
    const std::string resources = joined(present.path, "Contents/Resources");
    const std::string settings =
        joined(resources, std::string(InstallerSettings::fileName) + "." + InstallerSettings::fileType);
    if (platform::host().files->fileExists(settings) ||
        platform::host().files->fileExists(joined(present.path, InstallationTree::pathInBundle))) {
        throw CreateFailure("“" + present.path + "” is an installer already, and no template for others");
    }
}

Template readTemplate(const std::string& path, const std::vector<std::string>& wanted) {
    Template result{.path = path, .hosts = {}, .executable = {}, .information = {}, .parts = {}};
    const std::string contents = joined(path, "Contents");
    result.information =
        kz::dictionaryWithContentsOfFile(joined(contents, "Info.plist")).value_or(platform::PropertyDictionary{});
    result.executable = executableName(result.information);
    bool hasHost = false;
    for (const std::string& name : sortedNames(contents)) {
        if (const HostKind* const kind = kindOfFolder(name)) {
            hasHost = true;
            if (isWanted(kind->name, wanted)) {
                checkProgram(contents, name, result.executable);
                result.hosts.emplace_back(kind->name);
                result.parts.push_back(name);
            }
        } else if (name == "Resources") {
            for (const std::string& resource : sortedNames(joined(contents, name))) {
                result.parts.push_back(joined(name, resource));
            }
        } else if (name != "Info.plist" && name != "_CodeSignature") {
            result.parts.push_back(name);
        }
    }
    if (!hasHost) {
        throw CreateFailure("“" + path + "” is no template: it has neither Contents/Linux nor Contents/MacOS");
    }
    checkIsNoInstaller(result);
    return result;
}

std::vector<std::string> installedTemplates() {
    const std::string program = platform::host().bundle->executablePath();
    const std::string folder = joined(kz::deletingLastPathComponent(program), templatesFolder);
    std::vector<std::string> paths;
    for (const std::string& host : sortedNames(folder)) {
        for (const std::string& name : sortedNames(joined(folder, host))) {
            if (name.ends_with(".app")) {
                paths.push_back(joined(joined(folder, host), name));
            }
        }
    }
    if (paths.empty()) {
        throw CreateFailure("there is no template at “" + folder +
                            "”: name one by --template, or install wickfield-bundle with its templates");
    }
    return paths;
}

void checkHosts(const std::vector<Template>& templates, const std::vector<std::string>& wanted) {
    for (const auto& kind : hostKinds) {
        const auto serves = [&](const Template& each) {
            return std::ranges::find(each.hosts, kind.name) != each.hosts.end();
        };
        const auto count = std::ranges::count_if(templates, serves);
        if (count > 1) {
            throw SenselessProject(std::string("two templates are for ") + kind.name + "; leave out one of them");
        }
        if (count == 0 && std::ranges::find(wanted, kind.name) != wanted.end()) {
            throw SenselessProject(std::string("no template is for ") + kind.name +
                                   "; name one by --template, or leave out the host");
        }
    }
}

}  // namespace

std::vector<Template> chooseTemplates(const TemplateWishes& wishes) {
    for (const std::string& host : wishes.hosts) {
        if (std::ranges::find(hostKinds, host, &HostKind::name) == std::end(hostKinds)) {
            throw SenselessProject("the host “" + host + "” is unknown; there are linux and macos");
        }
    }
    std::vector<Template> templates;
    for (const std::string& path : wishes.paths.empty() ? installedTemplates() : wishes.paths) {
        templates.push_back(readTemplate(path, wishes.hosts));
    }
    std::erase_if(templates, [](const Template& each) { return each.hosts.empty(); });
    checkHosts(templates, wishes.hosts);
    if (std::ranges::any_of(templates,
                            [&](const Template& each) { return each.executable != templates[0].executable; })) {
        throw SenselessProject("the templates' programs have different names");
    }
    return templates;
}

}  // namespace wickfield_bundle
