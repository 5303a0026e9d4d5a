#pragma once

#include "lib/KZLog.h"
#include "lib/base/TextQueue.h"

// What only a test may do: begin afresh, as at the start of a process, and hold the queue.
struct KZLogTesting {
    static void beginAfresh() {
        delete KZLog::s_ready.exchange(nullptr);
        KZLog::s_shared = nullptr;
        KZLog::s_loggingDisabled = false;
    }
    static kz::TextQueue& queue() { return *KZLog::sharedController()->m_writeQueue; }
};
