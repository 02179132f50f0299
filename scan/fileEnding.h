// Ends of files whose containers do not say how long they are, but how they end.
#ifndef LUMASCAN_FILE_ENDING_H
#define LUMASCAN_FILE_ENDING_H

#include <string>

// Whether a file of this container, as FFmpeg names it, lacks its end: a GIF its trailer, an Ogg
// file the page that closes a stream, a transport stream a part of its last packet. False for all
// other containers and for what cannot be read.
bool lacksEnding(const std::string& path, const std::string& container);

#endif
