// Installs a bundle by the installer's own code, without a window: install_runner BUNDLE HOME
//
// Runs the scripts and puts the tree in place for an ordinary user with that home folder. Ends with 0 when all of it
// was done, with 1 when the installer would show a failure and with 2 for a senseless command line. An administrator is
// never asked; the superuser has his own rights.
#include <cstdio>
#include <string>

#include "app/InstallationScripts.h"
#include "app/InstallationTree.h"
#include "app/WickfieldAppDelegate.h"
#include "lib/KZLog.h"
#include "lib/base/PathText.h"
#include "platform/linux/services/LinuxHost.h"
#include "platform/linux/services/LinuxMainBundle.h"
#include "tools/wickfield-bundle/show/Customer.h"

int main(int count, char** words) {
    if (count != 3) {
        std::fputs("usage: install_runner BUNDLE HOME\n", stderr);
        return 2;
    }
    const std::string path = words[1];
    platform::setHost(platform::linux_host::services());
    const wickfield_bundle::Customer customer(words[2]);
    platform::linux_host::LinuxMainBundle bundle(*platform::host().propertyLists, path + "/Contents/Linux/Wickfield");
    auto host = customer.host();
    host.bundle = &bundle;
    const platform::ScopedHost scope(host);

    WickfieldAppDelegate delegate;
    const std::string tree = kz::appendPathComponent(bundle.bundlePath(), InstallationTree::pathInBundle);
    const bool done = delegate.runScript(InstallationScripts::before) && delegate.installFromFolder(tree, tree) &&
                      delegate.runScript(InstallationScripts::after);
    KZLog::finishWriting();
    return done ? 0 : 1;
}
