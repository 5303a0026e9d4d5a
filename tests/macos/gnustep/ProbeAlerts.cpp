#include "tests/macos/gnustep/ProbeAlerts.h"

#include <functional>
#include <map>
#include <mutex>
#include <thread>

#include "lib/KZAlert.h"
#include "platform/ports/Host.h"

namespace probe {

namespace {

std::mutex mutex;
std::vector<std::pair<std::string, long>> remembered;

using Shown = std::function<long(platform::Window*)>;

long timed(platform::Window* parent) {
    return KZAlert::timedAlertSheetWithMessageText("Timed", "Now", std::nullopt, std::nullopt,
                                                   "It answers itself, 100%@ surely.", parent, 2);
}

long question(platform::Window* parent) {
    return KZAlert::alertSheetWithMessageText("Which way?", "Left", "Right", "Straight on", "There are three.", parent,
                                              Block::yes);
}

long suppressed(platform::Window* parent) {
    return KZAlert::alertSheetWithMessageText("Again?", std::nullopt, std::nullopt, std::nullopt, "You may say never.",
                                              parent, nullptr, std::nullopt, Block::yes, nullptr, "hideAgain");
}

// No user default can be observed under such a name.
long oddlySuppressed(platform::Window* parent) {
    return KZAlert::alertSheetWithMessageText("Again?", std::nullopt, std::nullopt, std::nullopt, "You may say never.",
                                              parent, nullptr, std::nullopt, Block::yes, nullptr, "@undefined");
}

// The second finds the window taken and is shown free-standing.
long two(platform::Window* parent) {
    KZAlert::alertSheetWithMessageText("Beneath", std::nullopt, std::nullopt, std::nullopt, "The first.", parent,
                                       Block::no);
    return KZAlert::alertSheetWithMessageText("Above", "Enough", std::nullopt, std::nullopt, "The second.", parent,
                                              Block::yes);
}

// Free-standing, as the window is taken.
long timedAbove(platform::Window* parent) {
    KZAlert::alertSheetWithMessageText("Beneath", std::nullopt, std::nullopt, std::nullopt, "The first.", parent,
                                       Block::no);
    return timed(parent);
}

long aloneTimed(platform::Window* /*parent*/) { return timed(nullptr); }

long aloneQuestion(platform::Window* /*parent*/) { return question(nullptr); }

const std::map<std::string, Shown>& kinds() {
    static const std::map<std::string, Shown> all{{"timed", timed},
                                                  {"timed-above", timedAbove},
                                                  {"question", question},
                                                  {"suppressed", suppressed},
                                                  {"oddly-suppressed", oddlySuppressed},
                                                  {"two", two},
                                                  {"alone-timed", aloneTimed},
                                                  {"alone-question", aloneQuestion}};
    return all;
}

}  // namespace

void remember(const std::string& what, long code) {
    const std::lock_guard lock(mutex);
    remembered.emplace_back(what, code);
}

std::vector<std::pair<std::string, long>> answers() {
    const std::lock_guard lock(mutex);
    return remembered;
}

bool show(const std::string& where, const std::string& kind, platform::Window& parent) {
    if (where == "panel") {
        platform::host().mainThread->perform([] {
            platform::host().application->runAlertPanel("Panel", "A loop of its own, 100%@.");
            remember("panel", 0);
        });
        return true;
    }
    const auto found = kinds().find(kind);
    if (found == kinds().end()) {
        return false;
    }
    const auto shown = [kind, window = &parent, work = found->second] { remember(kind, work(window)); };
    if (where == "main") {
        platform::host().mainThread->perform(shown);
    } else {
        std::thread(shown).detach();
    }
    return true;
}

}  // namespace probe
