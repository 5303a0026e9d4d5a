// Files, folders and links of a Mac.
#pragma once

#include "platform/ports/FileManager.h"

namespace platform::macos {

// Keeps no state; each call that needs Foundation's file manager makes one of its own. Paths are UTF-8: any other name
// is not found.
class MacFileManager : public FileManager {
public:
    bool fileExists(const std::string& path) override;
    bool isFolder(const std::string& path) override;
    bool isWritable(const std::string& path) override;
    bool isExecutable(const std::string& path) override;
    std::optional<FileIdentity> identity(const std::string& path) override;

    std::optional<FileAttributes> attributes(const std::string& path) override;
    std::optional<std::string> destinationOfSymbolicLink(const std::string& path) override;
    // Names only.
    std::optional<std::vector<DirectoryEntry>> contentsOfDirectory(const std::string& path) override;
    bool visitDirectory(const std::string& path, VisitSizes sizes,
                        const std::function<void(const VisitedEntry&)>& visit) override;

    Failure removeItem(const std::string& path) override;
    Failure createDirectory(const std::string& path, Intermediates intermediates) override;
    Failure copyItem(const std::string& source, const std::string& destination) override;
    Failure moveItem(const std::string& source, const std::string& destination) override;
    Failure writeAtomically(const std::string& path, std::string_view contents) override;
    std::optional<std::string> readFile(const std::string& path, std::uint64_t limit) override;
    std::unique_ptr<AppendHandle> openForAppending(const std::string& path) override;

    // In MacFileMetadata.mm.
    Failure setImmutable(const std::string& path, bool immutable) override;
    Failure setPermissions(const std::string& path, unsigned permissions) override;
    Failure setCreationDate(const std::string& path, Date date) override;
    Failure setModificationDate(const std::string& path, Date date) override;
    std::variant<std::size_t, Error> readExtendedAttribute(const std::string& path, const std::string& name,
                                                           std::span<char> room) override;
    Failure setExtendedAttribute(const std::string& path, const std::string& name,
                                 std::span<const char> value) override;
    std::optional<int> labelNumber(const std::string& path) override;
    Failure setLabelNumber(const std::string& path, long number) override;
};

}  // namespace platform::macos
