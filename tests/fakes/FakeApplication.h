#pragma once

#include <set>
#include <utility>
#include <vector>

#include "platform/ports/Application.h"
#include "tests/fakes/FakeControls.h"

namespace fakes {

class FakeApplication : public platform::Application {
public:
    int terminations = 0;
    std::vector<std::function<void()>> observers;
    platform::Window* sheet = nullptr;
    platform::Window* sheetParent = nullptr;
    std::function<void()> sheetDidEnd;
    std::vector<std::pair<std::string, std::string>> panels;
    std::set<std::string> unreadable;  // files that are neither image nor document

    void terminate() override { ++terminations; }
    void onWillTerminate(std::function<void()> observer) override { observers.push_back(std::move(observer)); }
    void beginSheet(platform::Window& window, platform::Window& parent, std::function<void()> didEnd) override {
        sheet = &window;
        sheetParent = &parent;
        sheetDidEnd = std::move(didEnd);
    }
    void endSheet(platform::Window& window) override {
        if (sheet == &window) {
            sheet = nullptr;
            if (const auto ended = std::exchange(sheetDidEnd, nullptr)) {
                ended();
            }
        }
    }
    void runAlertPanel(const std::string& title, const std::string& message) override {
        panels.emplace_back(title, message);
    }
    std::unique_ptr<platform::Image> loadImage(const std::string& path) override {
        return unreadable.contains(path) ? nullptr : std::make_unique<FakeImage>(path);
    }
    std::unique_ptr<platform::Document> loadDocument(const std::string& path) override {
        return unreadable.contains(path) ? nullptr : std::make_unique<FakeDocument>(path);
    }
};

}  // namespace fakes
