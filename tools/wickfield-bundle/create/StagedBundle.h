// A bundle in the making, under a hidden name beside the one that it is to have.
#pragma once

#include <string>

#include "platform/ports/Error.h"
#include "platform/posix/Descriptor.h"

namespace wickfield_bundle {

enum class Replace { no, yes };

class StagedBundle {
public:
    // Makes an empty bundle folder of the final name in a hidden folder beside it, for the owner alone. `outputFolder`
    // has to be there. Throws CreateFailure.
    StagedBundle(const std::string& outputFolder, const std::string& name);
    ~StagedBundle();  // removes what was not published
    StagedBundle(const StagedBundle&) = delete;
    StagedBundle& operator=(const StagedBundle&) = delete;

    int folder() const { return m_bundle.get(); }
    const std::string& path() const { return m_staged; }  // now
    const std::string& finalPath() const { return m_final; }

    // In one step. With `no` whatever has the name by now is a failure; with `yes` what was there is removed after the
    // exchange. Throws CreateFailure. What comes back is why the replaced one is still there, under a hidden name.
    platform::Failure publish(Replace replace);

private:
    std::string m_hidden;  // the folder that holds the staged bundle
    std::string m_staged;
    std::string m_final;
    platform::posix::Descriptor m_bundle;
};

}  // namespace wickfield_bundle
