// An image read from a file, as the window shows it.
#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>
#include <string>

namespace platform::qt {

struct ImageFile {
    QImage image{};       // null when there is none to be read; kept at most 2560 pixels wide and high
    QSize size{};         // as the file has it, invalid when it does not say
    QByteArray format{};  // such as "png", by what the file holds; empty when it is no known one
    QString whyNot{};     // when there is no image
};

// Blocks while it reads. What is not a regular file, or a link to one, is not opened: a pipe would be waited for.
ImageFile readImageFile(const std::string& path);

}  // namespace platform::qt
