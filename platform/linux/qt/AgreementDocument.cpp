#include "platform/linux/qt/AgreementDocument.h"

#include <optional>

#include "platform/linux/qt/AgreementFile.h"
#include "platform/linux/qt/AgreementTextDocument.h"
#include "platform/linux/qt/HtmlDocument.h"
#include "platform/linux/qt/PlainTextDocument.h"

namespace platform::qt {

namespace {

constexpr std::size_t kMaximumBytes = std::size_t{64} * 1024 * 1024;

}  // namespace

std::unique_ptr<AgreementDocument> loadAgreement(const std::string& path) {
    const std::string file = richTextOfFolder(path).value_or(path);
    const std::optional<AgreementFile> contents = readAgreementFile(file, kMaximumBytes);
    if (!contents) {
        return nullptr;
    }
    auto document = std::make_unique<AgreementTextDocument>();
    QString text = decodePlainText(contents->bytes);
    const bool complete = contents->complete && text.size() <= kMaximumCharacters;
    text.truncate(kMaximumCharacters);
    if (agreementKind(file, contents->bytes) == AgreementKind::html) {
        fillFromHtml(*document, text, folderOf(file));
    } else {
        fillFromPlainText(*document, text);
    }
    if (!complete) {
        appendContinuationNote(*document, file);
    }
    return std::make_unique<AgreementDocument>(std::move(document));
}

}  // namespace platform::qt
