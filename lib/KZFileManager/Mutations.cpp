#include "lib/KZFileManager/Mutations.h"

#include <string_view>
#include <thread>

#include "lib/KZAuthorization.h"
#include "lib/KZFileManager/Names.h"
#include "lib/KZFileManager/Queries.h"
#include "lib/KZFileManager/Recycling.h"
#include "lib/KZLog.h"
#include "lib/KZTaskEx.h"
#include "lib/base/PathText.h"
#include "lib/base/Text.h"
#include "lib/base/ToolArgument.h"
#include "platform/ports/Host.h"

namespace {

platform::FileManager& files() { return *platform::host().files; }

// Waits until the condition holds; its last answer.
template <typename Condition>
bool waitFor(const Condition& condition, std::chrono::seconds timeout) {
    using namespace std::chrono_literals;
    using FloatingSeconds = std::chrono::duration<double>;  // holds any time-out without overflow
    const auto start = std::chrono::steady_clock::now();
    auto& mainThread = *platform::host().mainThread;
    if (!condition()) {
        while (FloatingSeconds(std::chrono::steady_clock::now() - start) < FloatingSeconds(timeout)) {
            if (mainThread.isCurrent()) {
                mainThread.runNextEvent(10ms);
            } else {
                std::this_thread::sleep_for(300ms);
            }
            if (condition()) {
                break;
            }
        }
    }
    return condition();
}

bool waitUntilGone(const std::string& path, std::chrono::seconds timeout) {
    return waitFor([&] { return !KZFileManager::fileExistsAtPath(path); }, timeout);
}

bool waitUntilThere(const std::string& path, std::chrono::seconds timeout) {
    return waitFor([&] { return KZFileManager::fileExistsAtPath(path); }, timeout);
}

bool differOnlyInLetterCase(const std::string& source, const std::string& toPath) {
    return kz::lowercased(source) == kz::lowercased(toPath);
}

// Where upper and lower case are told apart the destination itself may be the free name; the first step does it all
// then.
bool moveByWayOfFreeName(const std::string& source, const std::string& toPath) {
    const std::string between = KZFileManager::uniqueFilename(toPath);
    return !files().moveItem(source, between) && (between == toPath || !files().moveItem(between, toPath));
}

// Tells the desktop that the item changed, however the scope is left.
class ChangeNote {
public:
    explicit ChangeNote(const std::string& path) : m_path(path) {}
    ~ChangeNote() { platform::host().workspace->noteFileSystemChanged(m_path); }
    ChangeNote(const ChangeNote&) = delete;
    ChangeNote& operator=(const ChangeNote&) = delete;

private:
    const std::string& m_path;
};

}  // namespace

