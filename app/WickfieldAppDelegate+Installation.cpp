#include <array>
#include <string_view>
#include <thread>
#include <utility>

#include "app/WickfieldAppDelegate.h"
#include "lib/KZAlert.h"
#include "lib/KZFileManager.h"
#include "lib/KZLocalPaths.h"
#include "lib/KZTaskEx.h"
#include "lib/base/PathText.h"
#include "platform/ports/Host.h"

namespace {

constexpr std::chrono::seconds fileTimeout{10};
constexpr KZTaskEx::Seconds scriptTimeout{60.0};

struct Interpreter {
    const char* extension;
    const char* tool;
};
constexpr std::array<Interpreter, 3> interpreters{
    {{"scpt", "/usr/bin/osascript"}, {"swift", "/usr/bin/swift"}, {"sh", "/bin/bash"}}};

struct Placeholder {
    std::string_view prefix;
    std::optional<std::string> (*folder)();
};
constexpr std::array<Placeholder, 4> placeholders{{
    {"/Users/user/Library/Preferences", [] { return KZLocalPaths::prefsDirectory(UserDomain::yes); }},
    {"/Users/user/Library/Application Support", [] { return KZLocalPaths::appSupportDirectory(UserDomain::yes); }},
    {"/Users/user/Documents", [] { return KZLocalPaths::documentDirectory(UserDomain::yes); }},
    {"/Users/user", [] { return KZLocalPaths::userDirectory(); }},
}};

}  // namespace

struct WickfieldAppDelegate::Level {
    std::string folder;
    std::optional<platform::FileIdentity> identity;
    const Level* parent;

    // Whether the folder that `other` leads to is this one or one above it.
    bool liesWithin(const platform::FileIdentity& other) const {
        for (const auto* level = this; level != nullptr; level = level->parent) {
            if (level->identity == other) {
                return true;
            }
        }
        return false;
    }
};

void WickfieldAppDelegate::install() {
    const auto tree = treePath();
    if (!platform::host().files->fileExists(tree)) {
        refuseDamagedInstaller();
        return;
    }
    if (std::exchange(m_started, true)) {
        return;
    }
    std::thread([this, tree] { beginInstallation(tree); }).detach();
}

void WickfieldAppDelegate::beginInstallation(const std::string& treePath) {
    auto& mainThread = *platform::host().mainThread;
    mainThread.performAndWait([this] { startProcessing(); });
    if (!runScript("preinstall")) {
        mainThread.performAndWait([this] { stopProcessing(); });
        report("Installation failed", "A script terminated the installation.");
        return;
    }
    if (!installFromFolder(treePath, treePath)) {
        mainThread.performAndWait([this] { stopProcessing(); });
        report("Installation failed", "Please check your permissions.");
        return;
    }
    const bool finished = runScript("postinstall");
    mainThread.performAndWait([this] { stopProcessing(); });
    if (!finished) {
        report("Installation failed", "A script terminated the installation.");
        return;
    }
    mainThread.performAndWait([this] { disableInstallButton(); });
    report("Installation complete", "The plugin was successfully installed.");
}

void WickfieldAppDelegate::startProcessing() {
    btnInstall()->setEnabled(false);
    spinner()->startAnimation();
}

void WickfieldAppDelegate::stopProcessing() { spinner()->stopAnimation(); }

void WickfieldAppDelegate::disableInstallButton() { btnInstall()->setEnabled(false); }

bool WickfieldAppDelegate::installFromFolder(const std::string& folder, const std::string& base) {
    return installLevel({folder, platform::host().files->identity(folder), nullptr}, base);
}

bool WickfieldAppDelegate::installLevel(const Level& level, const std::string& base) {
    const auto entries = platform::host().files->contentsOfDirectory(level.folder);
    if (!entries) {
        return true;
    }
    for (const auto& entry : *entries) {
        if (!installEntry(level, entry, base)) {
            return false;
        }
    }
    return true;
}

bool WickfieldAppDelegate::installEntry(const Level& level, const platform::DirectoryEntry& entry,
                                        const std::string& base) {
    auto& files = *platform::host().files;
    const auto source = kz::appendPathComponent(level.folder, entry.name);
    const bool mayBeFolder = entry.type != platform::FileType::regular;
    if (mayBeFolder && files.isFolder(source) && !platform::host().workspace->isFilePackage(source)) {
        const auto identity = files.identity(source);
        // A link back to a folder on the way here is installed as the link that it is, or the walk would never end.
        if (!identity || !level.liesWithin(*identity)) {
            return installLevel({source, identity, &level}, base);
        }
    }
    if (entry.name.starts_with(".")) {
        return true;
    }
    const auto relative = kz::appendPathComponent(level.folder.substr(base.size()), entry.name);
    return installItem(source, replaceUserPlaceholderInPath(relative));
}

bool WickfieldAppDelegate::installItem(const std::string& source, const std::optional<std::string>& destination) {
    if (destination) {
        const auto parent = kz::deletingLastPathComponent(*destination);
        if (!KZFileManager::fileExistsAtPath(parent)) {
            KZFileManager::createDirectory(parent, fileTimeout);
        }
        if (KZFileManager::fileExistsAtPath(*destination) && !KZFileManager::trashFile(*destination, fileTimeout)) {
            return false;
        }
    }
    if (!KZFileManager::copyFile(source, destination, fileTimeout)) {
        return false;
    }
    KZFileManager::touchFile(destination);
    return true;
}

bool WickfieldAppDelegate::runScript(const std::string& name) {
    auto& bundle = *platform::host().bundle;
    const auto base = bundle.resourcePath() + "/" + name;
    for (const auto& interpreter : interpreters) {
        const auto script = base + "." + interpreter.extension;
        if (platform::host().files->fileExists(script)) {
            return KZTaskEx::terminationCodeFromTask(interpreter.tool, {script, bundle.bundlePath()}, scriptTimeout) ==
                   0;
        }
    }
    return true;
}

std::optional<std::string> WickfieldAppDelegate::replaceUserPlaceholderInPath(const std::string& path) {
    for (const auto& placeholder : placeholders) {
        if (path.starts_with(placeholder.prefix)) {
            const auto folder = placeholder.folder();
            return folder ? std::optional(kz::appendPathComponent(*folder, path.substr(placeholder.prefix.size())))
                          : std::nullopt;
        }
    }
    return path;
}

void WickfieldAppDelegate::report(const char* title, const char* text) {
    KZAlert::alertSheetWithMessageText(title, text, window());
}

std::string WickfieldAppDelegate::treePath() const {
    return kz::appendPathComponent(platform::host().bundle->bundlePath(), "Contents/Resources/PluginStructure");
}
