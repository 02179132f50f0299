// The system calls that a process which decodes a video never makes.
#ifndef LUMASCAN_SYSCALL_FILTER_H
#define LUMASCAN_SYSCALL_FILTER_H

#include <string>

// From here on the kernel refuses this process, with EPERM, what reaches other processes, networks,
// devices or the system, and what changes the attributes of files. Threads can be started,
// processes cannot. Takes a process that cannot gain privileges. Returns an empty text, or why
// there is no filter.
std::string filterSyscalls();

#endif
