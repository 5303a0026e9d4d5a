#include <memory>

#include "app/WickfieldAppDelegate.h"
#include "platform/ports/ApplicationMain.h"

int main(int argc, char** argv) {
    return platform::applicationMain(
        argc, argv, [](const platform::Outlets& outlets) -> std::unique_ptr<platform::ApplicationDelegate> {
            return std::make_unique<WickfieldAppDelegate>(outlets);
        });
}
