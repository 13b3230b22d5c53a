// The program's operator new, which a test can make fail.
#pragma once

namespace test {

// While a FailingAllocation exists, one allocation of this thread throws std::bad_alloc: the nth,
// counted from 1. At most one object per thread.
class FailingAllocation {
public:
    explicit FailingAllocation(int nth);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation &) = delete;
    FailingAllocation &operator=(const FailingAllocation &) = delete;

    // False while fewer than n allocations have been made.
    bool happened() const;
};

} // namespace test
