// The helper's work: it does what one process asks for, and nobody else.
#pragma once

#include <sys/types.h>

#include <set>

#include "platform/linux/rights/wire/Wire.h"
#include "platform/posix/Descriptor.h"

namespace platform::rights {

class HelperLoop {
public:
    // `socket`: one end of a pair. The process that made the pair is the one that is served.
    explicit HelperLoop(int socket) : m_socket(socket) {}

    // Says hello and serves until that process ends, closes its end, or leaves its replies unread until no more fit, or
    // until bytes come from any other process. Tools that are still running then are left to finish. Returns the exit
    // code for the helper: 0, or 1 for a socket that is none and for bytes that make no sense or are not from whom they
    // should be.
    int run();

private:
    bool findMaster();
    bool openWatches();
    bool takeRequests();
    bool isFromMaster(const wire::Received& received) const;
    bool serve(const wire::Message& request);
    bool serve(const wire::Run& run);
    bool serve(const wire::Signal& signal);
    bool send(const wire::Message& message, int descriptor = -1) const;
    void reapTools();

    const int m_socket;
    pid_t m_master = -1;
    posix::Descriptor m_masterWatch;
    posix::Descriptor m_childSignals;
    wire::Decoder m_decoder;
    std::set<pid_t> m_tools;  // started and not yet reaped: their numbers are nobody else's
    bool m_betrayed = false;
};

}  // namespace platform::rights
