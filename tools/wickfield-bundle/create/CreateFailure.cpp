#include "tools/wickfield-bundle/create/CreateFailure.h"

#include "tools/commandline/Interruption.h"

namespace wickfield_bundle {

void throwWhenInterrupted() {
    if (commandline::isInterrupted()) {
        throw CreateInterrupted();
    }
}

}  // namespace wickfield_bundle
