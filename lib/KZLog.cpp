#include "lib/KZLog.h"

#include <algorithm>
#include <cstdio>
#include <exception>

#include "lib/KZLogFiles.h"
#include "lib/base/PathText.h"
#include "lib/base/PropertyText.h"
#include "lib/base/Text.h"
#include "lib/base/TextQueue.h"
#include "platform/ports/Host.h"

namespace {

constexpr std::uint64_t rollOverSize = 500000;    // bytes
constexpr std::uint64_t shortText = 99;           // UTF-16 units
constexpr std::size_t longestShutdownQueue = 10;  // entries
constexpr std::size_t keptScratch = 1U << 16U;    // bytes

// Recursive, since alloc() is reached from within sharedController().
std::recursive_mutex& classLock() {
    static auto* const lock = new std::recursive_mutex;
    return *lock;
}

void logUncaughtException(const std::string& reason) {
    KZLog::appendLogAndPrint(reason);
    KZLog::finishWriting();
}

bool isMainThread() {
    platform::MainThread* const mainThread = platform::host().mainThread;
    return mainThread != nullptr && mainThread->isCurrent();
}

// The date's text, made once a second.
std::string_view dateText(platform::Date date) {
    thread_local std::string text;
    thread_local std::int64_t shown = 0;
    const auto second = std::chrono::floor<std::chrono::seconds>(date).time_since_epoch().count();
    if (text.empty() || shown != second) {
        text = kz::description(date);
        shown = second;
    }
    return text;
}

bool needsEscaping(std::string_view text) {
    for (std::size_t at = text.find('%'); at != std::string_view::npos; at = text.find('%', at + 1)) {
        const std::string_view after = text.substr(at + 1);
        if (!after.empty() &&
            (std::string_view(" .!,-;:+").find(after.front()) != std::string_view::npos || after.starts_with("%%"))) {
            return true;
        }
    }
    return false;
}

}  // namespace

KZLog::KZLog()
    : m_writeQueue(std::make_unique<kz::TextQueue>([this](const kz::TextBatch& batch) {
          const std::lock_guard lock(m_fileMutex);
          for (std::size_t at = 0; at < batch.size(); ++at) {
              appendLogOnThread(batch[at]);
          }
          writeGathered();
      })) {}

KZLog::~KZLog() { shutDown(); }

KZLog* KZLog::alloc() {
    const std::lock_guard lock(classLock());
    if (s_shared.load() != nullptr) {
        return nullptr;
    }
    s_shared = new KZLog;
    return s_shared;
}

KZLog* KZLog::sharedController() {
    if (KZLog* const log = s_ready.load(std::memory_order_acquire)) {
        return log;
    }
    const std::lock_guard lock(classLock());
    if (s_ready.load() == nullptr) {
        alloc();
        if (platform::Application* const application = platform::host().application) {
            application->onWillTerminate([] { willTerminate(); });
        }
        if (platform::UncaughtExceptions* const exceptions = platform::host().exceptions) {
            exceptions->setHandler(logUncaughtException);
        }
        s_ready.store(s_shared.load(), std::memory_order_release);
    }
    return s_ready;
}

void KZLog::createNewLog() { createNewLog(std::nullopt); }

void KZLog::createNewLog(const std::optional<std::string>& name) {
    KZLog* const log = sharedController();
    bool started = false;
    {
        const std::lock_guard lock(log->m_fileMutex);
        started = log->startNewLog(name);
    }
    if (!started) {
        return;
    }
    for (const KZLogFiles::HeaderLine& line : KZLogFiles::header()) {
        line.fast ? fastAppendLog("%@", line.text) : appendLog("%@", line.text);
    }
}

std::vector<std::string> KZLog::availableLogs() {
    std::vector<std::string> logs;
    const auto folder = KZLogFiles::places().folder;
    const std::string name = sharedController()->appName();
    for (int number = 1; folder && number <= KZLogFiles::mostLogs; ++number) {
        const std::string path = KZLogFiles::logPath(*folder, name, number);
        if (platform::host().files->fileExists(path)) {
            logs.push_back(path);
        }
    }
    return logs;
}

void KZLog::finishWriting() {
    const std::lock_guard lock(classLock());
    if (KZLog* const log = s_ready.load()) {
        log->m_writeQueue->waitUntilAllOperationsAreFinished();
    }
}

void KZLog::willTerminate() {
    if (KZLog* const log = s_ready.load()) {
        log->shutDown();
    }
}

void KZLog::shutDown() {
    if (m_writeQueue->operationCount() <= longestShutdownQueue) {
        const std::lock_guard lock(classLock());
        m_writeQueue->waitUntilAllOperationsAreFinished();
    } else {
        m_writeQueue->cancelAllOperations();
    }
    m_writeQueue->close();
    {
        const std::lock_guard lock(m_nameMutex);
        m_appName.reset();
    }
    const std::lock_guard lock(m_fileMutex);
    m_fileHandle.reset();
}

std::string KZLog::appName() const {
    {
        const std::lock_guard lock(m_nameMutex);
        if (m_appName) {
            return *m_appName;
        }
    }
    return kz::deletingPathExtension(kz::lastPathComponent(platform::host().bundle->executablePath()));
}

std::string KZLog::escapeTextForLogging(std::string_view text) {
    if (!needsEscaping(text)) {
        return std::string(text);
    }
    std::string escaped(text);
    for (const char* const find : {"% ", "%.", "%!", "%,", "%-", "%;", "%:", "%+"}) {
        escaped = kz::replaceAll(escaped, find, std::string("%") + find);
    }
    return kz::replaceAll(escaped, "%%%", "%%");
}

