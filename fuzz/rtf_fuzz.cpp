// Any bytes as a rich-text agreement: read, laid into a document and recoloured. A text document needs no window.
#include <QGuiApplication>
#include <QPalette>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/linux/qt/agreement/AgreementDocument.h"
#include "platform/linux/qt/agreement/AgreementTextDocument.h"
#include "platform/linux/qt/agreement/RtfWriter.h"

namespace {

void startApplication() {
    static int count = 1;
    static char name[] = "rtf_fuzz";
    static char* arguments[] = {name, nullptr};
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static const QGuiApplication application(count, arguments);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    startApplication();
    platform::qt::AgreementTextDocument document;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    platform::qt::fillFromRichText(document, text, "/nonexistent");
    platform::qt::applyStandardTextColor(document, QPalette());
    return 0;
}
