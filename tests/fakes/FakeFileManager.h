#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/ports/FileManager.h"

namespace fakes {

// A file system in memory. Paths are absolute and plain ("/a/b"); "/" and what addFolder makes is there. Only a final
// link is followed. Safe from several threads.
class FakeFileManager : public platform::FileManager {
public:
    struct Node {
        platform::FileType type = platform::FileType::regular;
        std::string contents;  // of a file; the target of a link
        unsigned permissions = 0644;
        bool immutable = false;
        platform::Date modificationDate;
        std::optional<platform::Date> creationDate;
        std::map<std::string, std::string> extendedAttributes = {};
        int label = 0;
        std::uint64_t inode = 0;
    };

    FakeFileManager();

    // For the arrangement of a test; folders above are made.
    void addFile(const std::string& path, const std::string& contents = {});
    void addFolder(const std::string& path);
    void addLink(const std::string& path, const std::string& target);

    // Operations by their name ("copyItem"); the given failure is what they answer from now on.
    std::map<std::string, platform::Error> failures;
    // The mutations that were asked for, as "copyItem /a /b", failed ones included.
    std::vector<std::string> calls;

    bool fileExists(const std::string& path) override;
    bool isFolder(const std::string& path) override;
    bool isWritable(const std::string& path) override;
    bool isExecutable(const std::string& path) override;
    std::optional<platform::FileIdentity> identity(const std::string& path) override;
    std::optional<platform::FileAttributes> attributes(const std::string& path) override;
    std::optional<std::string> destinationOfSymbolicLink(const std::string& path) override;
    std::optional<std::vector<platform::DirectoryEntry>> contentsOfDirectory(const std::string& path) override;

    platform::Failure removeItem(const std::string& path) override;
    platform::Failure createDirectory(const std::string& path, platform::Intermediates intermediates) override;
    platform::Failure copyItem(const std::string& source, const std::string& destination) override;
    platform::Failure moveItem(const std::string& source, const std::string& destination) override;
    platform::Failure setImmutable(const std::string& path, bool immutable) override;
    platform::Failure setPermissions(const std::string& path, unsigned permissions) override;
    platform::Failure setCreationDate(const std::string& path, platform::Date date) override;
    platform::Failure setModificationDate(const std::string& path, platform::Date date) override;
    std::variant<std::size_t, platform::Error> readExtendedAttribute(const std::string& path, const std::string& name,
                                                                     std::span<char> room) override;
    platform::Failure setExtendedAttribute(const std::string& path, const std::string& name,
                                           std::span<const char> value) override;
    std::optional<int> labelNumber(const std::string& path) override;
    platform::Failure setLabelNumber(const std::string& path, long number) override;
    platform::Failure writeAtomically(const std::string& path, std::string_view contents) override;
    std::optional<std::string> readFile(const std::string& path, std::uint64_t limit) override;
    std::unique_ptr<AppendHandle> openForAppending(const std::string& path) override;

private:
    class Handle;

    platform::Failure begin(const std::string& operation, const std::string& path, const std::string& other = {});
    platform::Failure beginTransfer(const std::string& operation, const std::string& source,
                                    const std::string& destination);
    Node* find(const std::string& path);  // the item itself
    std::string followed(const std::string& path);
    Node* findFollowed(const std::string& path);
    Node& add(const std::string& path, platform::FileType type);
    bool isLocked(const std::string& path);  // the item or the folder that holds it

    std::recursive_mutex m_lock;
    std::map<std::string, Node> m_nodes;
    std::uint64_t m_lastInode = 0;
};

}  // namespace fakes
