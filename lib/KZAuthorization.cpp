#include "lib/KZAuthorization.h"

#include <mutex>
#include <utility>

#include "lib/KZLocalPaths.h"
#include "lib/KZLog.h"
#include "lib/base/Format.h"
#include "platform/ports/Host.h"

namespace {

using platform::Authorization;
using platform::AuthorizationRef;
using platform::Credentials;

constexpr const char* administratorRight = "system.privilege.admin";
constexpr std::int32_t noService = -1;

std::recursive_mutex& classLock() {
    static std::recursive_mutex lock;
    return lock;
}

bool isSuperuser() { return platform::host().identity->realUserID() == 0; }

std::int32_t createRef(const std::optional<Credentials>& credentials, std::unique_ptr<AuthorizationRef>& made) {
    auto* service = platform::host().authorization;
    const std::int32_t status = service != nullptr ? service->create(credentials, made) : noService;
    return status == 0 && !made ? noService : status;
}

// Names and passwords travel as texts that end at the first NUL.
std::string upToNul(const std::string& text) { return text.substr(0, text.find('\0')); }

}  // namespace

KZAuthorization* KZAuthorization::sharedAuth = nullptr;

KZAuthorization::~KZAuthorization() { authEnd(); }

KZAuthorization* KZAuthorization::sharedController() { return sharedController(WithGUI::yes); }

KZAuthorization* KZAuthorization::sharedController(WithGUI gui) {
    const std::lock_guard lock(classLock());
    if (sharedAuth == nullptr) {
        auto* made = alloc();
        gui == WithGUI::yes ? made->init() : made->initWithoutGUI();
    }
    return sharedAuth;
}

KZAuthorization* KZAuthorization::alloc() {
    const std::lock_guard lock(classLock());
    if (sharedAuth != nullptr) {
        return nullptr;
    }
    sharedAuth = new KZAuthorization;
    return sharedAuth;
}

KZAuthorization* KZAuthorization::init() { return initWithGUI(true); }

KZAuthorization* KZAuthorization::initWithoutGUI() { return initWithGUI(false); }

KZAuthorization* KZAuthorization::initWithGUI(bool hasGUI) {
    m_hasGUI = hasGUI;
    auto* service = platform::host().authorization;
    m_authRef = service != nullptr ? service->copyPrivilegedReference() : nullptr;
    if (!isSuperuser()) {
        m_userDirectory = KZLocalPaths::userDirectory();
    }
    return this;
}

AuthorizationRef* KZAuthorization::authRef() const { return m_authRef.get(); }

std::unique_ptr<AuthorizationRef> KZAuthorization::setAuthRef(std::unique_ptr<AuthorizationRef> ref) {
    return std::exchange(m_authRef, std::move(ref));
}

bool KZAuthorization::hasGUI() const { return m_hasGUI; }

void KZAuthorization::setHasGUI(bool hasGUI) { m_hasGUI = hasGUI; }

const std::optional<std::string>& KZAuthorization::userDirectory() const { return m_userDirectory; }

bool KZAuthorization::isAuthorized() const { return isSuperuser() || m_authRef; }

bool KZAuthorization::canAuthorize() const { return m_hasGUI || isSuperuser(); }

bool KZAuthorization::authStart() {
    if (isAuthorized()) {
        return true;
    }
    if (!m_hasGUI) {
        platform::host().console->log("Unable to authorize");
        return false;
    }
    std::unique_ptr<AuthorizationRef> made;
    return createRef({}, made) == 0 && holdIfGranted(std::move(made), {}, Authorization::Interaction::allowed);
}

bool KZAuthorization::authStartWithUser(const std::optional<std::string>& user,
                                        const std::optional<std::string>& password) {
    if (isSuperuser()) {
        return true;
    }
    if (!user || !password || user->empty() || password->empty()) {
        return false;
    }
    const Credentials credentials{.user = upToNul(*user), .password = upToNul(*password)};
    std::unique_ptr<AuthorizationRef> made;
    if (const std::int32_t status = createRef(credentials, made); status != 0) {
        m_authRef.reset();
        platform::host().console->log(kz::format("Unable to create authRef - error %d", status));
        return false;
    }
    if (holdIfGranted(std::move(made), credentials, Authorization::Interaction::forbidden)) {
        return true;
    }
    constexpr const char* refused = "Authorization failed. Invalid username or password";
    platform::host().console->log(refused);
    KZLog::appendLog(refused);
    return false;
}

bool KZAuthorization::holdIfGranted(std::unique_ptr<AuthorizationRef> ref,
                                    const std::optional<Credentials>& credentials,
                                    Authorization::Interaction interaction) {
    auto& service = *platform::host().authorization;
    const bool granted = service.copyRights(*ref, administratorRight, credentials, interaction) == 0;
    m_authRef = granted ? std::move(ref) : nullptr;
    return granted;
}

void KZAuthorization::authEnd() {
    if (isSuperuser()) {
        static_cast<void>(m_authRef.release());  // forgotten, not ended
    }
    m_authRef.reset();
}
