#pragma once

#include <algorithm>
#include <cerrno>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/ports/OpenFiles.h"

namespace fakes {

// Hands every operation on to other open files, unless `decide` wants it to fail or to move less than was asked for.
class FailingOpenFiles : public platform::OpenFiles {
public:
    enum class Operation { openForReading, openForWriting, openStream, read, write, seek, truncate, attributes, close };
    struct Call {
        Operation operation;
        std::string path;
        std::size_t number = 0;   // of this operation on this path, from 1
        std::uint64_t count = 0;  // the bytes asked for, the position of a seek
    };
    struct Outcome {
        int code = 0;                                       // an errno: fails with it, without doing anything
        std::size_t atMost = static_cast<std::size_t>(-1);  // bytes
    };
    // Called on the thread that calls; with an empty outcome the operation goes through.
    using Decision = std::function<Outcome(const Call&)>;

    explicit FailingOpenFiles(platform::OpenFiles& real, Decision decision = {})
        : decide(std::move(decision)), m_real(real) {}

    Decision decide;

    std::vector<Call> calls() const {
        const std::lock_guard lock(m_mutex);
        return m_calls;
    }
    std::size_t count(Operation operation, const std::string& path = {}) const {
        const std::lock_guard lock(m_mutex);
        return static_cast<std::size_t>(std::count_if(m_calls.begin(), m_calls.end(), [&](const Call& call) {
            return call.operation == operation && (path.empty() || call.path == path);
        }));
    }
    std::vector<int> closedDescriptors() const {
        const std::lock_guard lock(m_mutex);
        return m_closedDescriptors;
    }

    Opened openForReading(const std::string& path) override {
        return open(Operation::openForReading, path, [&] { return m_real.openForReading(path); });
    }
    Opened openForWriting(const std::string& path) override {
        return open(Operation::openForWriting, path, [&] { return m_real.openForWriting(path); });
    }
    std::FILE* openStream(const std::string& path) override {
        if (const Outcome outcome = begin(Operation::openStream, path, 0); outcome.code != 0) {
            errno = outcome.code;
            return nullptr;
        }
        return m_real.openStream(path);
    }
    void closeDescriptor(int number) override {
        {
            const std::lock_guard lock(m_mutex);
            m_closedDescriptors.push_back(number);
        }
        m_real.closeDescriptor(number);
    }

private:
    class File : public platform::OpenFile {
    public:
        File(FailingOpenFiles& owner, std::string path, std::unique_ptr<platform::OpenFile> real)
            : m_owner(owner), m_path(std::move(path)), m_real(std::move(real)) {}

        platform::Transfer read(std::span<std::byte> buffer) override {
            const Outcome outcome = m_owner.begin(Operation::read, m_path, buffer.size());
            return outcome.code != 0 ? platform::Transfer{.bytes = 0, .code = outcome.code}
                                     : m_real->read(buffer.first(std::min(buffer.size(), outcome.atMost)));
        }
        platform::Transfer write(std::span<const std::byte> bytes) override {
            const Outcome outcome = m_owner.begin(Operation::write, m_path, bytes.size());
            return outcome.code != 0 ? platform::Transfer{.bytes = 0, .code = outcome.code}
                                     : m_real->write(bytes.first(std::min(bytes.size(), outcome.atMost)));
        }
        int seek(std::uint64_t position) override {
            const Outcome outcome = m_owner.begin(Operation::seek, m_path, position);
            return outcome.code != 0 ? outcome.code : m_real->seek(position);
        }
        int truncate() override {
            const Outcome outcome = m_owner.begin(Operation::truncate, m_path, 0);
            return outcome.code != 0 ? outcome.code : m_real->truncate();
        }
        std::optional<std::uint64_t> size() override { return m_real->size(); }
        std::optional<platform::FileIdentity> identity() override { return m_real->identity(); }
        platform::Failure copyAttributesFrom(platform::OpenFile& source) override {
            if (const Outcome outcome = m_owner.begin(Operation::attributes, m_path, 0); outcome.code != 0) {
                return platform::Error{outcome.code, "attributes refused"};
            }
            return m_real->copyAttributesFrom(*dynamic_cast<File&>(source).m_real);
        }
        int close() override {
            const Outcome outcome = m_owner.begin(Operation::close, m_path, 0);
            const int code = m_real->close();
            return outcome.code != 0 ? outcome.code : code;
        }

    private:
        FailingOpenFiles& m_owner;
        const std::string m_path;
        std::unique_ptr<platform::OpenFile> m_real;
    };

    template <typename Open>
    Opened open(Operation operation, const std::string& path, const Open& really) {
        if (const Outcome outcome = begin(operation, path, 0); outcome.code != 0) {
            return {.file = nullptr, .created = false, .code = outcome.code};
        }
        Opened opened = really();
        if (opened.file) {
            opened.file = std::make_unique<File>(*this, path, std::move(opened.file));
        }
        return opened;
    }

    Outcome begin(Operation operation, const std::string& path, std::uint64_t count) {
        Call call{.operation = operation, .path = path, .count = count};
        {
            const std::lock_guard lock(m_mutex);
            call.number = ++m_numbers[{operation, path}];
            m_calls.push_back(call);
        }
        return decide ? decide(call) : Outcome{};
    }

    platform::OpenFiles& m_real;
    mutable std::mutex m_mutex;
    std::vector<Call> m_calls;
    std::map<std::pair<Operation, std::string>, std::size_t> m_numbers;
    std::vector<int> m_closedDescriptors;
};

}  // namespace fakes
