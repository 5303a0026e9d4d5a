#include "lib/KZFileManager/Metadata.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <span>
#include <utility>
#include <variant>

#include "lib/KZTaskEx.h"
#include "lib/KZTaskEx/Decoding.h"
#include "lib/base/Format.h"
#include "lib/base/ToolArgument.h"
#include "platform/ports/Host.h"

namespace {

constexpr std::size_t longestValue = 255;
constexpr const char* progressAttribute = "com.apple.progress.fractionCompleted";

// 1984-01-24 08:00:00 +0000: the creation date of a file that is being produced.
constexpr platform::Date progressMarker =
    std::chrono::sys_days{std::chrono::year{1984} / std::chrono::January / 24} + std::chrono::hours{8};

constexpr std::array<KZFileManager::FinderColor, 7> labelColors{{{0.0, 0.0, 0.72},
                                                                 {0.2056, 0.5, 0.85},
                                                                 {0.7917, 0.26, 0.86},
                                                                 {0.5789, 0.56, 0.98},
                                                                 {0.1388, 0.54, 0.95},
                                                                 {0.0083, 0.54, 1.0},
                                                                 {0.0888, 0.52, 0.98}}};

platform::FileManager& files() { return *platform::host().files; }

void logToConsole(const std::string& line) { platform::host().console->log(line); }

}  // namespace

namespace KZFileManager {

void disableFileSystemCachingForFile(const std::string& /*path*/) {}

std::optional<std::string> metadataValueForKey(const std::string& key, const std::string& file) {
    const auto measured = files().readExtendedAttribute(file, key, {});
    const auto* size = std::get_if<std::size_t>(&measured);
    logToConsole(kz::format("buffer val: %i", size != nullptr ? static_cast<long>(*size) : -1L));
    if (size == nullptr) {
        logToConsole(kz::format("Error retrieving file attribute: %i", std::get<platform::Error>(measured).code));
        return {};
    }
    if (*size == 0) {
        return {};
    }
    std::string buffer(longestValue, '\0');
    const auto read = files().readExtendedAttribute(file, key, buffer);
    const auto* count = std::get_if<std::size_t>(&read);
    if (count == nullptr) {
        return {};
    }
    buffer.resize(std::min(*size, *count));  // another program may have changed it meanwhile
    return kz::decode(std::move(buffer), StringEncoding::utf8);
}

bool setMetadataValue(const std::string& value, const std::string& key, const std::string& file) {
    const std::span<const char> bytes(value.data(), std::strlen(value.c_str()));
    if (files().setExtendedAttribute(file, key, bytes)) {
        logToConsole(kz::format("Error setting extended attribute for file %@ - %i", file, -1));
        return false;
    }
    return true;
}

void setFinderProgress(float fraction, const std::string& file) {
    const bool shown = fraction >= 0;  // not a number is not
    const std::string path = kz::toolArgument(file);
    if (shown) {
        const std::string text = kz::format("%0.3f", static_cast<double>(fraction));
        KZTaskEx::runTask("/usr/bin/xattr", {"-w", progressAttribute, text, path});
    } else {
        KZTaskEx::runTask("/usr/bin/xattr", {"-d", progressAttribute, path});
    }
    if (const auto attributes = files().attributes(file)) {
        files().setCreationDate(file, shown ? progressMarker : attributes->modificationDate);
    }
}

void removeFinderProgressForFile(const std::string& file) { setFinderProgress(-1.0F, file); }

bool setModificationDate(platform::Date date, const std::string& file) {
    return !files().setModificationDate(file, date);
}

long finderColorIndexForPath(const std::string& path) { return files().labelNumber(path).value_or(0); }

void setFinderColorIndex(long index, const std::optional<std::string>& path) {
    if (path) {
        files().setLabelNumber(*path, index);
    }
}

std::optional<FinderColor> finderColorForColorIndex(long index) {
    if (index < 1 || index > static_cast<long>(labelColors.size())) {
        return {};
    }
    return labelColors.at(static_cast<std::size_t>(index - 1));
}

std::optional<FinderColor> finderColorForPath(const std::string& path) {
    return finderColorForColorIndex(finderColorIndexForPath(path));
}

}  // namespace KZFileManager
