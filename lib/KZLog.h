// The one log of the process: a text file per application that is rolled over at 500000 bytes, written by a queue.
//
// Every operation may be called from any thread and throws nothing. A log begins where the last run ended: the first
// entry appends to the existing NAME.1.log, bytesWritten() counts from nought all the same, and a new file is begun by
// createNewLog() alone, which the roll-over calls. Without such a file an entry is lost, and two lines on standard
// output say so.
//
// Formats: a "%" in front of a blank or one of .!,-;:+ is text, so that "50% done" reads as it is written; the flags
// "-", "+" and blank and a bare precision ("%.2f") cannot be used, "%0.2f" can. Other conversions as in
// lib/base/Format.h. An entry on disk is "2026-11-21 01:15:00 +0000 - text", the text trimmed at both ends, the date
// that of the writing; an empty text makes none.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "lib/base/Format.h"
#include "lib/base/FormatText.h"
#include "platform/ports/FileManager.h"

namespace kz {
class TextBatch;
class TextQueue;
}  // namespace kz

class KZLog {
public:
    using Format = kz::FormatText;  // none logs nothing

    // Created at the first call, never destroyed. The first call also registers the shutdown with the application, when
    // the host has one, and has an exception that nobody catches logged with its reason before the process ends.
    static KZLog* sharedController();

    // None once the shared instance exists, so that there is never a second one.
    static KZLog* alloc();

    KZLog(const KZLog&) = delete;
    KZLog& operator=(const KZLog&) = delete;

    // Shifts the older logs down and begins a new one with a header; reads the maker's global preferences first and
    // switches logging off for the rest of the process when they say so. Blocks; call it from one thread at a time. A
    // failure is a line on standard output and ends it; what was shifted by then stays shifted, and entries go to the
    // current log that is there. The first name given is kept.
    static void createNewLog();
    static void createNewLog(const std::optional<std::string>& name);

    // Paths of the logs in the user's folder, the newest first; for the superuser the current one lies elsewhere and is
    // not among them.
    static std::vector<std::string> availableLogs();

    // Blocks until the entries queued before the call are written.
    static void finishWriting();

    // Shutdown: up to 10 queued entries are written, 11 or more are dropped, and the file is closed. Entries that come
    // later are lost. Blocks until what is being written is done.
    static void willTerminate();

    template <typename... Arguments>
    static void debugPrint(const Format&, const Arguments&...) {}  // does nothing at all

    // Queues an entry and never waits.
    template <typename... Arguments>
    static void fastAppendLog(const Format& format, const Arguments&... arguments) {
        append(&KZLog::appendTextToLog, format, arguments...);
    }

    // Queues an entry. Off the main thread a text of 1 to 99 characters is on disk when the call returns, provided that
    // no more than 99 characters are in the queue.
    template <typename... Arguments>
    static void appendLog(const Format& format, const Arguments&... arguments) {
        append(&KZLog::appendAndMayWait, format, arguments...);
    }
    template <typename... Arguments>
    static void appendLogAndDebugPrint(const Format& format, const Arguments&... arguments) {
        append(&KZLog::appendTrimmed, format, arguments...);
    }

    // As appendLog, and prints a line to standard output: the text without any "%@" and with every "%" doubled.
    template <typename... Arguments>
    static void appendLogAndPrint(const Format& format, const Arguments&... arguments) {
        append(&KZLog::appendAndPrint, format, arguments...);
    }

    // "%" doubled in front of a blank and .!,-;:+, and "%%%" made "%%" again.
    static std::string escapeTextForLogging(std::string_view text);

    void appendTextToLog(std::string_view text);  // queues one entry as it stands, no format

    // The stored name, else that of the bundle's executable without its extension.
    std::string appName() const;
    std::uint64_t bytesWritten() const noexcept { return m_bytesWritten; }  // to the current file, by this process

    // UTF-16 units in the queue. Entries that were dropped or could not be written stay counted, so that appendLog
    // waits less, never longer.
    std::uint64_t bytesInQueue() const noexcept { return m_bytesInQueue; }
    static bool loggingDisabled() noexcept { return s_loggingDisabled.load(std::memory_order_relaxed); }
    bool noPrinting() const noexcept { return m_noPrinting; }
    void setNoPrinting(bool noPrinting) noexcept { m_noPrinting = noPrinting; }  // keeps standard output quiet

private:
    friend struct KZLogTesting;
    using Append = void (KZLog::*)(std::string_view);

    KZLog();
    ~KZLog();

    template <typename... Arguments>
    static void append(Append appender, const Format& format, const Arguments&... arguments) {
        if (!loggingDisabled() && !format.isNone()) {
            const std::array<kz::FormatArgument, sizeof...(Arguments)> list{kz::FormatArgument(arguments)...};
            appendFormatted(appender, format.text(), list);
        }
    }
    static void appendFormatted(Append appender, std::string_view format,
                                std::span<const kz::FormatArgument> arguments);
    void appendAndMayWait(std::string_view text);
    void appendTrimmed(std::string_view text);
    void appendAndPrint(std::string_view text);

    void shutDown();
    void print(const std::string& text) const;

    // With m_fileMutex locked; all but the first two on the queue's thread only.
    bool startNewLog(const std::optional<std::string>& name);
    void openCurrentLog(const std::string& path);
    void appendLogOnThread(std::string_view text);
    void gather(std::string_view text);
    platform::Failure appendGathered();
    void writeGathered();
    void rollOver();

    static inline std::atomic<KZLog*> s_shared = nullptr;  // as soon as it exists
    static inline std::atomic<KZLog*> s_ready = nullptr;   // once it is set up
    static inline std::atomic<bool> s_loggingDisabled = false;

    mutable std::mutex m_nameMutex;
    std::optional<std::string> m_appName;
    std::atomic<std::uint64_t> m_bytesWritten = 0;
    std::atomic<std::uint64_t> m_bytesInQueue = 0;
    std::atomic<bool> m_noPrinting = false;

    std::recursive_mutex m_fileMutex;  // the file and what is gathered for it
    std::unique_ptr<platform::FileManager::AppendHandle> m_fileHandle;
    struct {
        std::string lines;
        std::uint64_t units = 0;  // of the texts, as they were counted into the queue
        std::size_t entries = 0;
    } m_gathered;
    bool m_rollingOver = false;
    std::unique_ptr<kz::TextQueue> m_writeQueue;  // last: its thread uses all the others
};
