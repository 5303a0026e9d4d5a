#include "lib/KZFileManager/Waiting.h"

#include <thread>

#include "lib/KZFileManager/Queries.h"
#include "lib/KZLog.h"
#include "lib/KZTaskEx.h"
#include "lib/base/ToolArgument.h"
#include "platform/ports/Host.h"

namespace {

using std::chrono::seconds;

constexpr std::chrono::microseconds pollInterval{500};
constexpr seconds settleAge{5};
constexpr KZTaskEx::Seconds toolTime{3.0};

// A missing file has no date, which counts as this moment.
bool isStillSettling(const std::optional<platform::Date>& modified) {
    return !modified || *modified >= std::chrono::system_clock::now() - settleAge;
}

}  // namespace

namespace KZFileManager {

bool registerApplicationWithLaunchServices(const std::string& path) {
    return !platform::host().workspace->registerApplication(path);
}

void waitForFileCreation(const std::string& path, seconds timeout) {
    const auto start = std::chrono::steady_clock::now();
    if (fileExistsAtPath(path)) {
        const auto attributes = platform::host().files->attributes(path);
        if (attributes && attributes->size != 0) {
            return;
        }
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    if (elapsed < timeout) {
        KZLog::appendLog("File %@ is not yet created. Waiting...", path);
        std::this_thread::sleep_for(pollInterval);
    }
}

void waitForFileWrites(const std::string& path) { waitForFileWrites(path, std::nullopt); }

void waitForFileWrites(const std::string& path, const std::optional<std::string>& lockFile) {
    auto modified = modificationDateForFile(path);
    if (!isStillSettling(modified) && !(lockFile && fileExistsAtPath(*lockFile))) {
        return;
    }
    KZLog::appendLog("File %@ is currently being written to. Waiting...", path);
    while (isStillSettling(modified)) {
        std::this_thread::sleep_for(pollInterval);
        modified = modificationDateForFile(path);
    }
    KZLog::appendLog("File %@ finished writing.", path);
}

bool fileIsOpenForWriting(const std::string& path) {
    const auto answer = KZTaskEx::stringFromTask("/usr/sbin/lsof", {"-F a", "-w", kz::toolArgument(path)},
                                                 StringEncoding::utf8, toolTime);
    // A letter anywhere in any piece between the white space is a letter anywhere in the whole.
    return answer && answer->find_first_of("wu") != std::string::npos;
}

}  // namespace KZFileManager
