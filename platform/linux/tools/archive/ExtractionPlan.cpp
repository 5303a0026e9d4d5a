#include "platform/linux/tools/archive/ExtractionPlan.h"

#include <sys/stat.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/linux/tools/archive/ToolFailure.h"
#include "platform/linux/tools/archive/ZipContents.h"

namespace platform::linux_host {

namespace {

[[noreturn]] void refuse(const std::string& name, const std::string& reason) {
    throw ToolFailure("refused, as the entry “" + name + "” " + reason);
}

std::string plainPath(const std::string& name, std::size_t nesting) {
    if (name.starts_with('/')) {
        refuse(name, "has an absolute path");
    }
    if (const auto nul = name.find('\0'); nul != std::string::npos) {
        refuse(name.substr(0, nul), "has a path with a NUL in it");
    }
    std::string path;
    std::size_t depth = 0;
    for (std::string_view rest = name; !rest.empty();) {
        const std::string_view component = rest.substr(0, rest.find('/'));
        rest.remove_prefix(std::min(component.size() + 1, rest.size()));
        if (component.empty() || component == ".") {
            continue;
        }
        if (component == "..") {
            refuse(name, "leads out of the folder");
        }
        if (++depth > nesting) {
            refuse(name.substr(0, 64) + "…", "is nested too deep");
        }
        path += path.empty() ? "" : "/";
        path += component;
    }
    return path;
}

ItemKind kindOf(const ZipEntry& entry) {
    const bool endsLikeFolder = entry.name.empty() || entry.name.ends_with('/');
    const mode_t type = entry.mode.value_or(0) & static_cast<mode_t>(S_IFMT);
    if (type == S_IFDIR || (endsLikeFolder && type == 0)) {
        return ItemKind::folder;
    }
    if (endsLikeFolder) {
        refuse(entry.name, "has the name of a folder and is none");
    }
    if (type == S_IFLNK) {
        return ItemKind::link;
    }
    if (type != 0 && type != S_IFREG) {
        refuse(entry.name, "is neither a file nor a folder nor a link");
    }
    return ItemKind::file;
}

void checkPacking(const ZipEntry& entry) {
    if (entry.encrypted) {
        refuse(entry.name, "is encrypted");
    }
    if (!isKnownZipMethod(entry)) {
        refuse(entry.name, "is packed by a method that is not supported (" + std::to_string(entry.method) + ")");
    }
}

// As text, but "/" comes before every other byte, so that what lies in a folder follows it directly.
bool comesBefore(const PlannedItem& left, const PlannedItem& right) {
    const auto rank = [](char c) { return c == '/' ? 0U : static_cast<unsigned>(static_cast<unsigned char>(c)); };
    return std::lexicographical_compare(left.path.begin(), left.path.end(), right.path.begin(), right.path.end(),
                                        [&](char a, char b) { return rank(a) < rank(b); });
}

bool liesIn(const std::string& path, const std::string& folder) {
    return path.size() > folder.size() && path[folder.size()] == '/' && path.starts_with(folder);
}

// How many components of the path are not those that the path before begins with, too.
std::uint64_t newComponents(const std::string& before, const std::string& path) {
    if (path.empty() || path == before) {
        return 0;
    }
    const auto rest = liesIn(path, before)
                          ? path.begin() + static_cast<std::ptrdiff_t>(before.size() + 1)
                          : std::mismatch(path.begin(), path.end(), before.begin(), before.end()).first;
    return 1 + static_cast<std::uint64_t>(std::count(rest, path.end(), '/'));
}

// A few long paths stand for many folders.
void checkNumber(const std::vector<PlannedItem>& sorted, const ExtractionLimits& limits) {
    std::uint64_t number = 0;
    const std::string nothing;
    const std::string* before = &nothing;
    for (const auto& item : sorted) {
        number += newComponents(*before, item.path);
        before = &item.path;
    }
    if (number > limits.items) {
        throw ToolFailure("refused, as it holds more than " + std::to_string(limits.items) + " items");
    }
}

void checkCollisions(const std::vector<PlannedItem>& items) {
    for (std::size_t i = 1; i < items.size(); ++i) {
        const PlannedItem& before = items[i - 1];
        const PlannedItem& item = items[i];
        const bool areFolders = before.kind == ItemKind::folder && item.kind == ItemKind::folder;
        if (item.path == before.path && !areFolders) {
            refuse(item.path, "is there twice");
        }
        if (before.kind != ItemKind::folder && liesIn(item.path, before.path)) {
            refuse(item.path, "lies below one that is no folder");
        }
    }
}

void checkRatio(std::uint64_t total, std::uint64_t archiveBytes, const ExtractionLimits& limits) {
    if (total > limits.unsuspectedBytes && total / limits.ratio >= archiveBytes) {
        throw ToolFailure("refused, as it holds more than " + std::to_string(limits.ratio) + " times its own size");
    }
}

}  // namespace

std::vector<PlannedItem> planExtraction(const std::vector<ZipEntry>& entries, std::uint64_t archiveBytes,
                                        const ExtractionLimits& limits) {
    std::vector<PlannedItem> items;
    items.reserve(entries.size());
    std::uint64_t total = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const ZipEntry& entry = entries[i];
        PlannedItem item{.path = plainPath(entry.name, limits.nesting), .kind = kindOf(entry), .entry = i};
        if (item.path == "__MACOSX" || item.path.starts_with("__MACOSX/")) {
            continue;
        }
        if (item.path.empty() && item.kind != ItemKind::folder) {
            refuse(entry.name, "has no name");
        }
        if (item.kind != ItemKind::folder) {
            checkPacking(entry);
        }
        if (entry.size > UINT64_MAX - total) {
            refuse(entry.name, "is larger than any file");
        }
        total += entry.size;
        checkRatio(total, archiveBytes, limits);
        items.push_back(std::move(item));
    }
    std::vector<PlannedItem> sorted = items;
    std::sort(sorted.begin(), sorted.end(), comesBefore);
    checkCollisions(sorted);
    checkNumber(sorted, limits);
    return items;
}

}  // namespace platform::linux_host
