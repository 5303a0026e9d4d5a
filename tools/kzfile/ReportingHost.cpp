#include "tools/kzfile/ReportingHost.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "lib/KZLog.h"
#include "platform/linux/services/LinuxHost.h"
#include "tools/commandline/Interruption.h"
#include "tools/kzfile/Paths.h"

namespace kzfile {

namespace {

class ReportingFile : public platform::OpenFile {
public:
    ReportingFile(std::unique_ptr<platform::OpenFile> file, std::string path)
        : m_file(std::move(file)), m_path(std::move(path)) {}

    platform::Transfer read(std::span<std::byte> buffer) override {
        return commandline::isInterrupted() ? platform::Transfer{.bytes = 0, .code = ECANCELED}
                                            : noted(m_file->read(buffer));
    }
    platform::Transfer write(std::span<const std::byte> bytes) override { return noted(m_file->write(bytes)); }
    int seek(std::uint64_t position) override { return noted(m_file->seek(position)); }
    int truncate() override { return noted(m_file->truncate()); }
    std::optional<std::uint64_t> size() override { return m_file->size(); }
    std::optional<platform::FileIdentity> identity() override { return m_file->identity(); }
    platform::Failure copyAttributesFrom(platform::OpenFile& source) override {
        return m_file->copyAttributesFrom(*static_cast<ReportingFile&>(source).m_file);
    }
    int close() override { return noted(m_file->close()); }

private:
    int noted(int code) {
        if (code != 0 && code != EINTR) {
            reports().add(m_path, code);
        }
        return code;
    }
    platform::Transfer noted(platform::Transfer transfer) {
        noted(transfer.code);
        return transfer;
    }

    const std::unique_ptr<platform::OpenFile> m_file;
    const std::string m_path;
};

class ReportingFiles : public platform::OpenFiles {
public:
    explicit ReportingFiles(platform::OpenFiles& files) : m_files(files) {}

    Opened openForReading(const std::string& path) override { return noted(m_files.openForReading(path), path); }
    Opened openForWriting(const std::string& path) override { return noted(m_files.openForWriting(path), path); }
    std::FILE* openStream(const std::string& path) override { return m_files.openStream(path); }
    void closeDescriptor(int number) override { m_files.closeDescriptor(number); }

private:
    static Opened noted(Opened opened, const std::string& path) {
        if (opened.file) {
            opened.file = std::make_unique<ReportingFile>(std::move(opened.file), path);
        } else {
            reports().add(path, opened.code);
        }
        return opened;
    }

    platform::OpenFiles& m_files;
};

class ReportingWorkspace : public platform::Workspace {
public:
    explicit ReportingWorkspace(platform::Workspace& workspace) : m_workspace(workspace) {}

    platform::Failure recycle(const std::string& folder, const std::string& name,
                              const std::string& trashFolder) override {
        auto failure = m_workspace.recycle(folder, name, trashFolder);
        if (failure) {
            reports().add(failure->description);
        }
        return failure;
    }
    bool isFilePackage(const std::string& path) override { return m_workspace.isFilePackage(path); }
    std::vector<std::string> mountedLocalVolumePaths() override { return m_workspace.mountedLocalVolumePaths(); }
    void noteFileSystemChanged(const std::string& path) override { m_workspace.noteFileSystemChanged(path); }
    int sendFinderUpdate(const std::optional<std::string>& path) override { return m_workspace.sendFinderUpdate(path); }
    bool openURL(const std::string& url) override { return m_workspace.openURL(url); }
    std::optional<std::string> applicationWithIdentifier(const std::string& identifier) override {
        return m_workspace.applicationWithIdentifier(identifier);
    }
    bool openURLs(const std::vector<std::string>& urls, const std::string& identifier) override {
        return m_workspace.openURLs(urls, identifier);
    }
    platform::Failure registerApplication(const std::string& bundlePath) override {
        return m_workspace.registerApplication(bundlePath);
    }

private:
    platform::Workspace& m_workspace;
};

class ReportingProcesses : public platform::Processes {
public:
    explicit ReportingProcesses(platform::Processes& processes) : m_processes(processes) {}

    std::shared_ptr<platform::Process> make(platform::ProcessOptions options) override {
        using Output = platform::ProcessOptions::Output;
        if (options.output == Output::null && options.error == Output::null) {
            options.error = Output::inherit;
        }
        auto tool = m_processes.make(std::move(options));
        reports().setTool(tool);
        return tool;
    }
    std::string locateTool(const std::string& path) override { return m_processes.locateTool(path); }

private:
    platform::Processes& m_processes;
};

class ReportingConsole : public platform::Console {
public:
    void log(const std::string& line) override { reports().addConsoleLine(line); }
};

}  // namespace

void Reports::clear() {
    const std::lock_guard lock(m_mutex);
    m_failure.reset();
    m_consoleLines.clear();
    m_tool.reset();
}

void Reports::add(const std::string& path, int code) {
    // What the host says of pipes, sockets and devices, which it does not touch.
    const std::string words =
        code == EOPNOTSUPP ? "is neither a file nor a folder" : std::generic_category().message(code);
    add(shownPath(path) + ": " + words);
}

void Reports::add(const std::string& text) {
    const std::lock_guard lock(m_mutex);
    m_failure = text;
}

void Reports::addConsoleLine(const std::string& line) {
    const std::lock_guard lock(m_mutex);
    m_consoleLines.push_back(line);
}

void Reports::setTool(std::shared_ptr<platform::Process> tool) {
    const std::lock_guard lock(m_mutex);
    m_tool = std::move(tool);
}

std::optional<std::string> Reports::lastFailure() const {
    const std::lock_guard lock(m_mutex);
    return m_failure;
}

std::vector<std::string> Reports::consoleLines() const {
    const std::lock_guard lock(m_mutex);
    return m_consoleLines;
}

std::shared_ptr<platform::Process> Reports::tool() const {
    const std::lock_guard lock(m_mutex);
    return m_tool;
}

Reports& reports() {
    static Reports& all = *new Reports;
    return all;
}

// Never destroyed: other threads may still use them while the process ends.
void setReportingHost() {
    platform::Host host = platform::linux_host::services();
    host.openFiles = new ReportingFiles(*host.openFiles);
    host.workspace = new ReportingWorkspace(*host.workspace);
    host.processes = new ReportingProcesses(*host.processes);
    host.console = new ReportingConsole;
    platform::setHost(host);
    KZLog::sharedController()->setNoPrinting(true);
}

}  // namespace kzfile
