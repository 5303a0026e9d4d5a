// A bundle with settings to check, and a helper that says of their files what a test wants it to.
#pragma once

#include <unistd.h>

#include <map>
#include <utility>

#include "platform/linux/services/LinuxMainBundle.h"
#include "tests/bundle/CheckFixture.h"
#include "tools/wickfield-bundle/check/SettingsRules.h"

namespace wickfield_bundle {

inline constexpr const char* settingsPlace = "Contents/Resources/InstallerSettings.plist";

class CheckingSettings : public CheckFixture {
protected:
    CheckingSettings() {
        answer(R"({"ok":true,"characters":900,"pictures":0,"complete":true,"width":960,"height":540})");
    }

    // What the helper is to say of whatever it is asked for.
    void answer(const std::string& line) { helper("printf '%s\\n' '" + line + "'"); }
    void helper(const std::string& command) {
        std::ofstream(m_helper, std::ios::trunc) << "#!/bin/sh\n" << command << "\n";
        ASSERT_EQ(::chmod(m_helper.c_str(), 0755), 0);
    }
    void noHelper() { std::filesystem::remove(m_helper); }

    // Further entries, or others in place of the usual ones.
    void settings(const std::vector<std::pair<std::string, std::string>>& entries = {}) {
        std::map<std::string, std::string> all{{"KZPluginName", "<string>Echo</string>"},
                                               {"KZPluginVersion", "<string>1.0</string>"},
                                               {"KZPluginAuthor", "<string>Example</string>"}};
        for (const auto& [key, value] : entries) {
            all[key] = value;
        }
        std::string text = "<plist version=\"1.0\"><dict>";
        for (const auto& [key, value] : all) {
            if (!value.empty()) {
                text.append("<key>").append(key).append("</key>").append(value);
            }
        }
        write(settingsPlace, text + "</dict></plist>\n");
    }
    void agreement(const std::string& name, const std::string& text) {
        settings({{"KZEULAPath", "<string>" + name + "</string>"}});
        write("Contents/Resources/" + name, text);
    }
    void background(const std::string& head, const std::string& name = "Back.png") {
        settings({{"KZBgImagePath", "<string>" + name + "</string>"}});
        write("Contents/Resources/" + name, head + std::string(100, '\0'));
    }

    Findings findings() {
        platform::Host host = platform::linux_host::services();
        platform::linux_host::LinuxMainBundle resources(*host.propertyLists, bundle() + "/Contents/MacOS/-");
        host.bundle = &resources;
        const platform::ScopedHost scope(host);
        SettingsCheck check(m_helper);
        Findings findings;
        check.finish(lookAt(bundle()), findings);
        return findings;
    }
    std::vector<std::string> rules() {
        std::vector<std::string> rules;
        for (const Finding& finding : findings()) {
            rules.push_back(finding.rule);
        }
        return rules;
    }
    std::string theReason() {
        const Findings all = findings();
        EXPECT_EQ(all.size(), 1U);
        return all.empty() ? "" : all.front().reason;
    }

private:
    const std::string m_helper = around() / "helper";
};

}  // namespace wickfield_bundle
