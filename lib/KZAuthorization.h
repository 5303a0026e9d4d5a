// The process's one administrator-rights session, and file commands that run system tools with its rights.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ports/Authorization.h"

enum class WithGUI { no, yes };
enum class Async { no, yes };
enum class DeleteOnRootAccount { no, yes };

// Only making the shared instance is guarded by a lock; the calls on it are for one thread at a time. They block while
// a password dialog is up and throw nothing. For the superuser no session is needed, and none is ever started.
//
// A command is true when its tool was started. It does not wait for the tool to end and never learns what came of it;
// whoever needs the effect waits for it on disk. False: refused (a system folder, a missing source, no path), not
// authorized, or the tool could not be started. Messages go to the system console. Paths are absolute.
class KZAuthorization {
public:
    // The shared instance, never destroyed. The first call decides whether it may show a password dialog (the short
    // form says yes); later calls find it as it is.
    static KZAuthorization* sharedController();
    static KZAuthorization* sharedController(WithGUI gui);
    // The shared instance, yet to be initialised; null when there is one already.
    static KZAuthorization* alloc();

    KZAuthorization(const KZAuthorization&) = delete;
    KZAuthorization& operator=(const KZAuthorization&) = delete;

    // Adopts the rights that the process was started with, if any, and notes the home folder of an ordinary user.
    KZAuthorization* init();
    KZAuthorization* initWithoutGUI();

    // What is held; null: no session. Setting it hands back what was held, so that it depends on the caller when those
    // rights end.
    platform::AuthorizationRef* authRef() const;
    std::unique_ptr<platform::AuthorizationRef> setAuthRef(std::unique_ptr<platform::AuthorizationRef> ref);
    bool hasGUI() const;
    void setHasGUI(bool hasGUI);
    // The home folder of the user who started the process; none for the superuser.
    const std::optional<std::string>& userDirectory() const;

    bool isAuthorized() const;
    // Whether a session could be asked for: without a dialog only the superuser needs no other.
    bool canAuthorize() const;

    // Asks the user for the rights, unless they are held already. False when there is no dialog to ask with, or the
    // user cancelled; the next call asks again.
    bool authStart();
    // Without any dialog, replacing the session that is held. An empty or missing name or password is refused silently;
    // a wrong one is reported in the program's log too, and leaves no session. Nothing of the password stays behind
    // here; the caller's own copies are the caller's to overwrite, the one that a conversion to an argument makes
    // included.
    bool authStartWithUser(const std::optional<std::string>& user, const std::optional<std::string>& password);
    // The superuser's rights are not the session's to end: they are only forgotten.
    void authEnd();

    // Runs the tool with rights, starting the session when needed. 0: started; -1: not authorized; -2: no such tool;
    // else the host's status, EINVAL for an argument that holds a NUL. Async::no waits until the tool has closed its
    // output; the short form does not. For the superuser the status is 0 whatever the tool did.
    std::int32_t authExecTask(const std::string& tool, const std::vector<std::string>& parameters);
    std::int32_t authExecTask(const std::string& tool, const std::vector<std::string>& parameters, Async async);

    // Deletes the item for good, with all that lies in it.
    bool authRemoveFile(const std::string& path);

    // Moves the item into the Trash of the user who started the process. An item of that name that lies there already
    // makes it "Name_YYYYMMDDhhmmss.ext" (local time); without an extension the point stays at the end. A name taken
    // even so is replaced. With DeleteOnRootAccount::yes the superuser who was never somebody else deletes what stands
    // at that name in the Trash instead, and the item stays where it is.
    bool authTrashFile(const std::string& path);
    bool authTrashFile(const std::string& path, DeleteOnRootAccount deleteOnRootAccount);

    // Every entry of the folder, going on after a failure; true when none failed, and for an empty or unreadable
    // folder. With DeleteOnRootAccount::yes the superuser who was never somebody else deletes the entries for good.
    bool authTrashFolderContents(const std::string& folder);
    bool authTrashFolderContents(const std::string& folder, DeleteOnRootAccount deleteOnRootAccount);
    bool authMoveFolderContents(const std::string& folder, const std::string& toPath);

    // Replaces a file at the destination; into a folder that stands there the item is moved or copied. No path is
    // reported, a missing source is not.
    bool authMoveFile(const std::optional<std::string>& source, const std::optional<std::string>& toPath);
    bool authCopyFile(const std::optional<std::string>& source, const std::optional<std::string>& toPath);

    // Makes the folder and the missing ones above it; pauses for 500 microseconds, the superuser excepted.
    bool authCreateDir(const std::string& path);

private:
    friend class KZAuthorizationReset;  // lets a test begin without a shared instance

    KZAuthorization() = default;
    ~KZAuthorization();

    KZAuthorization* initWithGUI(bool hasGUI);
    bool holdIfGranted(std::unique_ptr<platform::AuthorizationRef> ref,
                       const std::optional<platform::Credentials>& credentials,
                       platform::Authorization::Interaction interaction);
    bool startTool(const std::string& tool, const std::vector<std::string>& parameters);
    std::optional<std::string> trashDestination(const std::string& path) const;

    static KZAuthorization* sharedAuth;

    std::unique_ptr<platform::AuthorizationRef> m_authRef;
    bool m_hasGUI = false;
    std::optional<std::string> m_userDirectory;
};
