// The copy of the host's file manager, against cp -a.
//
//   copy_bench [--folder DIR] [--rounds N] [--files N] [--large MEGABYTES] [--only-reflinks]
//
// Two workloads: many files, copied one by one with a look at the destination and its folder in between, and four large
// ones. Each round writes to a fresh place and deletes nothing, since a file system that has just lost a large tree is
// slow to make it again; the order of the two competitors changes with each round. For the superuser the large files
// are copied once more on a btrfs image in DIR that is mounted for the time, where files can share their blocks.
// Everything lies below a new folder in DIR (default: the temporary folder) that goes at the end.

#include <sched.h>
#include <sys/mount.h>

#include <cstring>

#include "bench/Measure.h"
#include "bench/Options.h"
#include "bench/Workload.h"
#include "platform/linux/services/files/LinuxFileManager.h"
#include "tests/fakes/TemporaryFolder.h"

namespace fs = std::filesystem;

namespace {

struct Options {
    std::string folder = fs::temp_directory_path().string();
    int rounds = 3;
    int files = 10000;
    std::size_t largeMegabytes = 512;
    bool onlyReflinks = false;
};

constexpr unsigned largeFiles = 4;

bool runTool(const std::string& line) { return std::system(line.c_str()) == 0; }

bool copyWithTool(const fs::path& from, const fs::path& to, const char* reflink) {
    return runTool("cp -a --reflink=" + std::string(reflink) + " '" + from.string() + "' '" + to.string() + "'");
}

// As an installation does: each file by itself, its folder made when it is missing.
bool copyOneByOne(const fs::path& from, const fs::path& to) {
    platform::linux_host::LinuxFileManager files;
    for (const auto& entry : fs::recursive_directory_iterator(from)) {
        if (!entry.is_regular_file()) {
            continue;
        }
        const std::string destination = (to / entry.path().lexically_relative(from)).string();
        const std::string folder = fs::path(destination).parent_path().string();
        if (!files.fileExists(folder) && files.createDirectory(folder, platform::Intermediates::yes)) {
            return false;
        }
        if (files.fileExists(destination)) {
            return false;
        }
        if (const auto failed = files.copyItem(entry.path().string(), destination)) {
            std::fprintf(stderr, "%s\n", failed->description.c_str());
            return false;
        }
    }
    return true;
}

void compare(const char* what, const fs::path& folder, int rounds, const char* reflink, double goal) {
    bench::Series own(std::string(what) + ", own copy");
    bench::Series tool(std::string(what) + ", cp -a --reflink=" + reflink);
    for (int round = 0; round < rounds; ++round) {
        const std::string number = std::to_string(round);
        const auto runOwn = [&] { own.run([&] { return copyOneByOne(folder / "from", folder / ("own" + number)); }); };
        if (round % 2 == 0) {
            runOwn();
        }
        tool.run([&] { return copyWithTool(folder / "from", folder / ("tool" + number), reflink); });
        if (round % 2 != 0) {
            runOwn();
        }
    }
    own.print();
    tool.print();
    bench::printRatio(what, own.median(), tool.median(), goal);
}

// In a mount namespace of this process's own, so that nothing stays mounted whatever happens.
void compareReflinks(const Options& options, const fakes::TemporaryFolder& place) {
    const std::string image = place / "image";
    const std::string disk = place / "disk";
    fs::create_directory(disk);
    const std::size_t megabytes = 1024 + options.largeMegabytes * largeFiles * 2;
    const bool mounted =
        ::geteuid() == 0 && ::unshare(CLONE_NEWNS) == 0 &&
        ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
        runTool("truncate -s " + std::to_string(megabytes) + "M '" + image + "'") &&
        runTool("mkfs.btrfs -q '" + image + "' 2>/dev/null && mount -o loop '" + image + "' '" + disk + "'");
    if (!mounted) {
        std::printf("large files, shared blocks: skipped (needs the superuser, loop devices and mkfs.btrfs)\n");
        return;
    }
    bench::makeLargeFiles(fs::path(disk) / "from", largeFiles, options.largeMegabytes);
    (void)runTool("sync -f '" + disk + "'");
    compare("large files, shared blocks", disk, std::max(options.rounds, 5), "always", 2.0);
    (void)::umount2(disk.c_str(), MNT_DETACH);
}

Options readOptions(int argc, char** argv) {
    Options options;
    bench::readOptions(argc, argv,
                       "copy_bench [--folder DIR] [--rounds N] [--files N] [--large MEGABYTES] [--only-reflinks]",
                       {{"--folder", &options.folder},
                        {"--rounds", &options.rounds},
                        {"--files", &options.files},
                        {"--large", &options.largeMegabytes},
                        {"--only-reflinks", &options.onlyReflinks}});
    return options;
}

}  // namespace

int main(int argc, char** argv) {
    const Options options = readOptions(argc, argv);
    const fakes::TemporaryFolder place(options.folder);
    if (!options.onlyReflinks) {
        const fs::path many = place / "many";
        bench::makeManyFiles(many / "from", options.files);
        compare("many files", many, options.rounds, "auto", 1.5);

        const fs::path large = place / "large";
        bench::makeLargeFiles(large / "from", largeFiles, options.largeMegabytes);
        compare("large files", large, options.rounds, "auto", 1.05);
    }
    compareReflinks(options, place);
    return 0;
}
