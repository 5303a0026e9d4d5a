// The application with Qt's event loop.
#pragma once

#include <QObject>
#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

#include "platform/ports/Application.h"

namespace platform::qt {

class QtApplication : public QObject, public Application {
    Q_OBJECT

public:
    // `endProcess` is called once, on the main thread, after the will-terminate observers. It is not expected to
    // return: other threads may be at work, and nothing that they use is taken away from under them.
    explicit QtApplication(std::function<void()> endProcess);

    void terminate() override;
    void onWillTerminate(std::function<void()> observer) override;
    void beginSheet(Window& sheet, Window& parent, std::function<void()> didEnd) override;
    void endSheet(Window& sheet) override;
    void runAlertPanel(const std::string& title, const std::string& message) override;
    std::unique_ptr<Image> loadImage(const std::string& path) override;
    std::unique_ptr<Document> loadDocument(const std::string& path) override;

    bool isTerminating() const { return m_terminating; }
    // Ends now what terminate() ends from the event loop; nothing when it has been done.
    void finish();

private:
    std::function<void()> m_endProcess;
    std::atomic<bool> m_terminating = false;
    bool m_finished = false;
    std::mutex m_mutex;
    std::vector<std::function<void()>> m_observers;  // guarded by m_mutex
    std::map<Window*, std::function<void()>> m_sheetEnds;
};

}  // namespace platform::qt
