#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <vector>

#include "lib/KZFileManager.h"
#include "lib/base/Text.h"
#include "tools/commandline/Streams.h"
#include "tools/kzfile/Algorithms.h"
#include "tools/kzfile/Command.h"
#include "tools/kzfile/Paths.h"
#include "tools/kzfile/ReportingHost.h"

namespace kzfile {

namespace {

constexpr std::array<Option, 2> options{{
    {'a', "algorithm", "ALGORITHM", "md5, sha1, sha256 (the default) or sha512"},
    {'z', "zero", nullptr, "a NUL behind each line instead of a line break, and names as they are"},
}};

// The line that sha256sum and its like print: a name that would break it is escaped, and the line begins with "\".
std::string lineFor(const std::string& digest, const std::string& name) {
    std::string escaped = kz::replaceAll(name, std::string_view("\\"), "\\\\");
    escaped = kz::replaceAll(escaped, std::string_view("\n"), "\\n");
    escaped = kz::replaceAll(escaped, std::string_view("\r"), "\\r");
    return (escaped == name ? "" : "\\") + digest + "  " + commandline::nameForOutput(escaped) + '\n';
}

KZFileManager::FileDigest digestOfInput(platform::DigestKind kind) {
    KZFileManager::DigestContext context(kind);
    std::vector<std::byte> buffer(std::size_t{1} << 17U);
    while (const std::size_t bytes = std::fread(buffer.data(), 1, buffer.size(), stdin)) {
        context.update(std::span(buffer).first(bytes));
    }
    if (std::ferror(stdin) != 0) {
        return {.digest = {}, .failure = platform::Error{errno, "-: " + std::generic_category().message(errno)}};
    }
    return {.digest = context.finish(), .failure = {}};
}

int run(const Arguments& arguments) {
    const Algorithm& algorithm = algorithmNamed(arguments.value("algorithm").value_or("sha256"));
    int code = done;
    for (const std::string& name : arguments.operands()) {
        reports().clear();
        const auto [digest, failure] = name == "-" ? digestOfInput(algorithm.kind)
                                                   : KZFileManager::digestOfFile(absolutePath(name), algorithm.kind);
        if (!digest) {
            commandline::printError(
                reports().lastFailure().value_or(failure ? failure->description : name + ": cannot be read"));
            code = failed;
        } else if (arguments.has("zero")) {
            commandline::print(*digest + "  " + name + '\0');
        } else {
            commandline::print(lineFor(*digest, name));
        }
    }
    return code;
}

}  // namespace

const Command hashCommand{
    .name = "hash",
    .summary = "print digests of files, as sha256sum does",
    .arguments = "FILE...",
    .help =
        "Prints a line with the digest and the name of each file. Reading and hashing go on at\n"
        "the same time. A FILE \"-\" is the standard input; pipes and devices are not read.\n"
        "\"sha256sum --check\" and its like can check the lines.\n",
    .options = options,
    .fewest = 1,
    .most = Command::anyNumber,
    .run = run,
};

}  // namespace kzfile
