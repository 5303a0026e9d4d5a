// Putting things into a bundle that is being made, wherever in it they belong.
#pragma once

#include <sys/stat.h>

#include <map>
#include <string>
#include <string_view>

#include "platform/posix/Descriptor.h"
#include "tools/wickfield-bundle/create/FileTimes.h"

namespace wickfield_bundle {

// Folders that are missing are made; one that is there is opened up for its owner where it has to be. finish() brings
// all of them to the modes and times that they are to have. Links are not followed. Everything throws CreateFailure.
class BundleFolder {
public:
    explicit BundleFolder(int bundle) : m_bundle(bundle) {}  // not owned

    // The folder that holds the place, such as that of "Contents" for "Contents/Info.plist"; closes the one before.
    int holding(std::string_view place);

    // An empty folder, or one that is there.
    void makeFolder(std::string_view place);

    // A folder that was copied, and that anybody is to look into whatever its source allowed.
    void openToAll(std::string_view place);

    void writeFile(std::string_view place, std::string_view contents);

    // Once, after all else: what was made gets the newest time of the sources and can be read by anybody; folders that
    // were copied get back what they had.
    void finish(const FileTimes& times);

private:
    struct State {
        bool isOurs = false;
        struct stat status {};
    };

    platform::posix::Descriptor open(std::string_view folder);
    platform::posix::Descriptor enter(int above, const std::string& name, const std::string& place);

    int m_bundle;
    platform::posix::Descriptor m_open;
    std::map<std::string, State> m_folders;  // by place; those above come before those below
    std::map<std::string, State> m_files;
};

}  // namespace wickfield_bundle
