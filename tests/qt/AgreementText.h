// Agreements written and read back by a test.
#pragma once

#include <QString>
#include <QTextDocument>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/qt/agreement/AgreementDocument.h"
#include "platform/linux/qt/agreement/AgreementTextDocument.h"
#include "platform/linux/qt/agreement/RtfWriter.h"
#include "tests/fakes/TemporaryFolder.h"

namespace agreement_tests {

inline void writeFile(const std::string& path, std::string_view bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::unique_ptr<QTextDocument> richText(std::string_view body, const std::string& folder = "/nonexistent") {
    auto document = std::make_unique<platform::qt::AgreementTextDocument>();
    platform::qt::fillFromRichText(*document, body, folder);
    return document;
}

inline std::string plain(const QTextDocument& document) { return document.toPlainText().toStdString(); }

// The text of a document whose body is given, between the braces of an otherwise empty rich text.
inline std::string textOf(const std::string& body) {
    return plain(*richText("{\\rtf1\\ansi\\ansicpg1252 " + body + "}"));
}

// What a file of that name and contents is shown as; "(none)" when it is not shown.
inline std::string shownText(const std::string& name, std::string_view contents) {
    const fakes::TemporaryFolder folder;
    writeFile(folder / name, contents);
    const auto agreement = platform::qt::loadAgreement(folder / name);
    return agreement ? plain(*agreement->document) : "(none)";
}

// The format of the first place where the words stand; of nothing when they do not.
inline QTextCharFormat formatOf(const QTextDocument& document, const char* words) {
    return document.find(QString::fromUtf8(words)).charFormat();
}

// A red picture of 4 by 2 pixels, as a PNG file has it.
QByteArray smallPng();

}  // namespace agreement_tests
