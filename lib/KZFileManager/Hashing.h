// Digests of whole files.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "lib/KZFileManager/DigestContext.h"

namespace KZFileManager {

// What a caller who hashes a file may want to be asked. Empty: not asked.
struct ChecksumDelegate {
    // Whether to go on with the file at the path. Asked on a background thread whenever the bytes hashed so far are an
    // exact multiple of 50 MiB, several questions at a time if they are slow to answer; nothing waits for it. A no ends
    // the hashing at the next chunk that is read after the answer has come; one that comes after the end changes
    // nothing. An answer that throws counts as a yes.
    //
    // A read that is cut short ahead of the end puts the count off those multiples: for the rest of that file nothing
    // is asked any more, unless at its very end, when its size is such a multiple.
    std::function<bool(const std::string& path)> checksumShouldContinue;
};

// Lowercase hexadecimal digits. None when the file cannot be opened (said on the system console) or read (said in the
// log and on standard output), or the delegate answered no (nothing is said). Pipes, sockets and character devices
// cannot be opened, so that nothing waits for the other end of one; a link is followed; a folder cannot be read. Blocks
// while it reads, in chunks of 64 KiB.
//
// Each call that has opened its file keeps the file's descriptor for the life of the process: the stream is not closed,
// and the descriptor that is closed in its place is the one whose number is the low 32 bits of the stream's address,
// which is hardly ever one that exists. Whoever hashes many files takes FileDigest.h, which closes what it opens.
//
// The delegate is kept until its last question is answered.
using SharedChecksumDelegate = std::shared_ptr<const ChecksumDelegate>;
std::optional<std::string> md5HashForFile(const std::string& path, const SharedChecksumDelegate& delegate = {});
std::optional<std::string> sha1HashForFile(const std::string& path, const SharedChecksumDelegate& delegate = {});
std::optional<std::string> sha512HashForFile(const std::string& path, const SharedChecksumDelegate& delegate = {});

}  // namespace KZFileManager
