// What an agreement is made of on disk: one file, or a folder with a file and its attachments.
#pragma once

#include <QByteArray>
#include <optional>
#include <string>
#include <string_view>

namespace platform::qt {

enum class AgreementKind { plainText, html, richText };

struct AgreementFile {
    QByteArray bytes;
    bool complete = true;  // false when the file is longer than what was read
};

// Reads a regular file up to a limit (bytes). None for anything else: a folder, a pipe, a device, a file that is
// missing or refused. A read error half-way gives what was read so far, as incomplete.
std::optional<AgreementFile> readAgreementFile(const std::string& path, std::size_t limit);

// The file of a folder that carries rich text with attachments; none when the folder holds no such file.
std::optional<std::string> richTextOfFolder(const std::string& path);

// By the extension of the path; when that says neither, by how the contents open.
AgreementKind agreementKind(std::string_view path, QByteArrayView contents);

// The folder that a path lies in, "." for a bare name.
std::string folderOf(const std::string& path);

}  // namespace platform::qt
