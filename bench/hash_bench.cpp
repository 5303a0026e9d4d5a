// Digests of one whole cached file, against openssl dgst.
//
//   hash_bench [--folder DIR] [--rounds N] [--megabytes N]
//
// The operations that read and hash in turns, and the one that does both at the same time. The file lies in a new
// folder in DIR (default: the temporary folder) that goes at the end.

#include "bench/Measure.h"
#include "bench/Options.h"
#include "bench/Workload.h"
#include "lib/KZFileManager/FileDigest.h"
#include "lib/KZFileManager/Hashing.h"
#include "platform/linux/services/LinuxHost.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

struct Options {
    std::string folder = std::filesystem::temp_directory_path().string();
    int rounds = 5;
    int megabytes = 2048;
};

struct Kind {
    const char* name;
    platform::DigestKind kind;
    std::optional<std::string> (*hashForFile)(const std::string&, const KZFileManager::SharedChecksumDelegate&);
};

void compare(const Kind& kind, const std::string& file, int rounds) {
    const std::string name = kind.name;
    bench::Series tool(name + ", openssl dgst");
    bench::Series own(name + ", reading and hashing in turns");
    bench::Series overlapped(name + ", reading and hashing at the same time");
    const std::string line = "openssl dgst -" + name + " '" + file + "' > /dev/null";
    for (int round = 0; round < rounds; ++round) {
        tool.run([&] { return std::system(line.c_str()) == 0; });
        own.run([&] { return kind.hashForFile(file, {}).has_value(); });
        overlapped.run([&] { return KZFileManager::digestOfFile(file, kind.kind).digest.has_value(); });
    }
    tool.print();
    own.print();
    overlapped.print();
    bench::printRatio((name + " in turns, against openssl dgst").c_str(), own.median(), tool.median(), 1.0);
    bench::printRatio((name + " at the same time, against openssl dgst").c_str(), overlapped.median(), tool.median(),
                      0.9);
}

Options readOptions(int argc, char** argv) {
    Options options;
    bench::readOptions(
        argc, argv, "hash_bench [--folder DIR] [--rounds N] [--megabytes N]",
        {{"--folder", &options.folder}, {"--rounds", &options.rounds}, {"--megabytes", &options.megabytes}});
    return options;
}

}  // namespace

int main(int argc, char** argv) {
    const Options options = readOptions(argc, argv);
    platform::setHost(platform::linux_host::services());
    const fakes::TemporaryFolder place(options.folder);
    const std::string file = place / "file";
    bench::makeFile(file, options.megabytes);
    const Kind kinds[] = {{"md5", platform::DigestKind::md5, KZFileManager::md5HashForFile},
                          {"sha1", platform::DigestKind::sha1, KZFileManager::sha1HashForFile},
                          {"sha512", platform::DigestKind::sha512, KZFileManager::sha512HashForFile}};
    for (const Kind& kind : kinds) {
        compare(kind, file, options.rounds);
    }
    return 0;
}
