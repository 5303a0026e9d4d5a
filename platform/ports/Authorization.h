// Administrator rights of the host. A host that has none leaves this service out.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {

// The password is overwritten when they go, as in every copy of them; a text that is copied out of them is not.
struct Credentials {
    std::string user;
    std::string password;

    ~Credentials();
};

// One set of rights, held until the object goes.
class AuthorizationRef {
public:
    virtual ~AuthorizationRef() = default;
};

// Statuses are the host's: 0 is success.
class Authorization {
public:
    virtual ~Authorization() = default;

    enum class Interaction { forbidden, allowed };

    // An authorization without rights yet.
    virtual int create(const std::optional<Credentials>& credentials, std::unique_ptr<AuthorizationRef>& made) = 0;
    // Adds the right; may show the host's password dialog when that is allowed. Blocks until it is answered.
    virtual int copyRights(AuthorizationRef& ref, const std::string& right,
                           const std::optional<Credentials>& credentials, Interaction interaction) = 0;
    // Starts the tool with the right. When `drain` is set, returns only once the tool has closed its output; else soon,
    // whether the tool has ended or not.
    virtual int execute(AuthorizationRef& ref, const std::string& tool, const std::vector<std::string>& arguments,
                        bool drain) = 0;
    // What a process that was started with rights inherited; empty when there is nothing to inherit.
    virtual std::unique_ptr<AuthorizationRef> copyPrivilegedReference() = 0;
};

}  // namespace platform
