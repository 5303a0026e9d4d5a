// Copying one file to one or several places in a single pass over it, with progress, cancelling and verification.
#pragma once

#include <any>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace KZFileManager {

struct FileCopyDelegate;
using SharedFileCopyDelegate = std::shared_ptr<const FileCopyDelegate>;

struct FileCopyValue {
    std::variant<std::string, std::vector<std::string>, std::any, SharedFileCopyDelegate> value;

    template <typename Kind>
    const Kind* as() const noexcept {
        return std::get_if<Kind>(&value);
    }
};

// What identifies a copy to its delegate. Texts: "source", "operationtype" (always "copy"), after verification
// "sourceChecksum" and, of a copy to one place, "destChecksum". Lists of texts: "destinations", and after the
// verification of a copy to several places "destChecksums", in the same order, "" for one that could not be read again.
// As given: "delegate", "object" and "object2", absent when none was.
using FileCopySettings = std::map<std::string, FileCopyValue, std::less<>>;

// What a caller may want to be told and asked. Empty: neither. What one of them throws is logged and goes no further.
struct FileCopyDelegate {
    // On background threads, whenever another 1/500 of the file, and at least 20 MiB, has been written everywhere. Two
    // reports can overtake each other, and come when the copy has ended. A no ends the copy at the next chunk that is
    // written after the answer has come; one that comes when all is written changes nothing.
    std::function<void(std::uint64_t bytesWritten, const FileCopySettings& settings)> fileCopyBytesWritten;
    std::function<bool(const FileCopySettings& settings)> fileCopyShouldContinue;

    // On the caller's thread, for each destination that does not read as the source did, while the file is still there.
    std::function<void(const FileCopySettings& settings, const std::string& file)> fileCopyVerificationFailed;

    // On the caller's thread, once, before a copy that was successful returns.
    std::function<void(const FileCopySettings& settings)> fileCopyFinished;
};

enum class FileCopyVerification { none = 0, md5 = 1, sha1 = 2, sha256 = 3, sha512 = 4 };

// True when every byte was copied to every destination and the copies are as long as the source and, if that was asked
// for, read as it did. A failure is told in the log, that the source cannot be opened on the system console; a copy
// that the delegate ends says nothing. Blocks. The delegate and the objects are kept until the last report is
// delivered; an object that cannot be copied because it throws makes the result false.
//
// Links are followed on both sides, a dangling one at a destination is refused. The source has to be a regular file,
// and so does what stands at a destination: it is overwritten. Nothing is touched unless every destination can be
// opened and is neither the source nor another destination, under whatever name; then all are emptied.
//
// A destination appears under its name at once and grows there; one that this copy made is readable for its owner alone
// until it is complete, one that was there before keeps its mode until then. When the result is false no part of a copy
// is left: destinations that this copy made are removed, those that were there before are emptied, their former
// contents being lost. After the copying itself only those go that have the wrong length or do not verify; the others
// are complete and stay. A process that is killed leaves them as far as they have come; the next copy overwrites them.
//
// A source that becomes longer or shorter while it is read makes the result false; it is read no further than one chunk
// past the length that it had. So does a file that does not know its size, as the kernel's own are.
//
// Verification reads the copies again as the system gives them, from its memory as far as they are still there.
//
// Mode, times, extended attributes and access list are those of the source, for the superuser the owner too; that they
// cannot be set is said on the system console and changes nothing about the result.
bool copyFileWithProgress(const std::string& source, const std::vector<std::string>& destinations,
                          FileCopyVerification verificationType, const SharedFileCopyDelegate& delegate,
                          const std::any& object, const std::any& object2);

// To one destination, without verification.
bool copyFileWithProgress(const std::string& source, const std::string& destination,
                          const SharedFileCopyDelegate& delegate, const std::any& object, const std::any& object2);
bool copyFileWithProgress(const std::string& source, const std::string& destination,
                          const SharedFileCopyDelegate& delegate, const std::any& object);

}  // namespace KZFileManager
