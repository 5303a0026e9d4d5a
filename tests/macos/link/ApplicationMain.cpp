// A Mac's program without AppKit: what the portable rooms need of a host when they are linked, and nothing that runs.
#include "platform/ports/ApplicationMain.h"

namespace platform {

int applicationMain(int /*argc*/, char** /*argv*/, MakeDelegate /*makeDelegate*/) { return 1; }

}  // namespace platform
