// File operations, by topic. All are functions of the namespace KZFileManager, keep no state of their own, may be
// called from any thread and throw nothing, unless a line says otherwise. Each of them blocks until it is done. Paths
// are absolute and used as they stand.
#pragma once

#include "lib/KZFileManager/BulkMutations.h"
#include "lib/KZFileManager/Copying.h"
#include "lib/KZFileManager/FileDigest.h"
#include "lib/KZFileManager/FileReference.h"
#include "lib/KZFileManager/Hashing.h"
#include "lib/KZFileManager/Metadata.h"
#include "lib/KZFileManager/Mutations.h"
#include "lib/KZFileManager/Names.h"
#include "lib/KZFileManager/Queries.h"
#include "lib/KZFileManager/Waiting.h"
