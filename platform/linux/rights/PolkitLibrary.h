// polkit's agent library with the parts of GLib that it is used with, loaded when rights are asked for: the program
// starts sooner without them, and starts on machines that do not have them.
#pragma once

#define POLKIT_AGENT_I_KNOW_API_IS_SUBJECT_TO_CHANGE
#include <glib-unix.h>
#include <polkitagent/polkitagent.h>

#include <memory>

// Every function that is used of them.
#define WICKFIELD_POLKIT_FUNCTIONS(X)       \
    X(g_bus_get_sync)                       \
    X(g_dbus_connection_call_sync)          \
    X(g_dbus_connection_set_exit_on_close)  \
    X(g_error_free)                         \
    X(g_error_new_literal)                  \
    X(g_free)                               \
    X(g_main_context_iteration)             \
    X(g_main_context_new)                   \
    X(g_main_context_pop_thread_default)    \
    X(g_main_context_push_thread_default)   \
    X(g_main_context_unref)                 \
    X(g_main_context_wakeup)                \
    X(g_object_new)                         \
    X(g_object_unref)                       \
    X(g_signal_connect_data)                \
    X(g_signal_handlers_disconnect_matched) \
    X(g_source_attach)                      \
    X(g_source_destroy)                     \
    X(g_source_set_callback)                \
    X(g_source_unref)                       \
    X(g_task_get_cancellable)               \
    X(g_task_new)                           \
    X(g_task_propagate_boolean)             \
    X(g_task_return_boolean)                \
    X(g_task_return_error)                  \
    X(g_type_register_static_simple)        \
    X(g_unix_fd_source_new)                 \
    X(g_variant_new)                        \
    X(g_variant_unref)                      \
    X(polkit_agent_listener_get_type)       \
    X(polkit_agent_listener_register)       \
    X(polkit_agent_listener_unregister)     \
    X(polkit_agent_session_cancel)          \
    X(polkit_agent_session_initiate)        \
    X(polkit_agent_session_new)             \
    X(polkit_agent_session_response)        \
    X(polkit_error_quark)                   \
    X(polkit_identity_to_string)            \
    X(polkit_unix_process_new_for_owner)    \
    X(polkit_unix_user_new_for_name)

namespace platform::rights {

struct PolkitLibrary {
// NOLINTNEXTLINE(bugprone-macro-parentheses): a name that is declared stands in none
#define WICKFIELD_MEMBER(name) decltype(&::name) name = nullptr;
    WICKFIELD_POLKIT_FUNCTIONS(WICKFIELD_MEMBER)
#undef WICKFIELD_MEMBER
};

// Null where it is missing. The first call loads it, for the life of the process. Any thread.
const PolkitLibrary* polkitLibrary();

// Hands a pointer back to the library by whatever is meant to free it.
template <auto PolkitLibrary::*Free>
struct PolkitFree {
    template <typename T>
    void operator()(T* pointer) const {
        (polkitLibrary()->*Free)(pointer);
    }
};

template <typename T>
using PolkitObject = std::unique_ptr<T, PolkitFree<&PolkitLibrary::g_object_unref>>;

// Calls a function of the library that leaves an error behind when it gives null.
template <typename Call>
auto orNull(Call call) {
    GError* error = nullptr;
    auto* const result = call(&error);
    const std::unique_ptr<GError, PolkitFree<&PolkitLibrary::g_error_free>> freed(error);
    return result;
}

void connectSignal(gpointer object, const char* signal, GCallback handler, gpointer data);
void disconnectSignals(gpointer object, gpointer data);  // all that were connected with that data

}  // namespace platform::rights
