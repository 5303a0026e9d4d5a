#include "app/WickfieldAppDelegate.h"

#include <utility>

#include "app/InstallerSettings.h"
#include "app/MakerLinks.h"
#include "app/NSString+Hyperlink.h"
#include "lib/KZAlert.h"
#include "platform/ports/Host.h"

WickfieldAppDelegate::WickfieldAppDelegate(const platform::Outlets& outlets)
    : m_window(outlets.window),
      m_textPluginName(outlets.textPluginName),
      m_textPluginAuthor(outlets.textPluginAuthor),
      m_textPluginVersion(outlets.textPluginVersion),
      m_spinner(outlets.spinner),
      m_btnInstall(outlets.btnInstall),
      m_tallowmereLinkText(outlets.tallowmereLinkText),
      m_bgImageView(outlets.bgImageView),
      m_btnGantry(outlets.btnGantry),
      m_windowEULA(outlets.windowEULA),
      m_eulaText(outlets.eulaText) {}

void WickfieldAppDelegate::awakeFromNib() {
    if (platform::host().system->environmentVariable("KZTESTMODE")) {
        return;
    }
    const auto file = InstallerSettings::locate();
    if (!file) {
        refuseDamagedInstaller();
        return;
    }
    const auto settings = InstallerSettings::load(*file);
    textPluginName()->setStringValue(settings.pluginName());
    textPluginVersion()->setStringValue(settings.pluginVersion());
    textPluginAuthor()->setStringValue(settings.author());
    window()->setTitle(settings.windowTitle());

    tallowmereLinkText()->setSelectable(true);
    tallowmereLinkText()->setAllowsEditingTextAttributes(true);
    platform::AttributedString branding{{.text = "Installer created with "}};
    for (auto& run : hyperlinkFromString("Tallowmere", MakerLinks::productPage)) {
        branding.push_back(std::move(run));
    }
    branding.push_back({.text = " by Corvane."});
    tallowmereLinkText()->setAttributedStringValue(branding);

    if (const auto image = settings.backgroundImage()) {
        bgImageView()->setImage(platform::host().application->loadImage(*image));
    }
    if (settings.removesBranding()) {
        tallowmereLinkText()->setHidden(true);
        btnGantry()->setHidden(true);
    }
}

void WickfieldAppDelegate::applicationDidFinishLaunching() {
    const auto file = InstallerSettings::locate();
    if (!file) {
        refuseDamagedInstaller();
        return;
    }
    const auto agreement = InstallerSettings::load(*file).agreement();
    if (!agreement) {
        return;
    }
    auto& application = *platform::host().application;
    eulaText()->setDocument(application.loadDocument(*agreement));
    eulaText()->setStandardTextColor();
    eulaText()->setEditable(false);
    application.beginSheet(*windowEULA(), *window(), [this] { eulaDidEnd(); });
}

void WickfieldAppDelegate::eulaAgree() {
    platform::host().application->endSheet(*windowEULA());
    windowEULA()->orderOut();
}

void WickfieldAppDelegate::eulaDisagree() {
    m_shouldQuit = true;
    platform::host().application->endSheet(*windowEULA());
    windowEULA()->orderOut();
    platform::host().application->terminate();
}

void WickfieldAppDelegate::eulaDidEnd() {
    windowEULA()->orderOut();
    if (m_shouldQuit) {
        platform::host().application->terminate();
    }
}

void WickfieldAppDelegate::refuseDamagedInstaller() {
    platform::host().application->runAlertPanel("Unable to install", "This installer has been damaged.");
    platform::host().application->terminate();
}
