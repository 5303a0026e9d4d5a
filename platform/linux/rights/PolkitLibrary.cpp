#include "platform/linux/rights/PolkitLibrary.h"

#include <dlfcn.h>

#include <optional>

namespace platform::rights {

namespace {

// Never unloaded: the types that it registers last as long as the process.
std::optional<PolkitLibrary> load() {
    void* const handle = ::dlopen("libpolkit-agent-1.so.0", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (handle == nullptr) {
        return std::nullopt;
    }
    PolkitLibrary library;
    bool isComplete = true;
    // A look-up by the library's handle goes through the libraries that it needs as well.
#define WICKFIELD_LOAD(name)                                                         \
    library.name = reinterpret_cast<decltype(library.name)>(::dlsym(handle, #name)); \
    isComplete = isComplete && library.name != nullptr;
    WICKFIELD_POLKIT_FUNCTIONS(WICKFIELD_LOAD)
#undef WICKFIELD_LOAD
    return isComplete ? std::optional(library) : std::nullopt;
}

}  // namespace

const PolkitLibrary* polkitLibrary() {
    static const std::optional<PolkitLibrary> library = load();
    return library ? &*library : nullptr;
}

void connectSignal(gpointer object, const char* signal, GCallback handler, gpointer data) {
    polkitLibrary()->g_signal_connect_data(object, signal, handler, data, nullptr, GConnectFlags{});
}

void disconnectSignals(gpointer object, gpointer data) {
    polkitLibrary()->g_signal_handlers_disconnect_matched(object, G_SIGNAL_MATCH_DATA, 0, 0, nullptr, nullptr, data);
}

}  // namespace platform::rights
