// What the window's tests share: a host with fakes around the real main thread and window.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <chrono>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/qt/Appearance.h"
#include "platform/linux/qt/MainWindow.h"
#include "platform/linux/qt/QtAlerts.h"
#include "platform/linux/qt/QtApplication.h"
#include "platform/linux/qt/QtMainThread.h"
#include "platform/ports/Host.h"
#include "tests/fakes/FakeUserDefaults.h"

namespace windowtests {

// Keeps the addresses that would be opened; nothing else is asked of it here.
class LinkRecorder : public platform::Workspace {
public:
    std::vector<std::string> opened;

    bool isFilePackage(const std::string&) override { return false; }
    platform::Failure recycle(const std::string&, const std::string&, const std::string&) override { return {}; }
    std::vector<std::string> mountedLocalVolumePaths() override { return {}; }
    void noteFileSystemChanged(const std::string&) override {}
    int sendFinderUpdate(const std::optional<std::string>&) override { return 0; }
    bool openURL(const std::string& url) override {
        opened.push_back(url);
        return true;
    }
    std::optional<std::string> applicationWithIdentifier(const std::string&) override { return std::nullopt; }
    bool openURLs(const std::vector<std::string>&, const std::string&) override { return false; }
    platform::Failure registerApplication(const std::string&) override { return {}; }
};

class RecordingDelegate : public platform::ApplicationDelegate {
public:
    std::vector<std::string> calls;

    void awakeFromNib() override { calls.emplace_back("awake"); }
    void applicationDidFinishLaunching() override { calls.emplace_back("launched"); }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
    void install() override { calls.emplace_back("install"); }
    void sendToGantry() override { calls.emplace_back("gantry"); }
    void eulaAgree() override { calls.emplace_back("agree"); }
    void eulaDisagree() override { calls.emplace_back("disagree"); }
};

class WindowTest : public testing::Test {
protected:
    WindowTest() : m_host(makeHost()) {
        window.connectActions(delegate);
        window.present();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    template <typename Widget = QWidget>
    Widget& find(const char* name) {
        auto* found = window.findChild<Widget*>(QString::fromLatin1(name));
        if (found == nullptr) {
            throw std::runtime_error(std::string("no widget ") + name);
        }
        return *found;
    }

    // A key press as the window system delivers it: to whatever has the focus.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(QApplication::activeWindow()->windowHandle(), key, modifiers);
        QTest::qWait(0);
    }

    const platform::Outlets& outlets() { return window.outlets(); }

    LinkRecorder workspace;
    fakes::FakeUserDefaults defaults;
    platform::qt::QtMainThread mainThread;
    platform::qt::QtAlerts alerts;
    int processEnds = 0;
    platform::qt::QtApplication application{[this] { ++processEnds; }};
    RecordingDelegate delegate;

private:
    platform::Host makeHost() {
        platform::Host host;
        host.workspace = &workspace;
        host.defaults = &defaults;
        host.mainThread = &mainThread;
        host.application = &application;
        host.alerts = &alerts;
        return host;
    }

    platform::ScopedHost m_host;

protected:
    platform::qt::MainWindow window;
};

}  // namespace windowtests
