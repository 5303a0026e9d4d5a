#pragma once

#include <map>

#include "platform/ports/MainBundle.h"

namespace fakes {

// Resources are the entries of `resources`, by "name.type" (or the bare name without a type).
class FakeMainBundle : public platform::MainBundle {
public:
    std::string bundle = "/Fake.app";
    std::string resourcesFolder = "/Fake.app/Contents/Resources";
    std::string executable = "/Fake.app/Contents/Linux/Fake";
    std::map<std::string, std::string> resources;
    std::map<std::string, platform::PropertyValue> info;

    std::string bundlePath() override { return bundle; }
    std::string resourcePath() override { return resourcesFolder; }
    std::string executablePath() override { return executable; }
    std::optional<std::string> pathForResource(const std::string& name, const std::string& type) override {
        const auto found = resources.find(type.empty() ? name : name + "." + type);
        return found == resources.end() ? std::nullopt : std::optional(found->second);
    }
    std::optional<platform::PropertyValue> infoValue(const std::string& key) override {
        const auto found = info.find(key);
        return found == info.end() ? std::nullopt : std::optional(found->second);
    }
};

}  // namespace fakes
