// What wickfield-bundle can do: one command per source.
#pragma once

#include "tools/commandline/Command.h"

namespace wickfield_bundle {

extern const commandline::Command createCommand;
extern const commandline::Command checkCommand;
extern const commandline::Command showCommand;

}  // namespace wickfield_bundle
