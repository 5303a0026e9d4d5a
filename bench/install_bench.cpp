// Installing trees of files, against a bare copy loop with the same tool runs and against cp -a.
//
//   install_bench [--folder DIR] [--rounds N] [--files N] [--large MEGABYTES]
//
// Each round writes to a fresh place and deletes nothing, since a file system that has just lost a large tree is slow
// to make it again. Everything lies below a new folder in DIR (default: the temporary folder) that goes at the end.
//
// Run by the superuser it also measures an ordinary user's installation into a folder of root's, with an administrator
// session that is open already, against the same into a folder of the user's own.

#include <fcntl.h>
#include <grp.h>
#include <spawn.h>
#include <sys/stat.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "app/WickfieldAppDelegate.h"
#include "bench/Measure.h"
#include "bench/Options.h"
#include "bench/Workload.h"
#include "lib/KZAuthorization.h"
#include "platform/linux/rights/LinuxAuthorization.h"
#include "platform/linux/services/LinuxHost.h"
#include "platform/posix/ArgumentPointers.h"
#include "tests/fakes/FakeIdentity.h"
#include "tests/fakes/TemporaryFolder.h"

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace fs = std::filesystem;

namespace {

struct Options {
    std::string folder = fs::temp_directory_path().string();
    int rounds = 3;
    int files = 10000;
    std::size_t largeMegabytes = 512;
};

// A tool that has always just ended well.
class EndedProcess : public platform::Process {
public:
    const platform::ProcessOptions& options() const override { return m_options; }
    platform::Failure launch() override { return {}; }
    bool isRunning() override { return false; }
    void waitUntilExit() override {}
    bool waitUntilExit(std::chrono::milliseconds) override { return true; }
    int terminationStatus() override { return 0; }
    bool endedBySignal() override { return false; }
    void terminate() override {}
    void kill() override {}
    Chunk readAvailable(std::string&, std::string&, std::optional<std::chrono::milliseconds>) override {
        return Chunk::endOfStreams;
    }
    void closeReadEnds() override {}

private:
    platform::ProcessOptions m_options;
};

class NoTools : public platform::Processes {
public:
    std::shared_ptr<platform::Process> make(platform::ProcessOptions) override {
        return std::make_shared<EndedProcess>();
    }
    std::string locateTool(const std::string& path) override { return path; }
};

bool waitFor(pid_t child) {
    int status = 0;
    return ::waitpid(child, &status, 0) == child && status == 0;
}

bool runTool(const std::vector<std::string>& words) {
    const auto arguments = platform::posix::pointersTo(words);
    pid_t child = 0;
    return ::posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) == 0 && waitFor(child);
}

