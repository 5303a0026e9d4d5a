#pragma once

#include <functional>
#include <set>
#include <utility>

#include "platform/ports/Authorization.h"

namespace fakes {

// Grants what its statuses say, remembers what was asked of it and knows which rights are still held.
class FakeAuthorization : public platform::Authorization {
public:
    struct Request {
        std::string right;
        std::optional<platform::Credentials> credentials;
        Interaction interaction = Interaction::forbidden;
    };
    struct Execution {
        std::string tool;
        std::vector<std::string> arguments;
        bool drain = false;
        friend bool operator==(const Execution&, const Execution&) = default;
    };

    int createStatus = 0;
    int rightsStatus = 0;
    int executeStatus = 0;
    bool inherits = false;                           // the process was started with rights
    std::function<void(const Execution&)> runsTool;  // what the tool does once it is started

    int created = 0;
    std::vector<Request> requests;
    std::vector<Execution> executions;

    FakeAuthorization() = default;
    FakeAuthorization(const FakeAuthorization&) = delete;
    FakeAuthorization& operator=(const FakeAuthorization&) = delete;
    ~FakeAuthorization() override {
        const auto forgotten = std::exchange(m_held, {});
        for (const auto* ref : forgotten) {
            delete ref;
        }
    }

    std::size_t held() const { return m_held.size(); }

    int create(const std::optional<platform::Credentials>& /*credentials*/,
               std::unique_ptr<platform::AuthorizationRef>& made) override {
        ++created;
        if (createStatus == 0) {
            made = std::make_unique<Ref>(*this);
        }
        return createStatus;
    }
    int copyRights(platform::AuthorizationRef& /*ref*/, const std::string& right,
                   const std::optional<platform::Credentials>& credentials, Interaction interaction) override {
        requests.push_back({.right = right, .credentials = credentials, .interaction = interaction});
        return rightsStatus;
    }
    int execute(platform::AuthorizationRef& /*ref*/, const std::string& tool, const std::vector<std::string>& arguments,
                bool drain) override {
        executions.push_back({.tool = tool, .arguments = arguments, .drain = drain});
        if (executeStatus == 0 && runsTool) {
            runsTool(executions.back());
        }
        return executeStatus;
    }
    std::unique_ptr<platform::AuthorizationRef> copyPrivilegedReference() override {
        return inherits ? std::make_unique<Ref>(*this) : nullptr;
    }

private:
    class Ref : public platform::AuthorizationRef {
    public:
        explicit Ref(FakeAuthorization& owner) : m_owner(owner) { m_owner.m_held.insert(this); }
        ~Ref() override { m_owner.m_held.erase(this); }

    private:
        FakeAuthorization& m_owner;
    };

    std::set<const Ref*> m_held;
};

}  // namespace fakes
