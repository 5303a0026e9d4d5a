#include "app/MakerLinks.h"
#include "app/WickfieldAppDelegate.h"
#include "lib/KZAlert.h"
#include "lib/base/FileURL.h"
#include "platform/ports/Host.h"

namespace {

void openPage(const char* address) { platform::host().workspace->openURL(address); }

}  // namespace

void WickfieldAppDelegate::sendToGantry() {
    auto& workspace = *platform::host().workspace;
    const std::string manager = "com.corvane.Gantry";
    if (workspace.applicationWithIdentifier(manager)) {
        workspace.openURLs({kz::fileURLWithPath(treePath())}, manager);
        return;
    }
    constexpr std::int64_t download = 1;
    const auto answer = KZAlert::alertSheetWithMessageText(
        "This feature requires Tallowmere", "Download", "Cancel", std::nullopt,
        "Gantry gives you more options for installing and managing your plugins.", window(), Block::yes);
    if (answer == download) {
        openPage(MakerLinks::productPage);
    }
}

void WickfieldAppDelegate::getTallowmere() { openPage(MakerLinks::productPage); }

void WickfieldAppDelegate::tallowmereUserManual() { openPage(MakerLinks::userManual); }

void WickfieldAppDelegate::tallowmereSite() { openPage(MakerLinks::productPage); }

void WickfieldAppDelegate::tallowmereSupport() { openPage(MakerLinks::supportPage); }

void WickfieldAppDelegate::corvaneSite() { openPage(MakerLinks::homePage); }
