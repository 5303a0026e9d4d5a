#pragma once

#include <map>

#include "platform/ports/UserDefaults.h"

namespace fakes {

class FakeUserDefaults : public platform::UserDefaults {
public:
    std::map<std::string, platform::PropertyValue> values;

    std::optional<platform::PropertyValue> value(const std::string& key) override {
        const auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    }
    platform::Failure setValue(const std::string& key, const platform::PropertyValue& value) override {
        values[key] = value;
        return {};
    }
};

}  // namespace fakes
