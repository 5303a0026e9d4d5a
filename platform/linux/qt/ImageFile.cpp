#include "platform/linux/qt/ImageFile.h"

#include <QFileInfo>
#include <QImageReader>

#include "platform/linux/qt/QtText.h"

namespace platform::qt {

namespace {

constexpr int largestSide = 2560;  // pixels that are kept, in either direction

}  // namespace

ImageFile readImageFile(const std::string& path) {
    const QString file = toQt(path);
    if (!QFileInfo(file).isFile()) {
        return {.whyNot = QString::fromLatin1("not a file")};
    }
    QImageReader reader(file);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    ImageFile result{.size = reader.size(), .format = reader.format()};
    const QSize size = result.size;
    if (size.isValid() && (size.width() > largestSide || size.height() > largestSide)) {
        reader.setScaledSize(size.scaled(largestSide, largestSide, Qt::KeepAspectRatio));
    }
    result.image = reader.read();
    if (result.image.isNull()) {
        result.whyNot = reader.errorString();
    } else if (!result.size.isValid()) {
        result.size = result.image.size();
    }
    return result;
}

}  // namespace platform::qt
