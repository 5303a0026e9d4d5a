// What kzfile can do: one command per source.
#pragma once

#include "tools/commandline/Command.h"

namespace kzfile {

using commandline::Arguments;
using commandline::Command;
using commandline::done;
using commandline::failed;
using commandline::Option;
using commandline::UsageError;

extern const Command hashCommand;
extern const Command copyCommand;
extern const Command trashCommand;
extern const Command expandCommand;
extern const Command uniqueCommand;
extern const Command compressCommand;
extern const Command decompressCommand;
extern const Command metadataCommand;
extern const Command sizeCommand;
extern const Command waitCommand;

}  // namespace kzfile
