#include "platform/linux/qt/agreement/AgreementPictures.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageReader>
#include <QTextDocument>
#include <QUrl>
#include <algorithm>

#include "platform/linux/qt/QtText.h"
#include "platform/linux/qt/agreement/AgreementFile.h"
#include "platform/linux/qt/agreement/AgreementLiterals.h"

namespace platform::qt {

namespace {

constexpr qint64 kMostPixels = 16'000'000;
constexpr int kMostPictures = 500;
constexpr std::size_t kMostBytes = std::size_t{32} * 1024 * 1024;
constexpr qreal kPageWidth = 560;

QSizeF shownSize(QSizeF wished, QSizeF own) {
    QSizeF size = wished;
    if (size.width() <= 0 && size.height() <= 0) {
        size = own;
    } else if (size.width() <= 0) {
        size.setWidth(size.height() * own.width() / own.height());
    } else if (size.height() <= 0) {
        size.setHeight(size.width() * own.height() / own.width());
    }
    if (size.width() > kPageWidth) {
        size *= kPageWidth / size.width();
    }
    return {std::max(size.width(), 1.0), std::clamp(size.height(), 1.0, 4 * kPageWidth)};
}

// What is shown smaller need not be kept larger than a screen of twice the density can use.
QImage decode(QImageReader& reader, QSizeF shown) {
    const QSize own = reader.size();
    const QSize wanted = (shown * 2).toSize();
    if (own.width() > wanted.width() && own.height() > wanted.height()) {
        reader.setScaledSize(wanted);
    }
    return reader.read();
}

}  // namespace

std::optional<QTextImageFormat> AgreementPictures::add(const QByteArray& bytes, QSizeF size) {
    if (m_count >= kMostPictures) {
        return std::nullopt;
    }
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    const QSize own = reader.size();
    if (own.isEmpty() || qint64{own.width()} * own.height() > kMostPixels) {
        return std::nullopt;
    }
    const QSizeF shown = shownSize(size, own);
    const QImage image = decode(reader, shown);
    if (image.isNull()) {
        return std::nullopt;
    }
    const QString name = u"agreement-picture:%1"_s.arg(++m_count);
    m_document.addResource(QTextDocument::ImageResource, QUrl(name), image);
    QTextImageFormat format;
    format.setName(name);
    format.setWidth(shown.width());
    format.setHeight(shown.height());
    return format;
}

std::optional<QTextImageFormat> AgreementPictures::addFile(const QString& name, QSizeF size) {
    const QString folder = QFileInfo(toQt(m_folder)).canonicalFilePath();
    const QString file = QFileInfo(folder + u'/' + name).canonicalFilePath();
    if (folder.isEmpty() || !file.startsWith(folder.endsWith(u'/') ? folder : folder + u'/')) {
        return std::nullopt;
    }
    const std::optional<AgreementFile> contents = readAgreementFile(fromQt(file), kMostBytes);
    return contents ? add(contents->bytes, size) : std::nullopt;
}

}  // namespace platform::qt
