#pragma once

#include <map>

#include "platform/ports/Identity.h"

namespace fakes {

class FakeIdentity : public platform::Identity {
public:
    unsigned uid = 1000;
    std::string name = "ada";
    std::string home = "/home/ada";
    std::optional<std::string> console;
    std::map<std::string, std::string> homes;

    unsigned realUserID() override { return uid; }
    std::string userName() override { return name; }
    std::string homeFolder() override { return home; }
    std::optional<std::string> homeFolderForUser(const std::string& user) override {
        const auto found = homes.find(user);
        return found == homes.end() ? std::nullopt : std::optional(found->second);
    }
    std::optional<std::string> consoleUser() override { return console; }
};

}  // namespace fakes
