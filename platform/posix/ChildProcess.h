// A tool that runs as a child of this process.
#pragma once

#include <sys/types.h>

#include <memory>
#include <mutex>

#include "platform/ports/Processes.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/ExitWatch.h"
#include "platform/posix/OutputStreams.h"
#include "platform/posix/Spawn.h"

namespace platform::posix {

// The child is reaped as soon as its end has been seen, so nothing is left to be sent to. There is one exception: a
// tool that was asked to terminate keeps its number until kill or until the object goes, so that kill still reaches the
// subtasks in its process group that outlived it, and nobody else.
class ChildProcess : public Process {
public:
    // `nullDevice` is open for reading and writing.
    ChildProcess(ProcessOptions options, std::shared_ptr<const Descriptor> nullDevice);
    ~ChildProcess() override;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    const ProcessOptions& options() const override { return m_options; }
    Failure launch() override;

    bool isRunning() override;
    void waitUntilExit() override;
    bool waitUntilExit(std::chrono::milliseconds limit) override;
    int terminationStatus() override;
    bool endedBySignal() override;

    void terminate() override;
    void kill() override;

    Chunk readAvailable(std::string& output, std::string& error,
                        std::optional<std::chrono::milliseconds> limit) override;
    void closeReadEnds() override { m_streams.close(); }

private:
    struct Ends;  // the tool's side of its streams
    Failure openStreams(Ends& ends);

    // With the lock held.
    bool hasEnded();
    void noteState(const ExitState& state);
    void reapWhenUnused();
    void signalGroup(int signal);

    const ProcessOptions m_options;
    const std::shared_ptr<const Descriptor> m_nullDevice;

    std::mutex m_mutex;
    pid_t m_child = -1;  // the number is ours until the child is reaped
    ExitState m_state;
    bool m_launched = false;
    bool m_reaped = false;
    bool m_askedToEnd = false;
    int m_waiting = 0;  // threads that use the number without the lock
    Descriptor m_exitWatch;
    Descriptor m_input;  // writing end: the tool's input stays open and empty
    OutputStreams m_streams;
};

}  // namespace platform::posix
