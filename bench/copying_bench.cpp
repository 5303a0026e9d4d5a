// One large file copied to three places in one pass, against three runs of cp, with and without verification.
//
//   copying_bench [--folder DIR] [--rounds N] [--megabytes N] [--goal RATIO]
//
// What was written is on the disk and removed before the next measurement. The goal is that of the copy without
// verification: 1.15 on a disk, 1.0 in a tmpfs. Everything lies below a new folder in DIR (default: the temporary
// folder) that goes at the end.

#include <sys/mman.h>

#include <atomic>

#include "bench/Measure.h"
#include "bench/Options.h"
#include "bench/Workload.h"
#include "lib/KZFileManager/Copying.h"
#include "platform/linux/services/LinuxHost.h"
#include "tests/fakes/FailingOpenFiles.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using KZFileManager::FileCopyVerification;

struct Options {
    std::string folder = std::filesystem::temp_directory_path().string();
    int rounds = 3;
    int megabytes = 2048;
    double goal = 1.15;
};

// When the copying itself ended, as seen by the parent.
struct Phase {
    std::atomic<double> copyingSeconds = 0;
};

bool runTool(const std::string& line) { return std::system(line.c_str()) == 0; }

class Comparison {
public:
    Comparison(std::string folder, Phase& phase) : m_folder(std::move(folder)), m_phase(phase) {
        for (const char* name : {"/a", "/b", "/c"}) {
            m_destinations.push_back(m_folder + name);
        }
    }

    void tool(bench::Series& series) {
        settle();
        series.run([&] {
            return std::all_of(m_destinations.begin(), m_destinations.end(), [&](const std::string& destination) {
                return runTool("cp '" + m_folder + "/source' '" + destination + "'");
            });
        });
    }

    // The seconds up to the moment when the first destination is read again, or to the end.
    double own(bench::Series& series, FileCopyVerification verification) {
        settle();
        series.run([&] {
            const auto start = std::chrono::steady_clock::now();
            fakes::FailingOpenFiles files(*platform::host().openFiles);
            std::atomic_flag noted;
            const auto note = [&] {
                if (!noted.test_and_set()) {
                    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
                    m_phase.copyingSeconds = elapsed.count();
                }
            };
            files.decide = [&](const fakes::FailingOpenFiles::Call& call) {
                if (call.operation == fakes::FailingOpenFiles::Operation::seek) {
                    note();
                }
                return fakes::FailingOpenFiles::Outcome{};
            };
            auto host = platform::host();
            host.openFiles = &files;
            const platform::ScopedHost scope(host);
            const bool done =
                KZFileManager::copyFileWithProgress(m_folder + "/source", m_destinations, verification, {}, {}, {});
            note();
            return done;
        });
        return m_phase.copyingSeconds;
    }

private:
    void settle() {
        for (const std::string& destination : m_destinations) {
            std::filesystem::remove(destination);
        }
        (void)runTool("sync -f '" + m_folder + "'");
    }

    const std::string m_folder;
    Phase& m_phase;
    std::vector<std::string> m_destinations;
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void printPhase(const char* name, const std::vector<double>& seconds) {
    const auto [least, most] = std::minmax_element(seconds.begin(), seconds.end());
    std::printf("  %-44s %8.3f s  (%.3f to %.3f)\n", name, median(seconds), *least, *most);
}

Options readOptions(int argc, char** argv) {
    Options options;
    bench::readOptions(argc, argv, "copying_bench [--folder DIR] [--rounds N] [--megabytes N] [--goal RATIO]",
                       {{"--folder", &options.folder},
                        {"--rounds", &options.rounds},
                        {"--megabytes", &options.megabytes},
                        {"--goal", &options.goal}});
    return options;
}

}  // namespace

int main(int argc, char** argv) {
    const Options options = readOptions(argc, argv);
    platform::setHost(platform::linux_host::services());
    const fakes::TemporaryFolder place(options.folder);
    bench::makeFile(place / "source", options.megabytes);
    void* const shared = ::mmap(nullptr, sizeof(Phase), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) {
        return 1;
    }
    Comparison comparison(place.path(), *new (shared) Phase);
    bench::Series tool("three runs of cp");
    bench::Series plain("three destinations");
    bench::Series verified("three destinations, verified by SHA-256");
    std::vector<double> plainPhase;
    std::vector<double> hashedPhase;
    for (int round = 0; round < options.rounds; ++round) {
        comparison.tool(tool);
        plainPhase.push_back(comparison.own(plain, FileCopyVerification::none));
        hashedPhase.push_back(comparison.own(verified, FileCopyVerification::sha256));
    }
    tool.print();
    plain.print();
    verified.print();
    printPhase("of that, until a destination is read again", hashedPhase);
    bench::printRatio("three destinations, against cp", plain.median(), tool.median(), options.goal);
    bench::printRatio("copying while hashing, against copying alone", median(hashedPhase), median(plainPhase), 1.15);
    bench::printRatio("verification included, against cp", verified.median(), tool.median(), 2.8);
    return 0;
}
