#include "platform/linux/rights/PolkitAgent.h"

#include <unistd.h>

#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/rights/Administrators.h"
#include "platform/linux/rights/PolkitConversation.h"
#include "platform/linux/rights/PolkitRegistration.h"

namespace platform::rights {

namespace {

constexpr const char* actionOfPkexec = "org.freedesktop.policykit.exec";

using Context = std::unique_ptr<GMainContext, PolkitFree<&PolkitLibrary::g_main_context_unref>>;
using Source = std::unique_ptr<GSource, PolkitFree<&PolkitLibrary::g_source_unref>>;

const PolkitLibrary& library() { return *polkitLibrary(); }

// GLib wants this for a descriptor's callback. The way round is the one that no compiler takes for a mistake.
GSourceFunc asSourceFunction(GUnixFDSourceFunc function) {
    return reinterpret_cast<GSourceFunc>(reinterpret_cast<void (*)()>(function));
}

gboolean keepWatching(gint /*fd*/, GIOCondition /*condition*/, gpointer /*data*/) { return TRUE; }

PolkitAgent::Outcome outcomeOf(PolkitConversation::Verdict verdict) {
    switch (verdict) {
        case PolkitConversation::Verdict::open:
            break;
        case PolkitConversation::Verdict::granted:
            return PolkitAgent::Outcome::granted;
        case PolkitConversation::Verdict::cancelled:
            return PolkitAgent::Outcome::cancelled;
        case PolkitConversation::Verdict::refused:
            return PolkitAgent::Outcome::refused;
        case PolkitConversation::Verdict::unavailable:
            return PolkitAgent::Outcome::unavailable;
    }
    return PolkitAgent::Outcome::open;
}

}  // namespace

// What the library reports, from wherever, becomes an event; serve deals with the events once the library's own
// functions have returned, so that these never find an object gone that they are still working with.
class PolkitAgent::Implementation : public PolkitConversation::Check {
public:
    explicit Implementation(PasswordPrompt* prompt);
    ~Implementation() override;
    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;

    bool add() { return m_registration->add(); }
    void watch(int descriptor);
    void serve();
    Outcome outcome() const { return m_outcome; }

    void begin(const std::string& user) override;
    void respond(const Secret& response) override;
    void abandon() override;

private:
    void receive(std::unique_ptr<PolkitRequest> request);
    void withdraw();
    void postOfSession(std::function<void()> event);
    void settle();

    static void onRequest(PolkitAgentSession* session, const gchar* text, gboolean isEchoed, gpointer self);
    static void onText(PolkitAgentSession* session, const gchar* text, gpointer self);
    static void onCompleted(PolkitAgentSession* session, gboolean isGranted, gpointer self);

    PasswordPrompt* const m_prompt;
    const Context m_context;
    std::unique_ptr<PolkitRegistration> m_registration;
    std::vector<Source> m_watches;
    std::deque<std::function<void()>> m_events;
    std::unique_ptr<PolkitRequest> m_request;  // while polkit waits for the answer
    std::unique_ptr<PolkitConversation> m_conversation;
    PolkitObject<PolkitAgentSession> m_session;
    unsigned m_sessionNumber = 0;  // events of an earlier session are void
    Outcome m_outcome = Outcome::open;
};

PolkitAgent::Implementation::Implementation(PasswordPrompt* prompt)
    : m_prompt(prompt), m_context(library().g_main_context_new()) {
    library().g_main_context_push_thread_default(m_context.get());
    m_registration = std::make_unique<PolkitRegistration>(
        [this](std::unique_ptr<PolkitRequest> request) { receive(std::move(request)); });
}

PolkitAgent::Implementation::~Implementation() {
    for (const Source& watch : m_watches) {
        library().g_source_destroy(watch.get());
    }
    m_conversation.reset();
    m_request.reset();
    m_registration.reset();
    // What the library still has to do for what is gone by now.
    while (library().g_main_context_iteration(m_context.get(), FALSE) != FALSE) {
    }
    library().g_main_context_pop_thread_default(m_context.get());
}

void PolkitAgent::Implementation::watch(int descriptor) {
    if (descriptor < 0) {
        return;
    }
    constexpr auto readable = static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR);
    Source source(library().g_unix_fd_source_new(descriptor, readable));
    library().g_source_set_callback(source.get(), asSourceFunction(keepWatching), nullptr, nullptr);
    library().g_source_attach(source.get(), m_context.get());
    m_watches.push_back(std::move(source));
}

void PolkitAgent::Implementation::serve() {
    library().g_main_context_iteration(m_context.get(), TRUE);
    while (!m_events.empty()) {
        const auto event = std::move(m_events.front());
        m_events.pop_front();
        event();
    }
    if (m_conversation) {
        m_conversation->takeAnswer();
    }
    settle();
}

