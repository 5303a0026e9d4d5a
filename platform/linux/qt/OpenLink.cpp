#include "platform/linux/qt/OpenLink.h"

#include <QUrl>

#include "platform/linux/qt/QtText.h"
#include "platform/ports/Host.h"

namespace platform::qt {

void openLink(const QString& address) {
    const QString scheme = QUrl(address).scheme();
    const bool safe = scheme == QString::fromLatin1("https") || scheme == QString::fromLatin1("http") ||
                      scheme == QString::fromLatin1("mailto");
    if (auto* workspace = host().workspace; safe && workspace != nullptr) {
        workspace->openURL(fromQt(address));
    }
}

}  // namespace platform::qt
