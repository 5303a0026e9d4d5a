// The password sheet over the installer's window, asked and answered.
#pragma once

#include <QLabel>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/qt/PasswordField.h"
#include "platform/linux/qt/PasswordSheet.h"
#include "platform/linux/qt/QtPasswordPrompt.h"
#include "tests/qt/WindowFixture.h"

namespace windowtests {

class ThePasswordSheet : public WindowTest {
protected:
    ThePasswordSheet() {
        window.setWindowTitle(QString::fromLatin1("Larkspur Reverb Installer"));
        prompt.attachTo(window);
    }

    static platform::rights::PasswordRequest one() {
        platform::rights::PasswordRequest request;
        request.administrators = {{.user = "ann", .realName = "Ann Other"}};
        return request;
    }
    static platform::rights::PasswordRequest several(bool mayNameAnother = false) {
        platform::rights::PasswordRequest request = one();
        request.administrators.push_back({.user = "bob", .realName = "Bob"});
        request.administrators.push_back({.user = "root", .realName = ""});
        request.mayNameAnother = mayNameAnother;
        return request;
    }
    static platform::rights::PasswordRequest again(platform::rights::PasswordRequest request,
                                                   platform::rights::PasswordRequest::Problem problem,
                                                   std::string details = {}) {
        request.problem = problem;
        request.details = std::move(details);
        return request;
    }

    // Answers are kept as "user password", a cancel as "cancelled".
    void ask(platform::rights::PasswordRequest request) {
        prompt.ask(std::move(request), [this](std::optional<platform::rights::PasswordAnswer> given) {
            answers.push_back(given ? given->user + " " + std::string(given->password.view()) : "cancelled");
        });
        QTest::qWait(10);
    }
    void close() {
        prompt.close();
        QTest::qWait(10);
    }

    platform::qt::PasswordSheet* sheet() {
        for (auto* top : QApplication::topLevelWidgets()) {
            if (auto* found = top->findChild<platform::qt::PasswordSheet*>(); found != nullptr && found->isVisible()) {
                return found;
            }
        }
        return nullptr;
    }
    template <typename Widget = QWidget>
    Widget& part(const char* name) {
        auto* found = sheet() != nullptr ? sheet()->findChild<Widget*>(QString::fromLatin1(name)) : nullptr;
        if (found == nullptr) {
            throw std::runtime_error(std::string("no widget ") + name);
        }
        return *found;
    }
    platform::qt::PasswordField& field() { return part<platform::qt::PasswordField>("password"); }
    std::string shows(const char* name) {
        const auto& label = part<QLabel>(name);
        return label.isVisible() ? label.text().toStdString() : "";
    }
    void type(const char* text) {
        for (const char* key = text; *key != '\0'; ++key) {
            QTest::keyClick(QApplication::activeWindow()->windowHandle(), *key);
        }
    }
    static std::string focused() {
        return QApplication::focusWidget() != nullptr ? QApplication::focusWidget()->objectName().toStdString() : "";
    }
    bool isInside(QWidget& widget) {
        return window.rect().contains(QRect(widget.mapTo(&window, QPoint(0, 0)), widget.size()));
    }

    platform::qt::QtPasswordPrompt prompt{application};
    std::vector<std::string> answers;
};

}  // namespace windowtests
