// Alert sheets that any thread may show and wait for.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/ports/Alerts.h"

enum class Block { no, yes };  // yes: wait for the answer

// Receives the end of an alert, on the main thread: the alert, its answer and a context, which is always null.
using AlertDidEnd = std::function<void(platform::Alert* alert, std::int64_t returnCode, void* contextInfo)>;

// What may be told that an alert has ended: its end callbacks by their names. It responds to a name that stands here
// with a function. Must outlive the alert that it is given to.
struct AlertDelegate {
    std::map<std::string, AlertDidEnd, std::less<>> callbacks;

    bool respondsTo(const std::string& callback) const;
};

// Describes an alert by the keys "messageText", "informativeText", "defaultButtonTitle", "alternateButtonTitle",
// "otherButtonTitle", "didEndSelector" and "suppressionBinding". A key is there only when its value is.
using AlertDescription = std::map<std::string, std::string, std::less<>>;

// One object serves one alert. It lives as long as somebody holds it; a sheet that is up and a running timer hold it.
//
// The forms of alertSheetWithMessageText may be called from any thread; the alert is shown on the main thread, on
// `parentWindow`, or free-standing when there is none or when it carries a sheet already. They return 1 for the default
// button, 0 for the alternate and -1 for the other one; -1 too when they do not wait and when nothing could be shown.
// With Block::yes they return once the user has answered: the main thread goes on serving its events meanwhile, any
// other thread looks every 0.2 seconds. Titles that are absent leave the host's defaults, a single "OK". Texts are
// shown as they are, "%@" included; an empty text or title counts as absent.
class KZAlert : public std::enable_shared_from_this<KZAlert> {
public:
    using Text = std::optional<std::string>;

    static std::shared_ptr<KZAlert> create();
    ~KZAlert();  // takes an alert that is still there off the screen, on the main thread
    KZAlert(const KZAlert&) = delete;
    KZAlert& operator=(const KZAlert&) = delete;

    // Waits.
    static std::int64_t alertSheetWithMessageText(const std::string& messageText, const std::string& informativeText,
                                                  platform::Window* parentWindow);

    static std::int64_t alertSheetWithMessageText(const Text& messageText, const Text& defaultButton,
                                                  const Text& alternateButton, const Text& otherButton,
                                                  const Text& informativeText, platform::Window* parentWindow,
                                                  Block block);

    // Always waits, and tells no delegate: `delegate`, `didEndSelector` and `block` are ignored. A caller that wants
    // them takes the form with an alert object, which may be null.
    static std::int64_t alertSheetWithMessageText(const Text& messageText, const Text& defaultButton,
                                                  const Text& alternateButton, const Text& otherButton,
                                                  const Text& informativeText, platform::Window* parentWindow,
                                                  const AlertDelegate* delegate, const Text& didEndSelector,
                                                  Block block);

    // Shows `alertObject`, or a new object when it is null. The delegate is told by its callback of that name; without
    // a name by "alertDidEnd:returnCode:contextInfo:", without a delegate the object itself is. Shows nothing and
    // returns -1 when the delegate does not respond, with a line on the system console. Only the object's own callback
    // ends the waiting: with a delegate and Block::yes the call never returns, unless somebody sets alertEnded.
    // The alert's "don't show again" box, there when `suppressionBinding` is, is bound to that user default.
    static std::int64_t alertSheetWithMessageText(const Text& messageText, const Text& defaultButton,
                                                  const Text& alternateButton, const Text& otherButton,
                                                  const Text& informativeText, platform::Window* parentWindow,
                                                  const AlertDelegate* delegate, const Text& didEndSelector,
                                                  Block block, const std::shared_ptr<KZAlert>& alertObject,
                                                  const Text& suppressionBinding = std::nullopt);

    // Waits, for about `interval` seconds at the most; then takes the alert away and returns 1. An interval that is not
    // positive answers at once.
    static std::int64_t timedAlertSheetWithMessageText(const Text& messageText, const Text& defaultButton,
                                                       const Text& alternateButton, const Text& otherButton,
                                                       const Text& informativeText, platform::Window* parentWindow,
                                                       std::int64_t interval);

    // Main thread. Shows the alert and returns; without effect when the host has no alerts.
    void alertSheetWithDictionary(const AlertDescription& description);

    // The end callback of an object that is its own delegate.
    void alertDidEnd(platform::Alert* alert, std::int64_t returnCode, void* contextInfo);

    // Blocks for the interval in seconds, then answers with the default button, whatever the answer was before.
    void defaultReturnAfterTimeInterval(std::int64_t interval);

    // Main thread. Takes the alert off the screen, without an answer, and lets it go.
    void closeAlert();

    // Any thread. Windows and delegates are not owned; without a delegate the object is its own.
    platform::Window* parentWindow() const { return m_parentWindow; }
    void setParentWindow(platform::Window* window) { m_parentWindow = window; }
    const AlertDelegate* delegate() const { return m_delegate; }
    void setDelegate(const AlertDelegate* delegate) { m_delegate = delegate; }
    bool alertEnded() const { return m_alertEnded; }
    void setAlertEnded(bool ended) { m_alertEnded = ended; }
    std::int64_t returnCode() const { return m_returnCode; }
    void setReturnCode(std::int64_t code) { m_returnCode = code; }
    std::shared_ptr<platform::Alert> alert() const;
    void setAlert(std::shared_ptr<platform::Alert> alert);

private:
    KZAlert();

    // The steps of the full form: false when the delegate does not respond; then show and, perhaps, wait.
    bool prepare(platform::Window* parentWindow, const AlertDelegate* delegate, const std::string& didEndSelector);
    std::int64_t present(const AlertDescription& description, Block block);
    void waitForAnswer() const;

    std::atomic<platform::Window*> m_parentWindow = nullptr;
    std::atomic<const AlertDelegate*> m_delegate = nullptr;
    std::atomic<bool> m_alertEnded = false;
    std::atomic<std::int64_t> m_returnCode = -1;
    mutable std::mutex m_mutex;
    std::shared_ptr<platform::Alert> m_alert;  // guarded by m_mutex
    AlertDelegate m_own;                       // the object as a delegate
};
