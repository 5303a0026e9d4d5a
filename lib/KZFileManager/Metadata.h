// What the file browser shows about an item beyond its contents: extended attributes, the progress bar on a file that
// is being produced, dates and the colour label.
//
// Links: attributes and the modification date are those of what a link leads to, a label is the link's own; a host that
// has no labels on links refuses to set one, and such a link has label 0.
#pragma once

#include <optional>
#include <string>

#include "platform/ports/Date.h"

namespace KZFileManager {

// Calibrated hue, saturation and brightness, each from 0 to 1.
struct FinderColor {
    double hue = 0;
    double saturation = 0;
    double brightness = 0;
    double alpha = 1;
    friend bool operator==(const FinderColor&, const FinderColor&) = default;
};

void disableFileSystemCachingForFile(const std::string& path);  // does nothing

// None when the attribute is missing, empty, longer than 255 bytes or no UTF-8 text. Every call writes "buffer val: "
// with the size in bytes to the system console, -1 for what cannot be read, then followed by a line with the system's
// error number.
std::optional<std::string> metadataValueForKey(const std::string& key, const std::string& file);

// Makes or replaces the attribute. What stands behind a NUL in the value is not stored. False, with a line on the
// system console, when the host refuses; the number in that line is always -1.
bool setMetadataValue(const std::string& value, const std::string& key, const std::string& file);

// Shows a progress bar on the file: an attribute with the fraction ("0.500"), and the creation date 1984-01-24, which
// says that the file is being produced. A fraction that is negative or no number takes the bar away and makes the
// modification date the creation date. Waits for the host's attribute tool, without a limit; what fails is not told.
void setFinderProgress(float fraction, const std::string& file);
void removeFinderProgressForFile(const std::string& file);

bool setModificationDate(platform::Date date,
                         const std::string& file);  // false when the host refuses; nothing is logged

// The label: 0 for none, 1 to 7 for a colour. 0 too when there is no item. Setting one tells nothing of a failure;
// a number beyond 7 and a path that is none leave everything as it is.
long finderColorIndexForPath(const std::string& path);
void setFinderColorIndex(long index, const std::optional<std::string>& path);

// None for anything but 1 to 7.
std::optional<FinderColor> finderColorForColorIndex(long index);
std::optional<FinderColor> finderColorForPath(const std::string& path);

}  // namespace KZFileManager
