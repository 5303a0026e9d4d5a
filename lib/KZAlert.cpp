#include "lib/KZAlert.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "platform/ports/Host.h"

namespace {

constexpr const char* ownCallback = "alertDidEnd:returnCode:contextInfo:";
constexpr auto eventSlice = std::chrono::milliseconds(10);
constexpr auto pollInterval = std::chrono::milliseconds(200);
constexpr std::int64_t defaultReturn = 1;
constexpr std::int64_t noAnswer = -1;
constexpr std::int64_t longestInterval = 100LL * 365 * 24 * 3600;  // what a clock can add to its present time

void put(AlertDescription& description, const char* key, const KZAlert::Text& value) {
    if (value && !value->empty()) {
        description.insert_or_assign(key, *value);
    }
}

KZAlert::Text valueOf(const AlertDescription& description, const char* key) {
    const auto found = description.find(key);
    return found == description.end() ? std::nullopt : std::optional(found->second);
}

AlertDescription describe(const KZAlert::Text& messageText, const KZAlert::Text& defaultButton,
                          const KZAlert::Text& alternateButton, const KZAlert::Text& otherButton,
                          const KZAlert::Text& informativeText) {
    AlertDescription description;
    put(description, "messageText", messageText);
    put(description, "defaultButtonTitle", defaultButton);
    put(description, "alternateButtonTitle", alternateButton);
    put(description, "otherButtonTitle", otherButton);
    put(description, "informativeText", informativeText);
    return description;
}

}  // namespace

bool AlertDelegate::respondsTo(const std::string& callback) const {
    const auto found = callbacks.find(callback);
    return found != callbacks.end() && found->second;
}

KZAlert::KZAlert() {
    m_own.callbacks[ownCallback] = [this](platform::Alert* alert, std::int64_t code, void* context) {
        alertDidEnd(alert, code, context);
    };
}

std::shared_ptr<KZAlert> KZAlert::create() { return std::shared_ptr<KZAlert>(new KZAlert); }

KZAlert::~KZAlert() {
    if (m_alert == nullptr) {
        return;
    }
    auto* mainThread = platform::host().mainThread;
    if (mainThread != nullptr && !mainThread->isCurrent()) {
        mainThread->perform([alert = std::move(m_alert)]() mutable { alert.reset(); });
    }
}

std::int64_t KZAlert::alertSheetWithMessageText(const std::string& messageText, const std::string& informativeText,
                                                platform::Window* parentWindow) {
    return alertSheetWithMessageText(messageText, std::nullopt, std::nullopt, std::nullopt, informativeText,
                                     parentWindow, nullptr, std::nullopt, Block::yes);
}

std::int64_t KZAlert::alertSheetWithMessageText(const Text& messageText, const Text& defaultButton,
                                                const Text& alternateButton, const Text& otherButton,
                                                const Text& informativeText, platform::Window* parentWindow,
                                                Block block) {
    return alertSheetWithMessageText(messageText, defaultButton, alternateButton, otherButton, informativeText,
                                     parentWindow, nullptr, std::nullopt, block, nullptr);
}

std::int64_t KZAlert::alertSheetWithMessageText(const Text& messageText, const Text& defaultButton,
                                                const Text& alternateButton, const Text& otherButton,
                                                const Text& informativeText, platform::Window* parentWindow,
                                                const AlertDelegate*, const Text&, Block) {
    return alertSheetWithMessageText(messageText, defaultButton, alternateButton, otherButton, informativeText,
                                     parentWindow, nullptr, std::nullopt, Block::yes, nullptr);
}

std::int64_t KZAlert::alertSheetWithMessageText(const Text& messageText, const Text& defaultButton,
                                                const Text& alternateButton, const Text& otherButton,
                                                const Text& informativeText, platform::Window* parentWindow,
                                                const AlertDelegate* delegate, const Text& didEndSelector, Block block,
                                                const std::shared_ptr<KZAlert>& alertObject,
                                                const Text& suppressionBinding) {
    const auto object = alertObject ? alertObject : create();
    const std::string callback = didEndSelector.value_or(ownCallback);
    if (!object->prepare(parentWindow, delegate, callback)) {
        return noAnswer;
    }
    auto description = describe(messageText, defaultButton, alternateButton, otherButton, informativeText);
    put(description, "didEndSelector", callback);
    put(description, "suppressionBinding", suppressionBinding);
    return object->present(description, block);
}