// One pkexec has one question. Whatever comes besides, or for another purpose, is dismissed.
void PolkitAgent::Implementation::receive(std::unique_ptr<PolkitRequest> request) {
    if (m_prompt == nullptr || m_request || request->action != actionOfPkexec) {
        return;
    }
    m_request = std::move(request);
    m_request->withdrawn = [this] { m_events.emplace_back([this] { withdraw(); }); };
    m_request->watchForWithdrawal();
    m_events.emplace_back([this] {
        m_conversation = std::make_unique<PolkitConversation>(
            *m_prompt, *this, administratorsFrom(m_request->administrators, ::getuid()),
            [context = m_context.get()] { library().g_main_context_wakeup(context); });
        m_conversation->begin();
    });
}

void PolkitAgent::Implementation::withdraw() {
    m_conversation.reset();
    m_request.reset();
}

void PolkitAgent::Implementation::settle() {
    if (!m_conversation || !m_request) {
        return;
    }
    m_outcome = outcomeOf(m_conversation->verdict());
    if (m_outcome == Outcome::granted) {
        m_request->finish();
    }
    if (m_outcome != Outcome::open) {
        m_request.reset();
    }
}

void PolkitAgent::Implementation::begin(const std::string& user) {
    abandon();
    const PolkitObject<PolkitIdentity> identity(
        orNull([&](GError** error) { return library().polkit_unix_user_new_for_name(user.c_str(), error); }));
    if (!identity) {
        postOfSession([this] { m_conversation->ended(false); });
        return;
    }
    m_session.reset(library().polkit_agent_session_new(identity.get(), m_request->cookie.c_str()));
    connectSignal(m_session.get(), "request", reinterpret_cast<GCallback>(onRequest), this);
    connectSignal(m_session.get(), "show-error", reinterpret_cast<GCallback>(onText), this);
    connectSignal(m_session.get(), "show-info", reinterpret_cast<GCallback>(onText), this);
    connectSignal(m_session.get(), "completed", reinterpret_cast<GCallback>(onCompleted), this);
    library().polkit_agent_session_initiate(m_session.get());
}

void PolkitAgent::Implementation::respond(const Secret& response) {
    // The library writes this to the program that checks it, without a copy of its own. It wants a string that ends,
    // and reads before the beginning of an empty one.
    Secret line(response.view());
    if (!m_session || !line.insert(line.size(), std::string_view("\n\0", 2))) {
        postOfSession([this] { m_conversation->ended(false); });
        return;
    }
    library().polkit_agent_session_response(m_session.get(), line.view().data());
}

void PolkitAgent::Implementation::abandon() {
    ++m_sessionNumber;
    if (const auto session = std::move(m_session)) {
        disconnectSignals(session.get(), this);
        library().polkit_agent_session_cancel(session.get());
    }
}

void PolkitAgent::Implementation::postOfSession(std::function<void()> event) {
    m_events.emplace_back([this, number = m_sessionNumber, event = std::move(event)] {
        if (m_conversation && number == m_sessionNumber) {
            event();
        }
    });
    library().g_main_context_wakeup(m_context.get());
}

void PolkitAgent::Implementation::onRequest(PolkitAgentSession* /*session*/, const gchar* text, gboolean isEchoed,
                                            gpointer self) {
    auto* const agent = static_cast<Implementation*>(self);
    agent->postOfSession(
        [agent, question = std::string(text), isEchoed] { agent->m_conversation->asked(question, isEchoed != FALSE); });
}

void PolkitAgent::Implementation::onText(PolkitAgentSession* /*session*/, const gchar* text, gpointer self) {
    auto* const agent = static_cast<Implementation*>(self);
    agent->postOfSession([agent, said = std::string(text)] { agent->m_conversation->said(said); });
}

void PolkitAgent::Implementation::onCompleted(PolkitAgentSession* /*session*/, gboolean isGranted, gpointer self) {
    auto* const agent = static_cast<Implementation*>(self);
    agent->postOfSession([agent, isGranted] { agent->m_conversation->ended(isGranted != FALSE); });
}

PolkitAgent::PolkitAgent(std::unique_ptr<Implementation> implementation)
    : m_implementation(std::move(implementation)) {}

PolkitAgent::~PolkitAgent() = default;

std::unique_ptr<PolkitAgent> PolkitAgent::make(PasswordPrompt* prompt) {
    if (polkitLibrary() == nullptr) {
        return nullptr;
    }
    auto implementation = std::make_unique<Implementation>(prompt);
    return implementation->add() ? std::unique_ptr<PolkitAgent>(new PolkitAgent(std::move(implementation))) : nullptr;
}

void PolkitAgent::watch(int descriptor) { m_implementation->watch(descriptor); }
void PolkitAgent::serve() { m_implementation->serve(); }
PolkitAgent::Outcome PolkitAgent::outcome() const { return m_implementation->outcome(); }

}  // namespace platform::rights
