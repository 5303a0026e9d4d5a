// xattr -w NAME VALUE FILE
// xattr -d NAME FILE
//
// Names go without the prefix that this system wants for attributes of users; a link is followed.
#include <sys/xattr.h>
#include <sysexits.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <system_error>
#include <vector>

namespace {

int report(const std::string& file, const std::string& name, int result) {
    if (result == 0) {
        return EX_OK;
    }
    const int code = errno;
    const std::string reason = code == ENODATA ? "there is no such attribute" : std::generic_category().message(code);
    std::fprintf(stderr, "xattr: %s: %s: %s\n", file.c_str(), name.c_str(), reason.c_str());
    return EXIT_FAILURE;
}

std::string prefixed(const std::string& name) { return "user." + name; }

}  // namespace

int main(int count, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + count);
    if (words.size() == 4 && words[0] == "-w") {
        const std::string& value = words[2];
        return report(words[3], words[1],
                      ::setxattr(words[3].c_str(), prefixed(words[1]).c_str(), value.data(), value.size(), 0));
    }
    if (words.size() == 3 && words[0] == "-d") {
        return report(words[2], words[1], ::removexattr(words[2].c_str(), prefixed(words[1]).c_str()));
    }
    std::fprintf(stderr,
                 "usage: xattr -w NAME VALUE FILE\n"
                 "       xattr -d NAME FILE\n");
    return EX_USAGE;
}
