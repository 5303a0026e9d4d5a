#include "tools/wickfield-bundle/check/BackgroundRules.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "lib/base/Text.h"
#include "tools/wickfield-bundle/check/RegularFile.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

// Of the window as it opens, and of the picture's place in it.
constexpr std::size_t shownWidth = 660;
constexpr std::size_t shownHeight = 240;
constexpr std::size_t largestSide = 4096;
constexpr std::uint64_t largestFile = std::uint64_t{16} << 20U;  // bytes
constexpr std::size_t mostOfHead = 1024;

enum class Hosts { all, macOnly, linuxOnly, notAll };

struct ImageKind {
    const char* name;
    std::string_view mark;
    std::size_t offset;
    Hosts hosts;
};

// By what a file holds, which is what both hosts go by. Linux reads what Qt itself reads: more of it by plug-ins that
// a customer may or may not have.
constexpr std::array<ImageKind, 22> kinds{{
    {"PNG", "\x89PNG", 0, Hosts::all},
    {"JPEG", "\xFF\xD8\xFF", 0, Hosts::all},
    {"GIF", "GIF8", 0, Hosts::all},
    {"BMP", "BM", 0, Hosts::all},
    {"TIFF", std::string_view("II*\0", 4), 0, Hosts::macOnly},
    {"TIFF", std::string_view("MM\0*", 4), 0, Hosts::macOnly},
    {"WebP", "WEBP", 8, Hosts::macOnly},
    {"HEIF", "ftyphei", 4, Hosts::macOnly},
    {"HEIF", "ftypmif1", 4, Hosts::macOnly},
    {"AVIF", "ftypavif", 4, Hosts::macOnly},
    {"JPEG 2000", std::string_view("\0\0\0\x0CjP", 6), 0, Hosts::macOnly},
    {"an icon file of macOS", "icns", 0, Hosts::macOnly},
    {"an icon file of Windows", std::string_view("\0\0\1\0", 4), 0, Hosts::all},
    {"PDF", "%PDF", 0, Hosts::macOnly},
    {"EPS", "%!PS", 0, Hosts::macOnly},
    {"a Photoshop file", "8BPS", 0, Hosts::macOnly},
    {"XPM", "/* XPM */", 0, Hosts::linuxOnly},
    {"a portable bitmap", "P1\n", 0, Hosts::linuxOnly},
    {"a portable graymap", "P2\n", 0, Hosts::linuxOnly},
    {"a portable pixmap", "P3\n", 0, Hosts::linuxOnly},
    {"a portable graymap", "P5\n", 0, Hosts::linuxOnly},
    {"a portable pixmap", "P6\n", 0, Hosts::linuxOnly},
}};
constexpr ImageKind svg{"SVG", "", 0, Hosts::notAll};

const ImageKind* kindOf(std::string_view head) {
    const auto found = std::ranges::find_if(kinds, [&](const ImageKind& kind) {
        return head.size() >= kind.offset && head.substr(kind.offset).starts_with(kind.mark);
    });
    if (found != kinds.end()) {
        return &*found;
    }
    const std::string lower = kz::lowercased(head);
    const bool isMarkup = lower.starts_with("<?xml") || lower.starts_with("<!doctype svg") || lower.starts_with("<svg");
    return isMarkup && lower.find("<svg") != std::string::npos ? &svg : nullptr;
}

std::string reasonFor(const ImageKind& kind) {
    const std::string is = "It is " + std::string(kind.name) + ", which ";
    switch (kind.hosts) {
        case Hosts::macOnly:
            return is + "macOS reads, but Linux only with plug-ins that a customer may not have.";
        case Hosts::linuxOnly:
            return is + "Linux reads, but macOS does not.";
        default:
            return is + "older systems do not read, nor Linux without a plug-in.";
    }
}

void checkSize(const std::string& place, const MediaReport& image, std::uint64_t bytes, Findings& findings) {
    const std::string size = std::to_string(image.width) + " by " + std::to_string(image.height) + " pixels";
    if (image.width > largestSide || image.height > largestSide || bytes > largestFile) {
        add(findings, "background-large", place, "It has " + size + " in " + std::to_string(bytes) + " bytes.");
    } else if (image.width < shownWidth || image.height < shownHeight) {
        add(findings, "background-small", place, "It has " + size + ".");
    }
}

}  // namespace

void checkBackground(const std::string& path, const std::string& place, const MediaReport& report, Findings& findings) {
    std::string whyNot;
    const auto file = RegularFile::open(path, whyNot);
    if (!file) {
        add(findings, "background-unreadable", place, "It cannot be opened: " + whyNot + ".");
        return;
    }
    const ImageKind* const kind = kindOf(file->head(mostOfHead));
    const bool isForAll = kind == nullptr || kind->hosts == Hosts::all;
    if (!isForAll) {
        add(findings, "background-one-host", place, reasonFor(*kind));
    }
    switch (report.outcome) {
        case MediaReport::Outcome::notChecked:
            add(findings, "not-checked", place, "It was not read as the window does it: " + report.reason + ".");
            break;
        case MediaReport::Outcome::refused:
            if (isForAll) {
                add(findings, "background-unreadable", place, "It cannot be read: " + report.reason + ".");
            }
            break;
        case MediaReport::Outcome::read:
            checkSize(place, report, file->size(), findings);
            break;
    }
}

}  // namespace wickfield_bundle
