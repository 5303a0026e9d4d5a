// The modification times in a bundle: those of its sources, so that the same sources give the same bundle.
#pragma once

#include <ctime>
#include <mutex>
#include <optional>

namespace wickfield_bundle {

// Any thread.
class FileTimes {
public:
    // Times after `latest` become that one.
    explicit FileTimes(std::optional<std::time_t> latest) : m_latest(latest) {}

    // The time that the copy of an item gets, which counts among those of the sources from then on.
    timespec forCopy(timespec modified);

    // The newest so far, for what is made and not copied.
    timespec newest() const;

    // What SOURCE_DATE_EPOCH says; none when the environment has no such variable. Throws SenselessProject.
    static std::optional<std::time_t> latestByEnvironment();

private:
    const std::optional<std::time_t> m_latest;
    mutable std::mutex m_mutex;
    timespec m_newest{};
};

}  // namespace wickfield_bundle
