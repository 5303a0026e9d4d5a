// The entry of this process in polkit's list of authentication agents.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/rights/PolkitLibrary.h"

namespace platform::rights {

// What polkit wants to know. It goes unanswered as a dismissal.
class PolkitRequest {
public:
    explicit PolkitRequest(PolkitObject<GTask> task) : m_task(std::move(task)) {}
    ~PolkitRequest() { dismiss(); }
    PolkitRequest(const PolkitRequest&) = delete;
    PolkitRequest& operator=(const PolkitRequest&) = delete;

    std::string action;
    std::string cookie;
    std::vector<std::string> administrators;  // in polkit's notation
    std::function<void()> withdrawn;          // polkit no longer wants to know; this object must outlive the call

    void watchForWithdrawal();
    // Somebody was checked, and polkit has learnt from the one who checked him whether he is an administrator.
    void finish();
    void dismiss();

private:
    PolkitObject<GTask> take();

    PolkitObject<GTask> m_task;  // none once answered
};

// Requests come in while the thread's default main context runs.
class PolkitRegistration {
public:
    using Handler = std::function<void(std::unique_ptr<PolkitRequest>)>;

    explicit PolkitRegistration(Handler handler) : m_handler(std::move(handler)) {}
    ~PolkitRegistration();
    PolkitRegistration(const PolkitRegistration&) = delete;
    PolkitRegistration& operator=(const PolkitRegistration&) = delete;

    // False: no system bus, no polkit that would start within 10 s, or it does not want this process. Blocks.
    bool add();

private:
    const Handler m_handler;
    PolkitObject<GDBusConnection> m_bus;
    PolkitObject<PolkitAgentListener> m_listener;
    gpointer m_handle = nullptr;
};

}  // namespace platform::rights
