// A plan, made into a bundle on the disk.
#pragma once

#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/wickfield-bundle/create/BundlePlan.h"
#include "tools/wickfield-bundle/create/StagedBundle.h"

namespace wickfield_bundle {

struct WriteWishes {
    std::string outputFolder;  // made where it is missing, with those above it
    Replace replace = Replace::no;
    bool archives = false;
    std::optional<std::time_t> latestTime;  // no item of the bundle is newer
    std::function<void(const std::string&)> warn;
};

struct WrittenBundle {
    std::string bundle;
    std::optional<std::string> archive;
};

// All or nothing: until everything is written, the archive included, nothing stands under a final name. Blocks. Throws
// CreateFailure, also where something has one of the names that is not to be replaced, and CreateInterrupted.
WrittenBundle writeBundle(const BundlePlan& plan, const WriteWishes& wishes);

}  // namespace wickfield_bundle
