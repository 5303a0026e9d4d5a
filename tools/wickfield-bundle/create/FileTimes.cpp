#include "tools/wickfield-bundle/create/FileTimes.h"

#include <charconv>
#include <cstdlib>
#include <string_view>
#include <tuple>

#include "tools/wickfield-bundle/create/CreateFailure.h"

namespace wickfield_bundle {

timespec FileTimes::forCopy(timespec modified) {
    if (m_latest && modified.tv_sec >= *m_latest) {
        modified = {.tv_sec = *m_latest, .tv_nsec = 0};
    }
    const std::lock_guard lock(m_mutex);
    if (std::tie(modified.tv_sec, modified.tv_nsec) > std::tie(m_newest.tv_sec, m_newest.tv_nsec)) {
        m_newest = modified;
    }
    return modified;
}

timespec FileTimes::newest() const {
    const std::lock_guard lock(m_mutex);
    return m_newest;
}

std::optional<std::time_t> FileTimes::latestByEnvironment() {
    const char* const text = std::getenv("SOURCE_DATE_EPOCH");
    if (text == nullptr) {
        return std::nullopt;
    }
    const std::string_view digits = text;
    std::time_t seconds = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), seconds);
    if (error != std::errc{} || end != digits.data() + digits.size() || seconds < 0) {
        throw SenselessProject("SOURCE_DATE_EPOCH is “" + std::string(digits) +
                               "” and has to be a number of seconds since 1970, or absent");
    }
    return seconds;
}

}  // namespace wickfield_bundle
