#pragma once

#include "platform/ports/MainBundle.h"

namespace platform::macos {

// The host keeps what it has read of a bundle: a change while the program runs may go unnoticed.
class MacMainBundle : public MainBundle {
public:
    MacMainBundle() = default;                 // the one that the process was started from
    explicit MacMainBundle(std::string path);  // the one that lies there

    std::string bundlePath() override;
    std::string resourcePath() override;
    std::string executablePath() override;
    std::optional<std::string> pathForResource(const std::string& name, const std::string& type) override;
    std::optional<PropertyValue> infoValue(const std::string& key) override;

private:
    const std::string m_path;  // empty: the main bundle
};

}  // namespace platform::macos
