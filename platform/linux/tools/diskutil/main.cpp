// diskutil info -plist MOUNT-POINT
#include <sysexits.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "platform/linux/services/propertylists/XmlPropertyList.h"
#include "platform/linux/tools/diskutil/DiskInfo.h"

int main(int count, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + count);
    if (words.size() != 3 || words[0] != "info" || words[1] != "-plist") {
        std::fprintf(stderr, "usage: diskutil info -plist MOUNT-POINT\n");
        return EX_USAGE;
    }
    try {
        const auto info = platform::linux_host::diskInfo(words[2]);
        const std::string text = platform::linux_host::writeXmlPropertyList(platform::PropertyValue{info});
        const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
        return written && std::fflush(stdout) == 0 ? EX_OK : EXIT_FAILURE;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "diskutil: %s\n", failure.what());
        return EXIT_FAILURE;
    }
}
