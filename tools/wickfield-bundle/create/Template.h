// An installer without anything to install, which bundles are made from.
#pragma once

#include <string>
#include <vector>

#include "platform/ports/PropertyValue.h"

namespace wickfield_bundle {

struct HostKind {
    const char* name;    // as makers call it
    const char* folder;  // of its program, in the bundle's Contents
};
inline constexpr HostKind hostKinds[] = {{"linux", "Linux"}, {"macos", "MacOS"}};

// An application bundle whose Contents have a folder for at least one kind of host.
struct Template {
    std::string path;
    std::vector<std::string> hosts;  // names
    std::string executable;          // name of the program, the same for each host
    platform::PropertyDictionary information;

    // What goes into a bundle's Contents, as paths from there: not the information, which is written anew, nor a
    // signature, which a changed bundle has not.
    std::vector<std::string> parts;
};

struct TemplateWishes {
    std::vector<std::string> paths;  // none: those that were installed with this program
    std::vector<std::string> hosts;  // names; none: whatever the templates are for
};

// The templates for the hosts that are wanted, with the parts for those alone. Throws SenselessProject for a host that
// is unknown or that none of them is for, and for two templates that are for one host; CreateFailure for a folder that
// is no template.
std::vector<Template> chooseTemplates(const TemplateWishes& wishes);

}  // namespace wickfield_bundle
