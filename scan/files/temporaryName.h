// Names of files that are being written. Each says whose it is: the machine, the process, and a
// number that nobody else has.
#ifndef LUMASCAN_TEMPORARY_NAME_H
#define LUMASCAN_TEMPORARY_NAME_H

#include <ctime>
#include <string>

// A new name for what is to be called `name`, in the same folder. It begins with a period.
std::string temporaryName(const std::string& name);

// Whether a name is that of a file that nobody writes any more: its process on this machine is
// gone, or it was touched last a day ago and longer. False of all names of another form.
//
// touched   when it was written last; seconds since 1970, like `now`
bool isLeftover(const std::string& name, std::time_t touched, std::time_t now);

#endif
