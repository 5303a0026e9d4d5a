// The installer's logic: fills the window, gates on the agreement, runs the installation and reports its outcome.
#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "platform/ports/ApplicationMain.h"
#include "platform/ports/Controls.h"

// Made once, on the main thread, and kept until the process ends: the installation's thread uses it without owning it.
// Everything runs on the main thread unless a line says otherwise.
class WickfieldAppDelegate : public platform::ApplicationDelegate {
public:
    WickfieldAppDelegate() = default;
    explicit WickfieldAppDelegate(const platform::Outlets& outlets);

    // Outlets. The window owns what they refer to.
    platform::Window* window() const { return m_window; }
    void setWindow(platform::Window* window) { m_window = window; }
    platform::TextField* textPluginName() const { return m_textPluginName; }
    void setTextPluginName(platform::TextField* field) { m_textPluginName = field; }
    platform::TextField* textPluginAuthor() const { return m_textPluginAuthor; }
    void setTextPluginAuthor(platform::TextField* field) { m_textPluginAuthor = field; }
    platform::TextField* textPluginVersion() const { return m_textPluginVersion; }
    void setTextPluginVersion(platform::TextField* field) { m_textPluginVersion = field; }
    platform::ProgressIndicator* spinner() const { return m_spinner; }
    void setSpinner(platform::ProgressIndicator* spinner) { m_spinner = spinner; }
    platform::Button* btnInstall() const { return m_btnInstall; }
    void setBtnInstall(platform::Button* button) { m_btnInstall = button; }
    platform::TextField* tallowmereLinkText() const { return m_tallowmereLinkText; }
    void setTallowmereLinkText(platform::TextField* field) { m_tallowmereLinkText = field; }
    platform::ImageView* bgImageView() const { return m_bgImageView; }
    void setBgImageView(platform::ImageView* view) { m_bgImageView = view; }
    platform::Button* btnGantry() const { return m_btnGantry; }
    void setBtnGantry(platform::Button* button) { m_btnGantry = button; }
    platform::Window* windowEULA() const { return m_windowEULA; }
    void setWindowEULA(platform::Window* window) { m_windowEULA = window; }
    platform::TextView* eulaText() const { return m_eulaText; }
    void setEulaText(platform::TextView* view) { m_eulaText = view; }

    // Start-up, in this order. The settings are read afresh by each.
    void awakeFromNib() override;
    void applicationDidFinishLaunching() override;
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }

    // The agreement's two buttons, and the end of its sheet by either.
    void eulaAgree() override;
    void eulaDisagree() override;
    void eulaDidEnd();

    // Starts the installation on a thread of its own and returns at once. The Install button stays disabled from then
    // on, whatever the outcome: a second attempt needs a new launch. Pressed again before the button is disabled it
    // does nothing.
    void install() override;

    // Hands the tree to the maker's plug-in manager and leaves the rest to it. Where that is not installed, asks
    // whether its page is to be opened instead, and returns once the question is answered.
    void sendToGantry() override;

    // Each opens a page of the maker's in the default browser and returns at once; a browser that cannot be started is
    // not reported. For whatever control a maker's own window connects to them.
    void getTallowmere();
    void tallowmereUserManual();
    void tallowmereSite();
    void tallowmereSupport();
    void corvaneSite();

    // The installation, on its own thread: preinstall script, files, postinstall script, outcome sheet. Blocks until
    // the user has dismissed the sheet. A step that fails leaves what earlier steps did; nothing is rolled back.
    void beginInstallation(const std::string& treePath);

    void startProcessing();
    void stopProcessing();  // does not enable the Install button again
    void disableInstallButton();

    // Any thread. Installs what lies in `folder`, a folder of the tree whose root is `base`, to the same place below
    // "/". False at the first item that could not be put in place; later ones are then left alone. Keeps one listing
    // per level of the tree in memory, nothing per file. A file at the very top of the tree goes to the working
    // directory.
    bool installFromFolder(const std::string& folder, const std::string& base);

    // Any thread. Runs the bundle's script of that name and waits for it, 60 seconds at most. True when it ended with
    // status 0, or when the bundle has no such script.
    bool runScript(const std::string& name);

    // Any thread. The path with the placeholder home folder "/Users/user" replaced by the user's own folders; none when
    // nobody is there whose folders could be meant. A plain text prefix counts, so "/Users/username/x" begins with it
    // too.
    std::optional<std::string> replaceUserPlaceholderInPath(const std::string& path);

private:
    bool installItem(const std::string& source, const std::optional<std::string>& destination);
    void refuseDamagedInstaller();
    void report(const char* title, const char* text);
    std::string treePath() const;

    std::atomic<platform::Window*> m_window = nullptr;
    std::atomic<platform::TextField*> m_textPluginName = nullptr;
    std::atomic<platform::TextField*> m_textPluginAuthor = nullptr;
    std::atomic<platform::TextField*> m_textPluginVersion = nullptr;
    std::atomic<platform::ProgressIndicator*> m_spinner = nullptr;
    std::atomic<platform::Button*> m_btnInstall = nullptr;
    std::atomic<platform::TextField*> m_tallowmereLinkText = nullptr;
    std::atomic<platform::ImageView*> m_bgImageView = nullptr;
    std::atomic<platform::Button*> m_btnGantry = nullptr;
    std::atomic<platform::Window*> m_windowEULA = nullptr;
    std::atomic<platform::TextView*> m_eulaText = nullptr;
    bool m_shouldQuit = false;
    bool m_started = false;  // an installation was; there is one in a process
};
