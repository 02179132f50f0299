// Keeps those who write to a folder of results apart, and out of folders that are none.
#ifndef LUMASCAN_FOLDER_LOCK_H
#define LUMASCAN_FOLDER_LOCK_H

#include <string>

// Makes the folder, and keeps others out of it while the process lives or until the descriptor that
// it returns is closed. A folder in which there is something, but nothing of an earlier scan, is
// somebody else's: it is refused unless it is to be taken over. Negative when it cannot be had:
// `error` says why.
int lockFolder(const std::string& folder, bool isTakenOver, std::string* error);

#endif
