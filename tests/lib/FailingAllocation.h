#pragma once

// While it lives, this thread gets no memory for chunks of 64 KiB that are asked for without an exception.
class FailingAllocation {
public:
    FailingAllocation();
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
};
