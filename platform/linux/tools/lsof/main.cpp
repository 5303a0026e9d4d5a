// lsof "-F a" -w FILE
//
// Lists who has the file open: a line with "p" and the number of the process, then for each of its descriptors a line
// "ar" (open for reading), "aw" (for writing) or "au" (for both). Exit status 1 when nobody has. Links are followed.
// Other users' processes are seen by the superuser only; a file that is merely mapped into memory is not seen.
#include <fcntl.h>
#include <sys/stat.h>
#include <sysexits.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

std::optional<FileIdentity> identityOf(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return FileIdentity{status.st_dev, status.st_ino};
}

// The entries of a folder of /proc, which may go at any time; none of one that may not be looked into.
std::vector<std::string> entriesOf(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator at(folder, error); !error && at != fs::directory_iterator(); at.increment(error)) {
        names.push_back(at->path().filename().string());
    }
    return names;
}

bool isNumber(const std::string& name) {
    return !name.empty() && name.find_first_not_of("0123456789") == std::string::npos;
}

// 'r', 'w' or 'u'; none when the descriptor is gone.
std::optional<char> accessOf(const std::string& process, const std::string& descriptor) {
    std::ifstream information("/proc/" + process + "/fdinfo/" + descriptor);
    for (std::string word; information >> word;) {
        if (word == "flags:") {
            unsigned long flags = 0;
            if (!(information >> std::oct >> flags)) {
                return std::nullopt;
            }
            const unsigned long mode = flags & O_ACCMODE;
            return mode == O_RDONLY ? 'r' : mode == O_WRONLY ? 'w' : 'u';
        }
    }
    return std::nullopt;
}

bool listDescriptors(const std::string& process, const FileIdentity& file) {
    const std::string folder = "/proc/" + process + "/fd/";
    bool any = false;
    for (const auto& descriptor : entriesOf(folder)) {
        const auto access = identityOf(folder + descriptor) == file ? accessOf(process, descriptor) : std::nullopt;
        if (access) {
            if (!any) {
                std::printf("p%s\n", process.c_str());
            }
            std::printf("a%c\n", *access);
            any = true;
        }
    }
    return any;
}

}  // namespace

int main(int count, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + count);
    if (words.size() != 3 || (words[0] != "-F a" && words[0] != "-Fa") || words[1] != "-w") {
        std::fputs("usage: lsof \"-F a\" -w FILE\n", stderr);
        return EX_USAGE;
    }
    const auto file = identityOf(words[2]);
    bool any = false;
    if (file) {
        for (const auto& process : entriesOf("/proc")) {
            any = (isNumber(process) && listDescriptors(process, *file)) || any;
        }
    }
    return any ? EXIT_SUCCESS : EXIT_FAILURE;
}
