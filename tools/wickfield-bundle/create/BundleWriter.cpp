#include "tools/wickfield-bundle/create/BundleWriter.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "app/InstallationTree.h"
#include "app/InstallerSettings.h"
#include "lib/base/PathText.h"
#include "platform/linux/services/files/ItemPlace.h"
#include "platform/linux/services/files/Staging.h"
#include "platform/linux/tools/archive/Interruption.h"
#include "platform/linux/tools/archive/OpenFileLimit.h"
#include "platform/linux/tools/archive/ToolFailure.h"
#include "platform/linux/tools/archive/TreeArchiver.h"
#include "platform/ports/Host.h"
#include "platform/posix/StagedName.h"
#include "tools/wickfield-bundle/create/BundleFolder.h"
#include "tools/wickfield-bundle/create/CreateFailure.h"
#include "tools/wickfield-bundle/create/OutputPlace.h"
#include "tools/wickfield-bundle/create/SourceCopier.h"
#include "tools/wickfield-bundle/create/SourceWalk.h"

namespace wickfield_bundle {

namespace linux_host = platform::linux_host;
namespace posix = platform::posix;

namespace {

// The archive of a staged bundle, under a hidden name until the bundle has its own.
class StagedArchive {
public:
    StagedArchive(const StagedBundle& bundle, std::string path, const std::function<void(const std::string&)>& warn)
        : m_final(std::move(path)), m_staged(posix::stagedSibling(m_final)) {
        linux_host::allowManyOpenFiles();
        try {
            linux_host::archiveTree(bundle.path(), m_staged, linux_host::KeepParent::yes, warn,
                                    linux_host::ClockTimes::universal);
        } catch (const linux_host::Interrupted&) {
            throw CreateInterrupted();
        } catch (const linux_host::ToolFailure& failure) {
            throw CreateFailure(failure.what());
        }
    }
    ~StagedArchive() { (void)::unlink(m_staged.c_str()); }
    StagedArchive(const StagedArchive&) = delete;
    StagedArchive& operator=(const StagedArchive&) = delete;

    void publish(Replace replace) {
        const int code = replace == Replace::yes ? (::rename(m_staged.c_str(), m_final.c_str()) == 0 ? 0 : errno)
                                                 : linux_host::renameWithoutReplacing(linux_host::placeAt(m_staged),
                                                                                      linux_host::placeAt(m_final));
        throwWhenFailed(code, "make", m_final);
    }

private:
    std::string m_final;
    std::string m_staged;
};

void fill(const StagedBundle& staged, const BundlePlan& plan, const WriteWishes& wishes) {
    FileTimes times(wishes.latestTime);
    SourceCopier copier(times, wishes.warn);
    BundleFolder bundle(staged.folder());
    for (const PlannedCopy& copy : plan.copies) {
        copier.copy(copy.source, bundle.holding(copy.place), kz::lastPathComponent(copy.place));
        if (copy.place == InstallationTree::pathInBundle) {
            bundle.openToAll(copy.place);
        }
    }
    bundle.makeFolder(InstallationTree::pathInBundle);
    auto& propertyLists = *platform::host().propertyLists;
    bundle.writeFile("Contents/Info.plist", propertyLists.serialize({plan.information}));
    bundle.writeFile(
        std::string("Contents/Resources/") + InstallerSettings::fileName + "." + InstallerSettings::fileType,
        propertyLists.serialize({plan.settings}));
    bundle.finish(times);
}

}  // namespace

WrittenBundle writeBundle(const BundlePlan& plan, const WriteWishes& wishes) {
    WrittenBundle written{.bundle = kz::appendPathComponent(wishes.outputFolder, plan.bundleName()),
                          .archive = std::nullopt};
    if (wishes.archives) {
        written.archive = kz::appendPathComponent(wishes.outputFolder, plan.archiveName());
    }
    std::vector<std::string> sources;
    for (const PlannedCopy& copy : plan.copies) {
        sources.push_back(copy.source);
    }
    prepareOutput({wishes.outputFolder, written.bundle, written.archive}, wishes.replace, sources);
    StagedBundle staged(wishes.outputFolder, plan.bundleName());
    fill(staged, plan, wishes);
    std::optional<StagedArchive> archive;
    if (written.archive) {
        archive.emplace(staged, *written.archive, wishes.warn);
    }
    throwWhenInterrupted();
    const platform::Failure left = staged.publish(wishes.replace);
    if (archive) {
        archive->publish(wishes.replace);
    }
    if (left) {
        wishes.warn("what was replaced is still there: " + left->description);
    }
    return written;
}

}  // namespace wickfield_bundle
