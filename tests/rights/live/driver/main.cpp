// A program without a window that asks for administrator rights as the installer does, for tests to drive.
//
// usage: rights_driver [polkit=PATH] [sudo=PATH] [su=PATH] [nogui] [noprompt]
// The ways to rights are tried in the order given; without any, all that the machine has. Commands come line by line on
// standard input, their fields between tabs; each is answered by one line that
// begins with "> ", so that it is told apart from what the library prints.
#include <dirent.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "lib/KZAuthorization.h"
#include "lib/KZFileManager.h"
#include "platform/linux/rights/LinuxAuthorization.h"
#include "platform/linux/rights/PolkitStarter.h"
#include "platform/linux/rights/SudoStarter.h"
#include "platform/linux/services/LinuxHost.h"
#include "platform/posix/ProcessStart.h"
#include "tests/rights/live/driver/ScriptedPrompt.h"

namespace {

using Fields = std::vector<std::string>;

ScriptedPrompt& prompt() {
    static auto& only = *new ScriptedPrompt;
    return only;
}

KZAuthorization& session() { return *KZAuthorization::sharedController(); }

std::string yesNo(bool value) { return value ? "yes" : "no"; }

std::string count(const char* folder) {
    int entries = 0;
    if (DIR* const open = ::opendir(folder)) {
        while (::readdir(open) != nullptr) {
            ++entries;
        }
        ::closedir(open);
    }
    return std::to_string(entries - 2);
}

Fields after(const Fields& fields, std::size_t first) {
    return {fields.begin() + static_cast<std::ptrdiff_t>(std::min(first, fields.size())), fields.end()};
}

std::string execute(const Fields& fields, Async async) {
    return std::to_string(session().authExecTask(fields.at(1), after(fields, 2), async));
}

// many N tool arguments...: how many of N commands, one after another, were started.
std::string many(const Fields& fields) {
    const int wanted = std::stoi(fields.at(1));
    int done = 0;
    for (int i = 0; i < wanted; ++i) {
        const Async async = i % 2 == 0 ? Async::no : Async::yes;
        done += session().authExecTask(fields.at(2), after(fields, 3), async) == 0 ? 1 : 0;
    }
    return std::to_string(done);
}

// parallel N tool arguments...: the same, each in a thread of its own.
std::string parallel(const Fields& fields) {
    std::atomic<int> done = 0;
    std::vector<std::thread> threads;
    for (int i = std::stoi(fields.at(1)); i > 0; --i) {
        threads.emplace_back(
            [&] { done += session().authExecTask(fields.at(2), after(fields, 3), Async::no) == 0 ? 1 : 0; });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    return std::to_string(done);
}

std::string answer(const Fields& fields) {
    ScriptedPrompt::Step step{.password = fields.at(2), .user = fields.at(1), .cancelAfter = {}};
    if (fields.size() > 3) {
        step.cancelAfter = std::chrono::milliseconds{std::stoi(fields.at(3))};
    }
    prompt().add(std::move(step));
    return "ok";
}

std::string questions() {
    std::string all;
    for (const auto& question : prompt().questions()) {
        all += all.empty() ? "" : "|";
        all += question;
    }
    return all;
}

std::string timedStart() {
    const auto begun = std::chrono::steady_clock::now();
    const bool started = session().authStart();
    const auto taken = std::chrono::steady_clock::now() - begun;
    return yesNo(started) + '\t' + std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(taken).count());
}

using Command = std::function<std::string(const Fields&)>;

const std::map<std::string, Command>& commands() {
    static const std::map<std::string, Command> all{
        {"answer", answer},  // user (empty: the one that is chosen), password, milliseconds to a cancel
        {"cancel", [](const Fields&) { return prompt().add({}), std::string("ok"); }},
        {"questions", [](const Fields&) { return questions(); }},
        {"open", [](const Fields&) { return yesNo(prompt().isOpen()); }},
        {"start", [](const Fields&) { return timedStart(); }},
        {"startwith", [](const Fields& f) { return yesNo(session().authStartWithUser(f.at(1), f.at(2))); }},
        {"end", [](const Fields&) { return session().authEnd(), std::string("ok"); }},
        {"authorized", [](const Fields&) { return yesNo(session().isAuthorized()); }},
        {"run", [](const Fields& f) { return execute(f, Async::yes); }},
        {"wait", [](const Fields& f) { return execute(f, Async::no); }},
        {"many", many},
        {"parallel", parallel},
        {"remove", [](const Fields& f) { return yesNo(session().authRemoveFile(f.at(1))); }},
        {"trash", [](const Fields& f) { return yesNo(session().authTrashFile(f.at(1))); }},
        {"move", [](const Fields& f) { return yesNo(session().authMoveFile(f.at(1), f.at(2))); }},
        {"copy", [](const Fields& f) { return yesNo(session().authCopyFile(f.at(1), f.at(2))); }},
        {"mkdir", [](const Fields& f) { return yesNo(session().authCreateDir(f.at(1))); }},
        // With the plain attempt first, and ten seconds to wait for the effect.
        {"file-trash",
         [](const Fields& f) { return yesNo(KZFileManager::trashFile(f.at(1), std::chrono::seconds{10})); }},
        {"file-copy",
         [](const Fields& f) { return yesNo(KZFileManager::copyFile(f.at(1), f.at(2), std::chrono::seconds{10})); }},
        {"file-mkdir",
         [](const Fields& f) { return yesNo(KZFileManager::createDirectory(f.at(1), std::chrono::seconds{10})); }},
        {"file-touch", [](const Fields& f) { return yesNo(KZFileManager::touchFile(f.at(1))); }},
        {"descriptors", [](const Fields&) { return count("/proc/self/fd"); }},
        {"threads", [](const Fields&) { return count("/proc/self/task"); }},
    };
    return all;
}

std::string obey(const Fields& fields) {
    const auto found = commands().find(fields.front());
    if (found == commands().end()) {
        return "no such command";
    }
    try {
        return found->second(fields);
    } catch (const std::exception& error) {
        return std::string("not understood: ") + error.what();
    }
}

std::vector<std::unique_ptr<platform::rights::SessionStarter>> waysIn(const Fields& arguments) {
    std::vector<std::unique_ptr<platform::rights::SessionStarter>> ways;
    std::string sudo;
    std::string su = "/usr/bin/su";
    for (const auto& argument : arguments) {
        const std::string value = argument.substr(argument.find('=') + 1);
        if (argument.starts_with("polkit=")) {
            ways.push_back(std::make_unique<platform::rights::PolkitStarter>(value));
        } else if (argument.starts_with("sudo=")) {
            sudo = value;
        } else if (argument.starts_with("su=")) {
            su = value;
        }
    }
    if (!sudo.empty()) {
        ways.push_back(std::make_unique<platform::rights::SudoStarter>(sudo, su));
    }
    return ways;
}

}  // namespace

int main(int argc, char** argv) {
    platform::posix::prepareProcess();
    const Fields arguments(argv + 1, argv + argc);
    const auto has = [&](std::string_view word) { return std::ranges::find(arguments, word) != arguments.end(); };
    platform::Host host = platform::linux_host::services();
    auto* const asked = has("noprompt") ? nullptr : &prompt();
    auto ways = waysIn(arguments);
    // Not destroyed: the session lasts to the end of the process.
    host.authorization = ways.empty()
                             ? new platform::rights::LinuxAuthorization(*host.mainThread, asked)
                             : new platform::rights::LinuxAuthorization(*host.mainThread, asked, std::move(ways));
    platform::setHost(host);
    KZAuthorization::sharedController(has("nogui") ? WithGUI::no : WithGUI::yes);
    for (std::string line; std::getline(std::cin, line);) {
        Fields fields;
        std::istringstream text(line);
        for (std::string field; std::getline(text, field, '\t');) {
            fields.push_back(field);
        }
        const std::string answered = fields.empty() ? "no command" : obey(fields);
        std::cout << "> " << answered << std::endl;
    }
    std::cout.flush();
    std::_Exit(0);
}
