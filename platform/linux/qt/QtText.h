#pragma once

#include <QString>
#include <string>

namespace platform::qt {

inline QString toQt(const std::string& text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
inline std::string fromQt(const QString& text) { return text.toStdString(); }

}  // namespace platform::qt
