// What there is to say of an agreement or an image.
#pragma once

#include <QJsonObject>
#include <string>

namespace wickfield_media {

// "ok", and "reason" where that is false; else "kind" ("text", "html" or "rtf"), "characters" (blanks do not count),
// "pictures" and "complete".
QJsonObject readAgreement(const std::string& path);

// "ok", and "reason" where that is false; "format", "" when it is no known one; else "width" and "height" in pixels.
QJsonObject readImage(const std::string& path);

}  // namespace wickfield_media
