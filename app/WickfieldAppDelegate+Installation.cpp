#include <thread>
#include <utility>

#include "app/InstallationScripts.h"
#include "app/InstallationTree.h"
#include "app/UserPlaceholders.h"
#include "app/WickfieldAppDelegate.h"
#include "lib/KZAlert.h"
#include "lib/KZFileManager.h"
#include "lib/KZTaskEx.h"
#include "lib/base/PathText.h"
#include "platform/ports/Host.h"

namespace {

constexpr std::chrono::seconds fileTimeout{10};
constexpr KZTaskEx::Seconds scriptTimeout{60.0};

}  // namespace

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
    if (!runScript(InstallationScripts::before)) {
        mainThread.performAndWait([this] { stopProcessing(); });
        report("Installation failed", "A script terminated the installation.");
        return;
    }
    if (!installFromFolder(treePath, treePath)) {
        mainThread.performAndWait([this] { stopProcessing(); });
        report("Installation failed", "Please check your permissions.");
        return;
    }
    const bool finished = runScript(InstallationScripts::after);
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
    return InstallationTree::visitItems(folder, base, [this](const InstallationTree::Item& item) {
        return installItem(item.source, replaceUserPlaceholderInPath(item.path));
    });
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
    const auto script = InstallationScripts::find(bundle.resourcePath(), name);
    return !script || KZTaskEx::terminationCodeFromTask(script->interpreter, {script->path, bundle.bundlePath()},
                                                        scriptTimeout) == 0;
}

std::optional<std::string> WickfieldAppDelegate::replaceUserPlaceholderInPath(const std::string& path) {
    return UserPlaceholders::replaced(path);
}

void WickfieldAppDelegate::report(const char* title, const char* text) {
    KZAlert::alertSheetWithMessageText(title, text, window());
}

std::string WickfieldAppDelegate::treePath() const {
    return kz::appendPathComponent(platform::host().bundle->bundlePath(), InstallationTree::pathInBundle);
}
