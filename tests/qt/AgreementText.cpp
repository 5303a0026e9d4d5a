#include "tests/qt/AgreementText.h"

#include <QBuffer>
#include <QImage>

namespace agreement_tests {

QByteArray smallPng() {
    QImage image(4, 2, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

}  // namespace agreement_tests
