// An installer made by hand, and a host that it is planned for.
#pragma once

#include <string>

#include "tests/app/AppFixture.h"
#include "tools/wickfield-bundle/show/Planner.h"

class PlannerFixture : public AppFixture {
protected:
    PlannerFixture() { writeSettings("{ KZPluginName = Plug; KZPluginVersion = 1; KZPluginAuthor = Ada; }"); }

    // A place on the disk, and the file of the tree that is to be installed there.
    std::string target(const std::string& file) const { return disk / "target/" + file; }
    std::string inTree(const std::string& file) const { return tree() + target(file); }

    wickfield_bundle::Plan plan() const { return wickfield_bundle::planInstallation(bundle.bundle); }

    // The one with that destination.
    wickfield_bundle::PlannedItem planFor(const std::string& destination) const {
        for (auto& item : plan().items) {
            if (item.destination == destination) {
                return item;
            }
        }
        ADD_FAILURE() << "nothing is planned for " << destination;
        return {};
    }

    static std::string stateOf(const wickfield_bundle::PlannedItem& item) {
        const char* const names[] = {"new", "replaced", "refused", "unknown"};
        return names[static_cast<int>(item.state)] + std::string(item.needsAdministrator ? ", administrator" : "");
    }
    std::string stateFor(const std::string& destination) const { return stateOf(planFor(destination)); }
};
