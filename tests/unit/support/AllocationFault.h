#pragma once

namespace mv::test {

// Makes one call of operator new fail: the n-th of the process, counted from 1, after the scope
// began; on whichever thread it falls. Only one of these at a time.
class AllocationFault {
public:
    explicit AllocationFault(long which);
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;

    // Whether the call came. A loop over n is at its end when it did not.
    bool Happened() const;
};

// Makes every call of operator new fail from now on until the scope ends.
class AllocationDrought {
public:
    AllocationDrought();
    ~AllocationDrought();
    AllocationDrought(const AllocationDrought&) = delete;
    AllocationDrought& operator=(const AllocationDrought&) = delete;
};

// Calls of operator new that were served and not yet given back.
long LiveAllocations();

}  // namespace mv::test
