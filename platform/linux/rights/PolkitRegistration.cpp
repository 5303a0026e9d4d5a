#include "platform/linux/rights/PolkitRegistration.h"

#include <unistd.h>

#include <utility>

namespace platform::rights {

namespace {

constexpr int longestStart = 10'000;  // milliseconds

using Text = std::unique_ptr<gchar, PolkitFree<&PolkitLibrary::g_free>>;
using Variant = std::unique_ptr<GVariant, PolkitFree<&PolkitLibrary::g_variant_unref>>;

const PolkitLibrary& library() { return *polkitLibrary(); }

// The class of GLib's type system that polkit's library calls; the rest of its instances is the handler's address.
struct Listener {
    PolkitAgentListener parent;
    const PolkitRegistration::Handler* handler;
};

void initiateAuthentication(PolkitAgentListener* listener, const gchar* action, const gchar* /*message*/,
                            const gchar* /*icon*/, PolkitDetails* /*details*/, const gchar* cookie, GList* identities,
                            GCancellable* cancellable, GAsyncReadyCallback answered, gpointer data) {
    auto request = std::make_unique<PolkitRequest>(
        PolkitObject<GTask>(library().g_task_new(listener, cancellable, answered, data)));
    request->action = action;
    request->cookie = cookie;
    for (const GList* each = identities; each != nullptr; each = each->next) {
        const Text text(library().polkit_identity_to_string(static_cast<PolkitIdentity*>(each->data)));
        request->administrators.emplace_back(text ? text.get() : "");
    }
    (*reinterpret_cast<Listener*>(listener)->handler)(std::move(request));
}

gboolean finishAuthentication(PolkitAgentListener* /*listener*/, GAsyncResult* result, GError** error) {
    return library().g_task_propagate_boolean(reinterpret_cast<GTask*>(result), error);
}

void setUpListenerClass(gpointer type, gpointer /*data*/) {
    auto* const functions = static_cast<PolkitAgentListenerClass*>(type);
    functions->initiate_authentication = initiateAuthentication;
    functions->initiate_authentication_finish = finishAuthentication;
}

GType listenerType() {
    static const GType type = library().g_type_register_static_simple(
        library().polkit_agent_listener_get_type(), "WickfieldAgentListener", sizeof(PolkitAgentListenerClass),
        setUpListenerClass, sizeof(Listener), nullptr, GTypeFlags{});
    return type;
}

// The end of the connection must not be the end of the process, as it is by default.
PolkitObject<GDBusConnection> connectToSystemBus() {
    PolkitObject<GDBusConnection> bus(
        orNull([](GError** error) { return library().g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, error); }));
    if (bus) {
        library().g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    }
    return bus;
}

// The registration by itself would wait for the daemon much longer.
bool startDaemon(GDBusConnection* bus) {
    const Variant reply(orNull([&](GError** error) {
        return library().g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                     "org.freedesktop.DBus", "StartServiceByName",
                                                     library().g_variant_new("(su)", "org.freedesktop.PolicyKit1", 0U),
                                                     nullptr, G_DBUS_CALL_FLAGS_NONE, longestStart, nullptr, error);
    }));
    return reply != nullptr;
}

void onCancelled(GCancellable* /*cancellable*/, gpointer request) {
    if (const auto& withdrawn = static_cast<PolkitRequest*>(request)->withdrawn) {
        withdrawn();
    }
}

}  // namespace

void PolkitRequest::watchForWithdrawal() {
    if (auto* const cancellable = m_task ? library().g_task_get_cancellable(m_task.get()) : nullptr) {
        connectSignal(cancellable, "cancelled", reinterpret_cast<GCallback>(onCancelled), this);
    }
}

PolkitObject<GTask> PolkitRequest::take() {
    if (auto* const cancellable = m_task ? library().g_task_get_cancellable(m_task.get()) : nullptr) {
        disconnectSignals(cancellable, this);
    }
    return std::move(m_task);
}

void PolkitRequest::finish() {
    if (const auto task = take()) {
        library().g_task_return_boolean(task.get(), TRUE);
    }
}

void PolkitRequest::dismiss() {
    if (const auto task = take()) {
        library().g_task_return_error(task.get(), library().g_error_new_literal(library().polkit_error_quark(),
                                                                                POLKIT_ERROR_CANCELLED, "Dismissed"));
    }
}

bool PolkitRegistration::add() {
    m_bus = connectToSystemBus();
    if (!m_bus || !startDaemon(m_bus.get())) {
        return false;
    }
    m_listener.reset(static_cast<PolkitAgentListener*>(library().g_object_new(listenerType(), nullptr)));
    reinterpret_cast<Listener*>(m_listener.get())->handler = &m_handler;
    const PolkitObject<PolkitSubject> process(
        library().polkit_unix_process_new_for_owner(::getpid(), 0, static_cast<gint>(::getuid())));
    m_handle = orNull([&](GError** error) {
        return library().polkit_agent_listener_register(m_listener.get(), POLKIT_AGENT_REGISTER_FLAGS_NONE,
                                                        process.get(), nullptr, nullptr, error);
    });
    return m_handle != nullptr;
}

PolkitRegistration::~PolkitRegistration() {
    if (m_handle != nullptr) {
        library().polkit_agent_listener_unregister(m_handle);
    }
}

}  // namespace platform::rights
