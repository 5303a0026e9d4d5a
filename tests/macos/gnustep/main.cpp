// The installer as app/main.cpp starts it, with the probe beside it and a look for leaks at its end.
#include <sanitizer/lsan_interface.h>

#include <cstdlib>
#include <memory>

#include "app/WickfieldAppDelegate.h"
#include "platform/ports/ApplicationMain.h"
#include "platform/ports/Host.h"
#include "tests/macos/gnustep/Probe.h"

namespace {

constexpr int leaked = 23;

void endWithoutLeaks() {
    if (__lsan_do_recoverable_leak_check() != 0) {
        std::_Exit(leaked);
    }
}

}  // namespace

int main(int argc, char** argv) {
    return platform::applicationMain(
        argc, argv, [](const platform::Outlets& outlets) -> std::unique_ptr<platform::ApplicationDelegate> {
            platform::host().application->onWillTerminate(endWithoutLeaks);
            auto delegate = std::make_unique<WickfieldAppDelegate>(outlets);
            probe::start(outlets);
            return delegate;
        });
}