namespace KZFileManager {

bool trashFile(const std::string& path) { return trashFile(path, ShouldAuth::yes); }

bool trashFile(const std::string& path, ShouldAuth shouldAuth) {
    unlockFile(path);
    if (!fileExistsAtPath(path) || recycle(path)) {
        return true;
    }
    return shouldAuth == ShouldAuth::yes && KZAuthorization::sharedController()->authTrashFile(path);
}

bool trashFile(const std::string& path, std::chrono::seconds timeout) {
    return trashFile(path) && waitUntilGone(path, timeout);
}

bool removeFile(const std::string& path) { return removeFile(path, ShouldAuth::yes); }

bool removeFile(const std::string& path, ShouldAuth shouldAuth) {
    unlockFile(path);
    if (!fileExistsAtPath(path)) {
        return true;
    }
    const auto failure = files().removeItem(path);
    if (!failure) {
        return true;
    }
    KZLog::appendLog("Error removing file: %@. Authorizing...", failure->description);
    return shouldAuth == ShouldAuth::yes && KZAuthorization::sharedController()->authRemoveFile(path);
}

bool removeFile(const std::string& path, std::chrono::seconds timeout) {
    return removeFile(path) && waitUntilGone(path, timeout);
}

bool createDirectory(const std::string& path) { return createDirectory(path, ShouldAuth::yes); }

bool createDirectory(const std::string& path, ShouldAuth shouldAuth) {
    if (!isDriveMountedForPath(path)) {
        platform::host().console->log("Unable to create directory. Drive is not mounted.");
        return false;
    }
    const auto failure = files().createDirectory(path, platform::Intermediates::yes);
    if (!failure) {
        return true;
    }
    KZLog::appendLog("Error creating folder: %@. Authorizing...", failure->description);
    return shouldAuth == ShouldAuth::yes && KZAuthorization::sharedController()->authCreateDir(path);
}

bool createDirectory(const std::string& path, std::chrono::seconds timeout) {
    return createDirectory(path) && waitUntilThere(path, timeout);
}

bool copyFile(const Path& source, const Path& toPath) { return copyFile(source, toPath, ShouldAuth::yes); }

bool copyFile(const Path& source, const Path& toPath, ShouldAuth shouldAuth) {
    if (!source) {
        KZLog::appendLogAndPrint("Error copying file: source path is nil");
        return false;
    }
    if (!toPath) {
        KZLog::appendLogAndPrint("Error copying file %@: destination path is nil", *source);
        return false;
    }
    unlockFile(kz::deletingLastPathComponent(*toPath));
    const auto failure = files().copyItem(*source, *toPath);
    if (!failure) {
        return true;
    }
    KZLog::appendLog("Error copying file: %@. Authorizing...", failure->description);
    return shouldAuth == ShouldAuth::yes && KZAuthorization::sharedController()->authCopyFile(source, toPath);
}

bool copyFile(const Path& source, const Path& toPath, std::chrono::seconds timeout) {
    return copyFile(source, toPath) && waitUntilThere(*toPath, timeout);
}

bool moveFile(const std::string& source, const std::string& toPath) {
    return moveFile(source, toPath, ShouldAuth::yes);
}

bool moveFile(const std::string& source, const std::string& toPath, ShouldAuth shouldAuth) {
    if (fileExistsAtPath(toPath)) {
        unlockFile(toPath);
    }
    unlockFolder(kz::appendPathComponent(toPath, kz::lastPathComponent(source)));
    if (differOnlyInLetterCase(source, toPath) && moveByWayOfFreeName(source, toPath)) {
        return true;
    }
    const auto failure = files().moveItem(source, toPath);
    if (!failure) {
        return true;
    }
    KZLog::appendLog("Error moving file: %@.", failure->description);
    if (shouldAuth == ShouldAuth::no) {
        return false;
    }
    KZLog::appendLog("Authorizing...");
    return KZAuthorization::sharedController()->authMoveFile(source, toPath);
}

bool moveFile(const std::string& source, const std::string& toPath, std::chrono::seconds timeout) {
    if (!moveFile(source, toPath)) {
        return false;
    }
    if (differOnlyInLetterCase(source, toPath)) {
        std::this_thread::sleep_for(std::chrono::microseconds{500});
        return true;
    }
    return waitUntilGone(source, timeout);
}

bool touchFile(const Path& path) { return touchFile(path, SetCreationDate::no); }

bool touchFile(const Path& path, SetCreationDate setCreationDate) {
    if (!path) {
        return false;
    }
    const ChangeNote note(*path);
    const std::string tool = "/usr/bin/touch";
    const std::vector<std::string> arguments{"-c", kz::toolArgument(*path)};
    const auto stampCreationDate = [&] {
        if (setCreationDate == SetCreationDate::yes) {
            files().setCreationDate(*path, std::chrono::system_clock::now());
        }
    };
    if (files().isWritable(*path)) {
        KZTaskEx::runTask(tool, arguments, KZTaskEx::Seconds{5.0});
        stampCreationDate();
        return true;
    }
    stampCreationDate();
    return KZAuthorization::sharedController()->authExecTask(tool, arguments, Async::no) == 0;
}

}  // namespace KZFileManager
