#pragma once

#include <cerrno>
#include <cstring>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "platform/ports/FileManager.h"

namespace fakes {

// Hands every operation on to another file manager, unless `fails` wants it to fail: a query then finds nothing, a
// change is refused and does not happen. Remembers the operations in order.
class FailingFileManager : public platform::FileManager {
public:
    enum class Operation {
        fileExists,
        isFolder,
        isWritable,
        isExecutable,
        identity,
        attributes,
        destinationOfSymbolicLink,
        contentsOfDirectory,
        removeItem,
        createDirectory,
        copyItem,
        moveItem,
        setImmutable,
        setPermissions,
        setCreationDate,
        setModificationDate,
        readExtendedAttribute,
        setExtendedAttribute,
        labelNumber,
        setLabelNumber,
        writeAtomically,
        readFile,
        openForAppending,
    };
    struct Call {
        Operation operation;
        std::string path;       // the first of two
        std::string otherPath;  // the destination of a copy or a move, the name of an attribute
        friend bool operator==(const Call&, const Call&) = default;
    };
    // The error number to fail with; none lets the operation through. May throw.
    using Decision = std::function<std::optional<int>(const Call&)>;

    explicit FailingFileManager(platform::FileManager& real, Decision decision = {})
        : fails(std::move(decision)), m_real(real) {}

    Decision fails;

    std::vector<Call> calls() const {
        const std::lock_guard lock(m_mutex);
        return m_calls;
    }
    void forgetCalls() {
        const std::lock_guard lock(m_mutex);
        m_calls.clear();
    }

    // Fails every call of the operation, whatever the path.
    void alwaysFail(Operation operation, int error) {
        fails = [=](const Call& call) { return call.operation == operation ? std::optional(error) : std::nullopt; };
    }

    bool fileExists(const std::string& path) override {
        return !refusal(Operation::fileExists, path) && m_real.fileExists(path);
    }
    bool isFolder(const std::string& path) override {
        return !refusal(Operation::isFolder, path) && m_real.isFolder(path);
    }
    bool isWritable(const std::string& path) override {
        return !refusal(Operation::isWritable, path) && m_real.isWritable(path);
    }
    bool isExecutable(const std::string& path) override {
        return !refusal(Operation::isExecutable, path) && m_real.isExecutable(path);
    }
    std::optional<platform::FileIdentity> identity(const std::string& path) override {
        return refusal(Operation::identity, path) ? std::nullopt : m_real.identity(path);
    }
    std::optional<platform::FileAttributes> attributes(const std::string& path) override {
        return refusal(Operation::attributes, path) ? std::nullopt : m_real.attributes(path);
    }
    std::optional<std::string> destinationOfSymbolicLink(const std::string& path) override {
        return refusal(Operation::destinationOfSymbolicLink, path) ? std::nullopt
                                                                   : m_real.destinationOfSymbolicLink(path);
    }
    std::optional<std::vector<platform::DirectoryEntry>> contentsOfDirectory(const std::string& path) override {
        return refusal(Operation::contentsOfDirectory, path) ? std::nullopt : m_real.contentsOfDirectory(path);
    }
    platform::Failure removeItem(const std::string& path) override {
        const auto refused = refusal(Operation::removeItem, path);
        return refused ? refused : m_real.removeItem(path);
    }
    platform::Failure createDirectory(const std::string& path, platform::Intermediates intermediates) override {
        const auto refused = refusal(Operation::createDirectory, path);
        return refused ? refused : m_real.createDirectory(path, intermediates);
    }
    platform::Failure copyItem(const std::string& source, const std::string& destination) override {
        const auto refused = refusal(Operation::copyItem, source, destination);
        return refused ? refused : m_real.copyItem(source, destination);
    }
    platform::Failure moveItem(const std::string& source, const std::string& destination) override {
        const auto refused = refusal(Operation::moveItem, source, destination);
        return refused ? refused : m_real.moveItem(source, destination);
    }
    platform::Failure setImmutable(const std::string& path, bool immutable) override {
        const auto refused = refusal(Operation::setImmutable, path);
        return refused ? refused : m_real.setImmutable(path, immutable);
    }
    platform::Failure setPermissions(const std::string& path, unsigned permissions) override {
        const auto refused = refusal(Operation::setPermissions, path);
        return refused ? refused : m_real.setPermissions(path, permissions);
    }
    platform::Failure setCreationDate(const std::string& path, platform::Date date) override {
        const auto refused = refusal(Operation::setCreationDate, path);
        return refused ? refused : m_real.setCreationDate(path, date);
    }
    platform::Failure setModificationDate(const std::string& path, platform::Date date) override {
        const auto refused = refusal(Operation::setModificationDate, path);
        return refused ? refused : m_real.setModificationDate(path, date);
    }
    std::variant<std::size_t, platform::Error> readExtendedAttribute(const std::string& path, const std::string& name,
                                                                     std::span<char> room) override {
        if (const auto refused = refusal(Operation::readExtendedAttribute, path, name)) {
            return *refused;
        }
        return m_real.readExtendedAttribute(path, name, room);
    }
    platform::Failure setExtendedAttribute(const std::string& path, const std::string& name,
                                           std::span<const char> value) override {
        const auto refused = refusal(Operation::setExtendedAttribute, path, name);
        return refused ? refused : m_real.setExtendedAttribute(path, name, value);
    }
    std::optional<int> labelNumber(const std::string& path) override {
        return refusal(Operation::labelNumber, path) ? std::nullopt : m_real.labelNumber(path);
    }
    platform::Failure setLabelNumber(const std::string& path, long number) override {
        const auto refused = refusal(Operation::setLabelNumber, path);
        return refused ? refused : m_real.setLabelNumber(path, number);
    }
    platform::Failure writeAtomically(const std::string& path, std::string_view contents) override {
        const auto refused = refusal(Operation::writeAtomically, path);
        return refused ? refused : m_real.writeAtomically(path, contents);
    }
    std::optional<std::string> readFile(const std::string& path, std::uint64_t limit) override {
        return refusal(Operation::readFile, path) ? std::nullopt : m_real.readFile(path, limit);
    }
    std::unique_ptr<AppendHandle> openForAppending(const std::string& path) override {
        return refusal(Operation::openForAppending, path) ? nullptr : m_real.openForAppending(path);
    }

private:
    platform::Failure refusal(Operation operation, const std::string& path, const std::string& otherPath = {}) {
        const Call call{.operation = operation, .path = path, .otherPath = otherPath};
        {
            const std::lock_guard lock(m_mutex);
            m_calls.push_back(call);
        }
        const auto error = fails ? fails(call) : std::nullopt;
        return error ? platform::Failure(platform::Error{*error, path + ": " + std::strerror(*error)}) : std::nullopt;
    }

    platform::FileManager& m_real;
    mutable std::mutex m_mutex;
    std::vector<Call> m_calls;
};

}  // namespace fakes
