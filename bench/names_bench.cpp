// Wildcards against glob(3) over a folder of 100,000 entries, and the size of a tree of 200,000 files against du, all
// of it in the page cache. Prints ratios of times: 1.00 is as fast, less is faster.
#include <fcntl.h>
#include <glob.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "bench/Measure.h"
#include "lib/KZFileManager/Names.h"
#include "lib/KZFileManager/Queries.h"
#include "platform/linux/services/LinuxHost.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

constexpr int entryCount = 100'000;
constexpr int folderCount = 2'000;
constexpr int filesInAFolder = 100;
constexpr int rounds = 11;

void makeFile(const std::string& path, off_t size) {
    const int file = ::open(path.c_str(), O_CREAT | O_WRONLY | O_EXCL | O_CLOEXEC, 0644);
    if (file < 0 || ::ftruncate(file, size) != 0 || ::close(file) != 0) {
        std::perror(path.c_str());
        std::exit(1);
    }
}

std::uint64_t makeTree(const std::string& top) {
    std::uint64_t bytes = 0;
    for (int folder = 0; folder < folderCount; ++folder) {
        const std::string path =
            top + "/group " + std::to_string(folder % 20) + "/Preset Bank " + std::to_string(folder);
        std::filesystem::create_directories(path);
        for (int file = 0; file < filesInAFolder; ++file) {
            const int size = folder + file;
            makeFile(path + "/A Preset With a Name " + std::to_string(file) + ".preset", size);
            bytes += static_cast<std::uint64_t>(size);
        }
    }
    return bytes;
}

bool globFinds(const std::string& pattern, int flags, std::size_t expected) {
    glob_t found{};
    const int status = ::glob(pattern.c_str(), flags, nullptr, &found);
    const bool right = found.gl_pathc == expected && (status == 0 || (status == GLOB_NOMATCH && expected == 0));
    ::globfree(&found);
    return right;
}

void compareWildcards(const std::string& folder, const std::string& component) {
    const std::string pattern = folder + "/" + component;
    const std::size_t expected = KZFileManager::filesMatchingWildcardPath(pattern).size();
    bench::Series sorted("glob");
    bench::Series unsorted("glob, not sorted");
    bench::Series ours("filesMatchingWildcardPath");
    for (int round = 0; round < rounds; ++round) {
        sorted.run([&] { return globFinds(pattern, 0, expected); });
        unsorted.run([&] { return globFinds(pattern, GLOB_NOSORT, expected); });
        ours.run([&] { return KZFileManager::filesMatchingWildcardPath(pattern).size() == expected; });
    }
    std::printf("%s: %zu of %d entries\n", component.c_str(), expected, entryCount);
    sorted.print();
    unsorted.print();
    ours.print();
    bench::printRatio("  against glob", ours.median(), sorted.median(), 1.1);
    bench::printRatio("  against glob, not sorted", ours.median(), unsorted.median(), 1.1);
}

bool runDu(const std::string& folder) {
    std::string tool = "du";
    std::string summary = "-s";
    std::string apparent = "--apparent-size";
    std::string path = folder;
    char* const arguments[] = {tool.data(), summary.data(), apparent.data(), path.data(), nullptr};
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = -1;
    int status = 1;
    const bool ran = ::posix_spawnp(&child, tool.c_str(), &actions, nullptr, arguments, environ) == 0 &&
                     ::waitpid(child, &status, 0) == child;
    ::posix_spawn_file_actions_destroy(&actions);
    return ran && status == 0;
}

void compareSizes(const std::string& folder, std::uint64_t expected) {
    bench::Series du("du -s --apparent-size");
    bench::Series ours("fileSize");
    for (int round = 0; round < rounds; ++round) {
        du.run([&] { return runDu(folder); });
        ours.run([&] { return KZFileManager::fileSize(folder) == expected; });
    }
    std::printf("a tree of %d files in %d folders\n", folderCount * filesInAFolder, folderCount);
    du.print();
    ours.print();
    bench::printRatio("  against du", ours.median(), du.median(), 0.95);
}

}  // namespace

int main() {
    platform::setHost(platform::linux_host::services());
    const fakes::TemporaryFolder disk;

    const std::string wide = disk / "wide";
    std::filesystem::create_directory(wide);
    for (int entry = 0; entry < entryCount; ++entry) {
        makeFile(wide + "/Preset " + std::to_string(entry) + (entry % 2 == 0 ? ".vst3" : ".component"), 0);
    }
    compareWildcards(wide, "*");
    compareWildcards(wide, "*.vst3");
    compareWildcards(wide, "*1*5*.comp*");
    compareWildcards(wide, "*.clap");

    const std::string tree = disk / "tree";
    compareSizes(tree, makeTree(tree));
    return 0;
}