std::int64_t KZAlert::timedAlertSheetWithMessageText(const Text& messageText, const Text& defaultButton,
                                                     const Text& alternateButton, const Text& otherButton,
                                                     const Text& informativeText, platform::Window* parentWindow,
                                                     std::int64_t interval) {
    const auto object = create();
    // Before the timer starts, so that a timer that fires at once is not forgotten.
    object->prepare(parentWindow, nullptr, ownCallback);
    std::thread([object, interval] { object->defaultReturnAfterTimeInterval(interval); }).detach();
    auto description = describe(messageText, defaultButton, alternateButton, otherButton, informativeText);
    put(description, "didEndSelector", ownCallback);
    return object->present(description, Block::yes);
}

bool KZAlert::prepare(platform::Window* parentWindow, const AlertDelegate* delegate,
                      const std::string& didEndSelector) {
    setParentWindow(parentWindow);
    setDelegate(delegate != nullptr ? delegate : &m_own);
    setAlertEnded(false);
    if (this->delegate()->respondsTo(didEndSelector)) {
        return true;
    }
    if (auto* console = platform::host().console) {
        console->log("Alert error: delegate does not respond to selector " + didEndSelector);
    }
    return false;
}

std::int64_t KZAlert::present(const AlertDescription& description, Block block) {
    const auto& host = platform::host();
    if (host.alerts == nullptr || host.mainThread == nullptr) {
        return noAnswer;
    }
    host.mainThread->performAndWait([&] { alertSheetWithDictionary(description); });
    if (block == Block::no) {
        return noAnswer;
    }
    waitForAnswer();
    host.mainThread->performAndWait([this] { closeAlert(); });
    return returnCode();
}

void KZAlert::waitForAnswer() const {
    auto& mainThread = *platform::host().mainThread;
    const bool servesEvents = mainThread.isCurrent();
    while (!alertEnded()) {
        if (servesEvents) {
            mainThread.runNextEvent(eventSlice);
        } else {
            std::this_thread::sleep_for(pollInterval);
        }
    }
}

void KZAlert::alertSheetWithDictionary(const AlertDescription& description) {
    auto* alerts = platform::host().alerts;
    if (alerts == nullptr) {
        return;
    }
    platform::AlertContents contents;
    contents.messageText = valueOf(description, "messageText").value_or("");
    contents.informativeText = valueOf(description, "informativeText").value_or("");
    contents.defaultButton = valueOf(description, "defaultButtonTitle");
    contents.alternateButton = valueOf(description, "alternateButtonTitle");
    contents.otherButton = valueOf(description, "otherButtonTitle");
    contents.suppressionKey = valueOf(description, "suppressionBinding");
    const std::string callback = valueOf(description, "didEndSelector").value_or(ownCallback);

    const std::shared_ptr<platform::Alert> shown = alerts->make(contents);
    setAlert(shown);
    if (parentWindow() != nullptr && parentWindow()->hasAttachedSheet()) {
        setParentWindow(nullptr);
    }
    if (parentWindow() != nullptr) {
        parentWindow()->makeKeyAndOrderFront();
    }
    // The sheet holds this object until it has ended; without a caller who waits nobody else may.
    shown->begin(parentWindow(), [self = shared_from_this(), callback](long code) {
        const auto* delegate = self->delegate();
        if (delegate != nullptr && delegate->respondsTo(callback)) {
            delegate->callbacks.find(callback)->second(self->alert().get(), code, nullptr);
        }
    });
}

void KZAlert::alertDidEnd(platform::Alert*, std::int64_t returnCode, void*) {
    setReturnCode(returnCode);
    setAlertEnded(true);
}

void KZAlert::defaultReturnAfterTimeInterval(std::int64_t interval) {
    std::this_thread::sleep_for(std::chrono::seconds(std::clamp(interval, std::int64_t{0}, longestInterval)));
    setReturnCode(defaultReturn);
    setAlertEnded(true);
}

void KZAlert::closeAlert() {
    if (const auto shown = alert(); shown && shown->isVisible()) {
        shown->orderOut();
    }
    setAlert(nullptr);
}

std::shared_ptr<platform::Alert> KZAlert::alert() const {
    const std::lock_guard lock(m_mutex);
    return m_alert;
}

void KZAlert::setAlert(std::shared_ptr<platform::Alert> alert) {
    {
        const std::lock_guard lock(m_mutex);
        m_alert.swap(alert);
    }
    // What was there goes here, outside the lock: letting an alert go may run its end.
}
