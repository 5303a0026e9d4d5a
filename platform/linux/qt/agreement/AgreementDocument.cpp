#include "platform/linux/qt/agreement/AgreementDocument.h"

#include <optional>
#include <string_view>

#include "platform/linux/qt/agreement/AgreementFile.h"
#include "platform/linux/qt/agreement/AgreementTextDocument.h"
#include "platform/linux/qt/agreement/HtmlDocument.h"
#include "platform/linux/qt/agreement/PlainTextDocument.h"
#include "platform/linux/qt/agreement/RtfWriter.h"

namespace platform::qt {

namespace {

constexpr std::size_t kMaximumBytes = std::size_t{64} * 1024 * 1024;

// Whether the document shows all of the bytes.
bool fill(QTextDocument& document, AgreementKind kind, const AgreementFile& file, const std::string& folder) {
    if (kind == AgreementKind::richText) {
        return fillFromRichText(document, std::string_view(file.bytes), folder);
    }
    if (kind == AgreementKind::html) {
        return fillFromHtml(document, decodeHtml(file.bytes), folder);
    }
    return fillFromPlainText(document, decodePlainText(file.bytes));
}

}  // namespace

std::unique_ptr<AgreementDocument> loadAgreement(const std::string& path) {
    const std::string file = richTextOfFolder(path).value_or(path);
    const std::optional<AgreementFile> contents = readAgreementFile(file, kMaximumBytes);
    if (!contents) {
        return nullptr;
    }
    auto document = std::make_unique<AgreementTextDocument>();
    const AgreementKind kind = agreementKind(file, contents->bytes);
    const bool complete = fill(*document, kind, *contents, folderOf(file)) && contents->complete;
    if (!complete) {
        appendContinuationNote(*document, file);
    }
    auto agreement = std::make_unique<AgreementDocument>(std::move(document));
    agreement->kind = kind;
    agreement->complete = complete;
    return agreement;
}

}  // namespace platform::qt
