// The helper program, as this program carries it.
#pragma once

#include <string>

#include "platform/posix/Descriptor.h"

namespace platform::rights {

// The helper is not a file that somebody could replace before it is started with administrator rights: it is a part of
// this program's own executable and is run from memory that is sealed, so that nobody, this process included, can
// change it any more.
class HelperImage {
public:
    HelperImage();

    // Where another program of this machine can execute it while this object lives; empty when it could not be made.
    const std::string& path() const { return m_path; }
    int descriptor() const { return m_memory.get(); }  // for a program that inherits it; negative: there is none
    int error() const { return m_error; }              // an errno that says why; 0: none

private:
    posix::Descriptor m_memory;
    std::string m_path;
    int m_error = 0;
};

}  // namespace platform::rights
