#include "tools/wickfield-bundle/create/BundlePlan.h"

#include <algorithm>
#include <set>

#include "app/InstallationScripts.h"
#include "app/InstallationTree.h"
#include "app/InstallerSettings.h"
#include "lib/base/PathText.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/create/BundleNames.h"
#include "tools/wickfield-bundle/create/CreateFailure.h"
#include "tools/wickfield-bundle/create/Destinations.h"
#include "tools/wickfield-bundle/create/SourceWalk.h"

namespace wickfield_bundle {

namespace {

constexpr const char* resources = "Contents/Resources";

class Planner {
public:
    Planner(const Project& project, const std::vector<Template>& templates,
            const std::function<void(const std::string&)>& warn)
        : m_project(project), m_templates(templates), m_warn(warn) {}

    BundlePlan plan() {
        m_plan.name = installerName(m_project);
        checkText("version", m_project.version);
        checkText("author", m_project.author);
        describe();
        addTemplates();
        addResource("agreement", m_project.agreement, InstallerSettings::agreementKey);
        addResource("background", m_project.background, InstallerSettings::backgroundKey);
        addScript(InstallationScripts::before, m_project.preinstall);
        addScript(InstallationScripts::after, m_project.postinstall);
        addTree();
        checkSources();
        return std::move(m_plan);
    }

private:
    void checkText(const char* what, const std::string& text) const {
        if (!isOneLine(text)) {
            throw SenselessProject(std::string("the ") + what +
                                   " has a control character or a line break, or is no UTF-8");
        }
        if (text.empty()) {
            m_warn(std::string("there is no ") + what + ", and the installer's window will show “(null)” for it");
        }
    }

    void describe() {
        auto& information = m_plan.information;
        for (const Template& each : m_templates) {
            information.insert(each.information.begin(), each.information.end());
        }
        const std::string& version = m_project.version;
        const auto set = [&](const char* key, const std::string& value) { information[key].value = value; };
        set("CFBundleDevelopmentRegion", "en");
        set("CFBundleExecutable", m_templates.front().executable);
        set("CFBundleIdentifier", bundleIdentifier(m_project));
        set("CFBundleInfoDictionaryVersion", "6.0");
        set("CFBundleName", m_plan.name);
        set("CFBundlePackageType", "APPL");
        set("CFBundleShortVersionString", version.empty() ? "1" : version);
        set("CFBundleVersion", numericVersion(version));

        auto& settings = m_plan.settings;
        settings[InstallerSettings::nameKey].value = m_project.name;
        if (!version.empty()) {
            settings[InstallerSettings::versionKey].value = version;
        }
        if (!m_project.author.empty()) {
            settings[InstallerSettings::authorKey].value = m_project.author;
        }
        settings[InstallerSettings::removesBrandingKey].value = m_project.removesBranding;
        reserve(std::string(InstallerSettings::fileName) + "." + InstallerSettings::fileType);
        reserve(kz::lastPathComponent(InstallationTree::pathInBundle));
    }

    void addTemplates() {
        for (const Template& each : m_templates) {
            for (const std::string& part : each.parts) {
                const std::string place = kz::appendPathComponent("Contents", part);
                if (!m_places.insert(place).second) {
                    throw SenselessProject("two templates, or a template and the installer itself, have a “" + place +
                                           "”");
                }
                m_plan.copies.push_back(
                    {kz::appendPathComponent(kz::appendPathComponent(each.path, "Contents"), part), place});
            }
        }
    }

    // Under its own name, which the settings tell.
    void addResource(const char* what, const std::optional<std::string>& path, const char* key) {
        if (!path) {
            return;
        }
        checkIsThere(what, *path);
        const std::string name = kz::lastPathComponent(*path);
        if (const std::string objection = objectionToFileName(name); !objection.empty()) {
            throw SenselessProject(std::string("the ") + what + "'s file name “" + name + "” " + objection);
        }
        m_plan.settings[key].value = name;
        copyResource(what, *path, name);
    }

    void addScript(const char* name, const std::optional<std::string>& path) {
        if (!path) {
            return;
        }
        checkIsThere(name, *path);
        const std::string extension = kz::pathExtension(*path);
        const auto known = InstallationScripts::interpreters();
        if (std::ranges::none_of(known, [&](const auto& each) { return extension == each.extension; })) {
            throw SenselessProject("the " + std::string(name) + " script “" + *path +
                                   "” has to end in .sh, .swift or .scpt, which tells what runs it");
        }
        if (platform::host().files->isFolder(*path)) {
            throw SenselessProject("the " + std::string(name) + " script “" + *path + "” is a folder");
        }
        copyResource(name, *path, std::string(name) + "." + extension);
    }

    void copyResource(const char* what, const std::string& path, const std::string& name) {
        const std::string place = kz::appendPathComponent(resources, name);
        if (!m_places.insert(place).second) {
            throw SenselessProject(std::string("the ") + what + " “" + path + "” cannot have the name “" + name +
                                   "” in the bundle, since something else there has it; rename the file");
        }
        m_plan.copies.push_back({path, place});
    }

    static void checkIsThere(const char* what, const std::string& path) {
        if (!platform::host().files->fileExists(path)) {
            throw CreateFailure("the " + std::string(what) + " “" + path + "” is not there");
        }
    }

    void addTree() {
        if (!m_project.tree && m_project.items.empty()) {
            throw SenselessProject("there is nothing to install: name it by --item or --tree, or in a project file");
        }
        if (m_project.tree) {
            checkIsThere("tree", *m_project.tree);
            if (!platform::host().files->isFolder(*m_project.tree)) {
                throw SenselessProject("the tree “" + *m_project.tree + "” is no folder");
            }
            m_plan.copies.push_back({*m_project.tree, InstallationTree::pathInBundle});
        }
        for (const PlacedItem& item : placeItems(m_project)) {
            m_plan.copies.push_back({item.source, kz::appendPathComponent(InstallationTree::pathInBundle, item.place)});
        }
    }

    void checkSources() const {
        for (const PlannedCopy& copy : m_plan.copies) {
            if (const std::string problem = findUncopyable(copy.source); !problem.empty()) {
                throw CreateFailure(problem);
            }
        }
    }

    void reserve(const std::string& resource) { m_places.insert(kz::appendPathComponent(resources, resource)); }

    const Project& m_project;
    const std::vector<Template>& m_templates;
    const std::function<void(const std::string&)>& m_warn;
    BundlePlan m_plan;
    std::set<std::string> m_places;
};

}  // namespace

BundlePlan planBundle(const Project& project, const std::vector<Template>& templates,
                      const std::function<void(const std::string&)>& warn) {
    return Planner(project, templates, warn).plan();
}

}  // namespace wickfield_bundle
