// Keeps those who write to a folder of results apart.
#ifndef LUMASCAN_FOLDER_LOCK_H
#define LUMASCAN_FOLDER_LOCK_H

#include <string>

// Makes the folder, and keeps others out of it while the process lives or until the descriptor that
// it returns is closed. Negative when it cannot be had: `error` says why.
int lockFolder(const std::string& folder, std::string* error);

#endif
