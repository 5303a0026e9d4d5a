// File operations, by topic. All are functions of the namespace KZFileManager, keep no state, may be called from any
// thread and throw nothing.
#pragma once

#include "lib/KZFileManager/Mutations.h"
#include "lib/KZFileManager/Names.h"
#include "lib/KZFileManager/Queries.h"
