#include "platform/linux/services/Languages.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace platform::linux_host {

namespace {

std::string_view environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view{} : value;
}

std::string_view locale() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const auto value = environment(name); !value.empty()) {
            return value;
        }
    }
    return {};
}

// Without encoding and variant.
std::string_view bare(std::string_view name) { return name.substr(0, name.find_first_of(".@")); }

bool isPlain(std::string_view name) { return name.empty() || name == "C" || name == "POSIX"; }

class Localizations {
public:
    void add(std::string_view name) {
        if (std::ranges::find(m_names, name) == m_names.end()) {
            m_names.emplace_back(name);
        }
    }

    void addLocale(std::string_view locale) {
        const auto name = bare(locale);
        if (isPlain(name) || name.find('/') != std::string_view::npos) {
            return;
        }
        add(name);
        if (const auto underscore = name.find('_'); underscore != std::string_view::npos) {
            std::string hyphenated(name);
            hyphenated[underscore] = '-';
            add(hyphenated);
            add(name.substr(0, underscore));
        }
    }

    std::vector<std::string> take() { return std::move(m_names); }

private:
    std::vector<std::string> m_names;
};

}  // namespace

std::vector<std::string> preferredLocalizations() {
    Localizations names;
    const auto chosen = locale();
    if (!isPlain(bare(chosen))) {
        for (auto list = environment("LANGUAGE"); !list.empty();) {
            const auto colon = list.find(':');
            names.addLocale(list.substr(0, colon));
            list.remove_prefix(colon == std::string_view::npos ? list.size() : colon + 1);
        }
    }
    names.addLocale(chosen);
    for (const char* last : {"en", "English", "Base"}) {
        names.add(last);
    }
    return names.take();
}

}  // namespace platform::linux_host
