// Where the standard folders lie and who the user is, guards for paths, and small path utilities.
//
// The program may run as the superuser on behalf of the person at the console. Every operation that concerns "the user"
// then means that person; with nobody at the console it answers none, and never the superuser's own home. A caller has
// to carry none along: a path joined onto none is none.
//
// Nothing here keeps state, creates or looks at a file, or reports an error. Any thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/ports/StandardFolders.h"

enum class UserDomain { no, yes };  // no: the machine-wide folder below "/Library"
enum class ExactMatch { no, yes };

namespace KZLocalPaths {

// The host's first answer; none when it has no such folder in that domain.
//
// For the superuser a user-domain answer is moved below the console user's home: a leading "/var/root" is cut off, and
// of a leading "/private/var/root" all but its last letter, so that "/private/var/root/Library" becomes "t/Library"
// below that home. An answer with neither beginning is joined as a whole.
std::optional<std::string> pathForDirectory(platform::FolderKind kind, platform::FolderDomain domain);

// None where pathForDirectory is none for the kind, or for the folder that the path is joined onto.
std::optional<std::string> applicationDirectory(UserDomain user);
std::optional<std::string> adminApplicationDirectory(UserDomain user);
std::optional<std::string> documentDirectory(UserDomain user);
std::optional<std::string> libraryDirectory(UserDomain user);
std::optional<std::string> prefsDirectory(UserDomain user);  // "Preferences" in the Library folder
std::optional<std::string> cacheDirectory(UserDomain user);
std::optional<std::string> appSupportDirectory(UserDomain user);
std::optional<std::string> movieDirectory();    // of the user
std::optional<std::string> desktopDirectory();  // of the user
std::optional<std::string> systemLibraryDirectory();
std::optional<std::string> localDocumentationDirectory();
std::optional<std::string> trashDirectory();               // ".Trash" in the user's home
std::optional<std::string> logDirectory(UserDomain user);  // "Logs" in the Library folder
std::optional<std::string> darwinCacheDirectory();         // the operating system's own, of the process's user

std::optional<std::string> userDirectory();       // home; for the superuser that of the console user
std::optional<std::string> username();            // short name; for the superuser that of the console user
std::optional<std::string> currentConsoleUser();  // none too while a login window owns the console

// May or may not end with "/": join it, do not append text.
std::string tempDirectory();
// A fresh path in the temporary folder. Nothing is created there and nobody checks whether something is.
std::string tempFile();
std::string uuid();  // never the same twice

// Whether the path is one that must never be removed or replaced as a whole: "/", a standard folder, one of a few
// system folders or, unless the match is to be exact, anything in the system's folders. The user's home and Library
// are protected themselves, what lies in them is not; "/usr/local/…" is not. Paths of one or two characters other than
// "/" are not.
//
// The text is compared as it stands, letter for letter; resolve links and ".." beforehand. A path that ends with "/"
// loses that and the character before it, so that "/usr/" is looked at as "/u" and is not protected: strip trailing
// slashes beforehand.
bool isPathSystemDirectory(const std::string& path);  // the match is not to be exact
bool isPathSystemDirectory(const std::string& path, ExactMatch exactMatch);

// The same for many paths: the host is asked for its folders once, when the object is made. Any thread.
class SystemDirectoryGuard {
public:
    SystemDirectoryGuard();

    bool protects(const std::string& path, ExactMatch exactMatch) const;

private:
    std::vector<std::string> m_standardFolders;
};

// Below "/Volumes/" and with a component "Backups.backupdb".
bool isPathOnTimeMachineVolume(const std::string& path);

// None stays none and "" stays "".
std::optional<std::string> ensureTrailingSlash(const std::optional<std::string>& path);
// Takes off one "/" at most; "/" stays.
std::optional<std::string> stripTrailingSlash(const std::optional<std::string>& path);

// Lower-case letters and digits; empty for lengths below one. Not for secrets, and not unique: the generator is seeded
// with the processor clock and the second at every call, so two calls within the same reading return the same text.
// It is the C library's process-wide generator; calls of this operation exclude one another, other users of rand() get
// a new sequence.
std::string randomString(long length);

}  // namespace KZLocalPaths
