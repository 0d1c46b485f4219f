// For tests of allocation failure: caps the process's address space at what
// it maps now plus headroom bytes, so that any larger allocation fails. Call
// it in a child process (EXPECT_EXIT) only. False when the cap cannot be set.
#pragma once

#include <cstdio>
#include <sys/resource.h>

inline bool CapAddressSpace(unsigned long headroom)
{
    unsigned long pages = 0;
    std::FILE* statm = std::fopen("/proc/self/statm", "r");
    if (statm == nullptr || std::fscanf(statm, "%lu", &pages) != 1 || std::fclose(statm) != 0)
        return false;
    const rlimit limit{pages * 4096 + headroom, pages * 4096 + headroom};
    return setrlimit(RLIMIT_AS, &limit) == 0;
}
