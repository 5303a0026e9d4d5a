// Digests of whole files for whoever hashes many of them, or large ones.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/ports/Digests.h"
#include "platform/ports/Error.h"

namespace KZFileManager {

// Neither: the caller did not want to go on.
struct FileDigest {
    std::optional<std::string> digest;  // lowercase hexadecimal digits
    platform::Failure failure;          // why there is none
};

// Reads the file and hashes it at the same time, in two threads, and closes it. Takes regular files alone, and follows
// links to them. Nothing is logged. Blocks.
//
// `shouldContinue`, when there is one, is asked on the caller's thread after each megabyte or less, with the bytes that
// have been read.
FileDigest digestOfFile(const std::string& path, platform::DigestKind kind,
                        const std::function<bool(std::uint64_t bytes)>& shouldContinue = {});

}  // namespace KZFileManager
