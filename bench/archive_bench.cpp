// ditto against bsdtar: many files packed into a ZIP archive and unpacked again.
//
//   archive_bench [--folder DIR] [--rounds N] [--files N]
//
// Each round packs and unpacks with both, in an order that changes with each round; every program unpacks the archive
// that bsdtar has made. Everything lies below a new folder in DIR (default: the temporary folder) that goes at the end.
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/Measure.h"
#include "bench/Options.h"
#include "bench/Workload.h"
#include "tests/fakes/TemporaryFolder.h"

namespace fs = std::filesystem;

namespace {

struct Options {
    std::string folder = fs::temp_directory_path().string();
    int rounds = 3;
    int files = 10000;
};

constexpr double goal = 1.2;

bool runTool(const std::string& line) { return std::system(line.c_str()) == 0; }

std::string quoted(const fs::path& path) { return "'" + path.string() + "'"; }

template <typename Own, typename Tool>
void takeTurns(int round, const Own& own, const Tool& tool) {
    if (round % 2 == 0) {
        own();
        tool();
    } else {
        tool();
        own();
    }
}

Options readOptions(int argc, char** argv) {
    Options options;
    bench::readOptions(argc, argv, "archive_bench [--folder DIR] [--rounds N] [--files N]",
                       {{"--folder", &options.folder}, {"--rounds", &options.rounds}, {"--files", &options.files}});
    return options;
}

}  // namespace

int main(int count, char** arguments) {
    const Options options = readOptions(count, arguments);
    if (!runTool("command -v bsdtar > /dev/null")) {
        std::printf("packing and unpacking: skipped, as there is no bsdtar\n");
        return 0;
    }
    const fakes::TemporaryFolder place(options.folder);
    const fs::path root = place.path();
    const fs::path from = root / "from";
    bench::makeManyFiles(from, options.files);
    const std::string ditto = quoted(WICKFIELD_DITTO);

    bench::Series ownPacking("ditto -ck");
    bench::Series toolPacking("bsdtar --format zip -cf");
    bench::Series ownUnpacking("ditto -xk");
    bench::Series toolUnpacking("bsdtar -xf");
    for (int round = 0; round < options.rounds; ++round) {
        const std::string number = std::to_string(round);
        const fs::path toolArchive = root / ("tool" + number + ".zip");
        takeTurns(
            round,
            [&] {
                ownPacking.run([&] {
                    return runTool(ditto + " -ck " + quoted(from) + " " + quoted(root / ("own" + number + ".zip")));
                });
            },
            [&] {
                toolPacking.run([&] {
                    return runTool("bsdtar --format zip -C " + quoted(from) + " -cf " + quoted(toolArchive) + " .");
                });
            });
        takeTurns(
            round,
            [&] {
                ownUnpacking.run([&] {
                    return runTool(ditto + " -xk " + quoted(toolArchive) + " " + quoted(root / ("own" + number)));
                });
            },
            [&] {
                const fs::path folder = root / ("tool" + number);
                fs::create_directory(folder);
                toolUnpacking.run(
                    [&] { return runTool("bsdtar -C " + quoted(folder) + " -xf " + quoted(toolArchive)); });
            });
    }
    std::printf("%d files\n", options.files);
    for (const auto* series : {&ownPacking, &toolPacking, &ownUnpacking, &toolUnpacking}) {
        series->print();
    }
    bench::printRatio("packing", ownPacking.median(), toolPacking.median(), goal);
    bench::printRatio("unpacking", ownUnpacking.median(), toolUnpacking.median(), goal);
    return 0;
}