bool copyBytes(const std::string& source, const std::string& destination) {
    const int in = ::open(source.c_str(), O_RDONLY | O_CLOEXEC);
    const int out = ::open(destination.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    static char buffer[1 << 16];
    ssize_t got = 0;
    while ((got = ::read(in, buffer, sizeof buffer)) > 0) {
        if (::write(out, buffer, static_cast<std::size_t>(got)) != got) {
            got = -1;
            break;
        }
    }
    ::close(in);
    return ::close(out) == 0 && got == 0;
}

// What no installer that touches each file with the tool can be faster than.
bool copyAndTouchEach(const fs::path& source, const fs::path& destination) {
    fs::create_directories(destination);
    for (const auto& entry : fs::recursive_directory_iterator(source)) {
        const auto target = (destination / entry.path().lexically_relative(source)).string();
        if (entry.is_directory()) {
            fs::create_directory(target);
        } else if (!copyBytes(entry.path().string(), target) || !runTool({"/usr/bin/touch", "-c", target})) {
            return false;
        }
    }
    return true;
}

class Bench {
public:
    explicit Bench(const Options& options) : m_options(options), m_root(options.folder) {
        fs::create_directories(home() + "/Library/Logs/Corvane");
        std::ofstream(home() + "/Library/Logs/Corvane/install_bench.1.log");
    }

    void manyFiles() {
        std::printf("%d files in %d folders\n", m_options.files, (m_options.files + 19) / 20);
        bench::makeManyFiles(mirror(), m_options.files);
        bench::Series floor("bare copy loop and one touch a file");
        bench::Series plainCopy("cp -a");
        bench::Series fresh("installation");
        bench::Series walk("installation, tool runs left out");
        bench::Series again("installation over itself");
        for (int round = 0; round < m_options.rounds; ++round) {
            plainCopy.run([&, place = freshPlace()] { return runTool({"/bin/cp", "-a", mirror(), place}); });
            walk.run([&] { return install(false); });
            nextPlace();
            floor.run([&, place = freshPlace()] { return copyAndTouchEach(mirror(), place); });
            fresh.run([&] { return install(true); });
            again.run([&] { return install(true); });
            nextPlace();
        }
        for (const auto* series : {&floor, &plainCopy, &fresh, &walk, &again}) {
            series->print();
        }
        bench::printRatio("installation / bare loop with touch", fresh.median(), floor.median(), 1.15);
        bench::printRatio("installation without tool runs / cp -a", walk.median(), plainCopy.median(), 1.5);
        bench::printRatio("installation over itself / fresh", again.median(), fresh.median(), 1.4);
        memory(fresh.peakKilobytes());
        fs::remove_all(mirror());
    }

    void intoProtectedFolder() {
        if (::geteuid() != 0) {
            std::printf(
                "installation into a folder of root's: not measured, as only the superuser can open a session "
                "without asking\n");
            return;
        }
        // As with a folder of the system, nobody but root may write to any folder above it.
        m_placeFolder = "/opt/wickfield-bench." + std::to_string(::getpid());
        std::printf("%d files, into a folder of root's and into one of the user's own\n", m_options.files);
        fs::create_directories(m_placeFolder);
        bench::makeManyFiles(mirror(), m_options.files);
        fs::permissions(m_root.path(), fs::perms(0755));
        ownEverything(tree());
        ownEverything(home());
        bench::Series own("installation into a folder of one's own");
        bench::Series roots("installation into a folder of root's");
        for (int round = 0; round < m_options.rounds; ++round) {
            own.run([&] { return makePlace(ordinaryUser) && becomeOrdinary(home()) && install(true); });
            nextPlace();
            roots.run([&] { return makePlace(0) && becomeOrdinary(home()) && install(true); });
            nextPlace();
        }
        own.print();
        roots.print();
        bench::printRatio("into a folder of root's / into one of one's own", roots.median(), own.median(), 2.0);
        fs::remove_all(tree());
        fs::remove_all(m_placeFolder);
        m_placeFolder = m_root.path();
    }

    void largeFiles() {
        if (m_options.largeMegabytes == 0) {
            return;
        }
        std::printf("4 files of %zu MiB\n", m_options.largeMegabytes);
        bench::makeLargeFiles(mirror(), 4, m_options.largeMegabytes);
        bench::Series plainCopy("cp -a");
        bench::Series fresh("installation");
        for (int round = 0; round < m_options.rounds; ++round) {
            plainCopy.run([&, place = freshPlace()] { return runTool({"/bin/cp", "-a", mirror(), place}); });
            fresh.run([&] { return install(true); });
            nextPlace();
        }
        plainCopy.print();
        fresh.print();
        bench::printRatio("large files: installation / cp -a", fresh.median(), plainCopy.median(), 1.05);
    }

private:
    static constexpr uid_t ordinaryUser = 1000;

    // A bundle belongs to the user who unpacked it. There is a log, as there will be something to tell.
    static void ownEverything(const std::string& folder) {
        (void)::chown(folder.c_str(), ordinaryUser, ordinaryUser);
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            (void)::lchown(entry.path().c_str(), ordinaryUser, ordinaryUser);
        }
    }

    bool makePlace(uid_t owner) const {
        return ::mkdir(place().c_str(), 0755) == 0 && ::chown(place().c_str(), owner, owner) == 0;
    }

    // The session is taken over while this is still possible, then nothing is left of root's rights but that session.
    static bool becomeOrdinary(const std::string& home) {
        if (::setenv("HOME", home.c_str(), 1) != 0 || ::setgroups(0, nullptr) != 0 ||
            ::setresgid(ordinaryUser, ordinaryUser, ordinaryUser) != 0 || ::setresuid(ordinaryUser, 0, 0) != 0) {
            return false;
        }
        auto host = platform::linux_host::services();
        static platform::rights::LinuxAuthorization rights(*host.mainThread, nullptr);
        host.authorization = &rights;
        platform::setHost(host);
        return KZAuthorization::sharedController()->isAuthorized() &&
               ::setresuid(ordinaryUser, ordinaryUser, ordinaryUser) == 0;
    }

    void memory(long manyPeak) {
        fs::remove_all(mirror());
        bench::makeManyFiles(mirror(), std::max(20, m_options.files / 10));
        bench::Series few("installation of a tenth of the files");
        few.run([&] { return install(false); });
        nextPlace();
        few.print();
        bench::printRatio("peak memory / that of a tenth of the files", static_cast<double>(manyPeak),
                          static_cast<double>(few.peakKilobytes()), 1.1);
    }

    // The tree holds a mirror of the place where its files go, so a new place needs only a new name there.
    std::string tree() const { return m_root / "Bench Installer.app/Contents/Resources/PluginStructure"; }
    std::string home() const { return m_root / "home"; }
    std::string place() const { return m_placeFolder + "/installed " + std::to_string(m_place); }
    std::string mirror() const { return tree() + place(); }
    std::string freshPlace() { return m_root / ("copied " + std::to_string(++m_copies)); }
    void nextPlace() {
        const auto before = mirror();
        ++m_place;
        fs::rename(before, mirror());
    }

    bool install(bool withTools) {
        fakes::FakeIdentity identity;
        identity.uid = 1000;  // measured as an ordinary user's installation, whoever runs this
        identity.home = home();
        NoTools noTools;
        auto host = platform::host().files != nullptr ? platform::host() : platform::linux_host::services();
        host.identity = &identity;
        if (!withTools) {
            host.processes = &noTools;
        }
        platform::setHost(host);
        WickfieldAppDelegate delegate;
        std::atomic<int> result = -1;
        std::thread worker([&] { result = delegate.installFromFolder(tree(), tree()) ? 1 : 0; });
        while (result < 0) {
            host.mainThread->runNextEvent(std::chrono::milliseconds(10));
        }
        worker.join();
        return result == 1;
    }

    Options m_options;
    fakes::TemporaryFolder m_root;
    std::string m_placeFolder = m_root.path();
    int m_place = 0;
    int m_copies = 0;
};

Options parse(int argc, char** argv) {
    Options options;
    bench::readOptions(argc, argv, "install_bench [--folder DIR] [--rounds N] [--files N] [--large MEGABYTES]",
                       {{"--folder", &options.folder},
                        {"--rounds", &options.rounds},
                        {"--files", &options.files},
                        {"--large", &options.largeMegabytes}});
    options.files = std::max(20, options.files);
    return options;
}

}  // namespace

int main(int argc, char** argv) {
    Bench bench(parse(argc, argv));
    bench.manyFiles();
    bench.intoProtectedFolder();
    bench.largeFiles();
    return 0;
}