void KZLog::appendFormatted(Append appender, std::string_view format, std::span<const kz::FormatArgument> arguments) {
    thread_local std::string text;
    try {
        text.clear();
        if (needsEscaping(format)) {
            kz::appendFormatted(text, escapeTextForLogging(format), arguments);
        } else {
            kz::appendFormatted(text, format, arguments);
        }
        (sharedController()->*appender)(text);
        if (text.capacity() > keptScratch) {
            text = std::string();
        }
    } catch (const std::exception&) {
        // No memory for the entry: it is lost, the caller goes on.
    }
}

void KZLog::appendAndMayWait(std::string_view text) {
    appendTextToLog(text);
    if (isMainThread()) {
        return;
    }
    const std::size_t length = kz::lengthInUTF16(text);
    if (length >= 1 && length <= shortText && m_bytesInQueue <= shortText) {
        finishWriting();
    }
}

void KZLog::appendTrimmed(std::string_view text) { appendAndMayWait(kz::trimWhitespaceAndNewlines(text)); }

void KZLog::appendAndPrint(std::string_view text) {
    const std::string_view trimmed = kz::trimWhitespaceAndNewlines(text);
    appendAndMayWait(trimmed);
    if (!m_noPrinting) {
        const std::string line = kz::replaceAll(kz::replaceAll(trimmed, "%@", ""), "%", "%%");
        print(kz::replaceAll(line, std::string_view("\0", 1), "") + "\n");
    }
}

void KZLog::appendTextToLog(std::string_view text) {
    const std::string_view trimmed = kz::trimWhitespaceAndNewlines(text);
    if (!trimmed.empty()) {
        m_bytesInQueue += kz::lengthInUTF16(trimmed);
        m_writeQueue->post(trimmed);
    }
}

bool KZLog::startNewLog(const std::optional<std::string>& name) {
    if (loggingDisabled()) {
        return false;
    }
    m_fileHandle.reset();
    const KZLogFiles::Places places = KZLogFiles::places();
    if (KZLogFiles::isDisabledByPreferences(places)) {
        print("Logging is disabled\n");
        s_loggingDisabled = true;
        return false;
    }
    std::string stored = appName();
    {
        const std::lock_guard lock(m_nameMutex);
        if (name && !m_appName) {
            m_appName = stored = *name;
        }
        if (stored.empty()) {
            m_appName = stored = "Unknown";
        }
    }
    m_bytesWritten = 0;
    if (!KZLogFiles::startNewLog(places, stored, [this](const std::string& line) { print(line); })) {
        return false;
    }
    openCurrentLog(KZLogFiles::logPath(*places.currentFolder, stored, 1));
    return m_fileHandle != nullptr;
}

void KZLog::openCurrentLog(const std::string& path) { m_fileHandle = platform::host().files->openForAppending(path); }

void KZLog::appendLogOnThread(std::string_view text) {
    if (loggingDisabled()) {
        return;
    }
    try {
        gather(text);
        if (m_bytesWritten + m_gathered.lines.size() >= rollOverSize) {
            writeGathered();
        }
        if (m_bytesWritten >= rollOverSize && !m_rollingOver) {
            m_rollingOver = true;
            rollOver();
            m_rollingOver = false;
        }
    } catch (const std::exception& exception) {
        m_rollingOver = false;
        print(kz::format("Exception writing to log: %s\n", exception.what()));
    }
}

void KZLog::gather(std::string_view text) {
    const std::uint64_t units = kz::lengthInUTF16(text);
    if (m_fileHandle == nullptr) {
        if (const auto folder = KZLogFiles::places().currentFolder) {
            openCurrentLog(KZLogFiles::logPath(*folder, appName(), 1));
        }
    }
    if (m_fileHandle == nullptr) {
        print(kz::format("Unable to log the following information: %s\n", text));
        print("Unable to open log for output\n");
        m_bytesInQueue -= units;
        return;
    }
    const kz::FormatArgument arguments[] = {dateText(std::chrono::system_clock::now()), text};
    kz::appendFormatted(m_gathered.lines, "%@ - %@\n", arguments);
    m_gathered.units += units;
    ++m_gathered.entries;
}

platform::Failure KZLog::appendGathered() {
    try {
        return m_fileHandle->append(m_gathered.lines);
    } catch (const std::exception& exception) {
        return platform::Error{.code = 0, .description = exception.what()};
    }
}

// One write for all that has gathered, so that lines of two processes never mix within a line.
void KZLog::writeGathered() {
    if (m_gathered.entries == 0) {
        return;
    }
    if (const platform::Failure failure = appendGathered()) {
        for (; m_gathered.entries > 0; --m_gathered.entries) {
            print(kz::format("Exception writing to log: %s\n", failure->description));
        }
    } else {
        m_bytesWritten += m_gathered.lines.size();
        m_bytesInQueue -= m_gathered.units;
    }
    m_gathered.lines.clear();
    m_gathered.units = 0;
    m_gathered.entries = 0;
}

// The header and the remark are written here and now, ahead of the entries that are still queued. A header that fills
// the new log by itself is no reason to roll over again.
void KZLog::rollOver() {
    std::vector<KZLogFiles::HeaderLine> lines;
    if (startNewLog(appName())) {
        lines = KZLogFiles::header();
    }
    lines.push_back({"Log truncated at 500KB"});
    for (const KZLogFiles::HeaderLine& line : lines) {
        const std::string_view text = kz::trimWhitespaceAndNewlines(line.text);
        m_bytesInQueue += kz::lengthInUTF16(text);
        appendLogOnThread(text);
    }
}

void KZLog::print(const std::string& text) const {
    if (!m_noPrinting && !loggingDisabled()) {
        std::fwrite(text.data(), 1, text.size(), stdout);
        std::fflush(stdout);
    }
}
