#include "tools/wickfield-bundle/create/StagedBundle.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cerrno>

#include "platform/linux/services/files/ItemPlace.h"
#include "platform/linux/services/files/ItemRemover.h"
#include "platform/linux/services/files/Staging.h"
#include "platform/posix/PathParts.h"
#include "platform/posix/StagedName.h"
#include "tools/wickfield-bundle/create/CreateFailure.h"
#include "tools/wickfield-bundle/create/SourceWalk.h"

namespace wickfield_bundle {

namespace linux_host = platform::linux_host;
namespace posix = platform::posix;

StagedBundle::StagedBundle(const std::string& outputFolder, const std::string& name)
    : m_hidden(posix::joinPath(outputFolder, posix::stagedName())),
      m_staged(posix::joinPath(m_hidden, name)),
      m_final(posix::joinPath(outputFolder, name)) {
    throwWhenFailed(::mkdir(m_hidden.c_str(), S_IRWXU) == 0 ? 0 : errno, "write to", outputFolder);
    // What the folder above hands down to new items is no matter of the bundle's.
    (void)::chmod(m_hidden.c_str(), S_IRWXU);
    (void)::removexattr(m_hidden.c_str(), "system.posix_acl_access");
    (void)::removexattr(m_hidden.c_str(), "system.posix_acl_default");
    int code = ::mkdir(m_staged.c_str(), S_IRWXU) == 0 ? 0 : errno;
    if (code == 0) {
        m_bundle.reset(::open(m_staged.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        code = m_bundle ? 0 : errno;
    }
    if (code != 0) {
        (void)linux_host::removeTree(m_hidden, linux_host::Removal::openingFolders);
        throwWhenFailed(code, "make", m_staged);
    }
}

StagedBundle::~StagedBundle() {
    m_bundle.reset();
    (void)linux_host::removeTree(m_hidden, linux_host::Removal::openingFolders);
}

platform::Failure StagedBundle::publish(Replace replace) {
    const auto from = linux_host::placeAt(m_staged);
    const auto to = linux_host::placeAt(m_final);
    int code = linux_host::renameWithoutReplacing(from, to);
    if (code == EEXIST && replace == Replace::yes) {
        code = ::renameat2(AT_FDCWD, m_staged.c_str(), AT_FDCWD, m_final.c_str(), RENAME_EXCHANGE) == 0 ? 0 : errno;
        if (code == EINVAL || code == ENOSYS) {  // a file system that cannot exchange: two steps
            const auto aside = linux_host::placeAt(posix::joinPath(m_hidden, "replaced"));
            code = linux_host::renameWithoutReplacing(to, aside);
            if (code == 0) {
                code = linux_host::renameWithoutReplacing(from, to);
                if (code != 0) {
                    (void)linux_host::renameWithoutReplacing(aside, to);
                }
            }
        }
    }
    if (code == EEXIST) {
        throw CreateFailure("“" + m_final + "” is there already; --force replaces it");
    }
    throwWhenFailed(code, "make", m_final);
    m_bundle.reset();
    return linux_host::removeTree(m_hidden, linux_host::Removal::openingFolders);
}

}  // namespace wickfield_bundle
