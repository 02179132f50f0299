// Whether files have the end that their containers' structure asks for.
#ifndef LUMASCAN_FILE_ENDING_H
#define LUMASCAN_FILE_ENDING_H

#include <string>

#include "scan/files/inputFile.h"

// Whether a file of this container, as FFmpeg names it, lacks its end: the last element of an MP4,
// Matroska, AVI, RoQ or AV1 file is longer than what is left for it, an FLV file does not end
// behind a tag, a GIF has no trailer, an Ogg file no page that closes a stream, a JPEG no marker
// behind its picture, a transport or DV stream a part of a packet or frame, and the header of an
// ASF or MXF file names a length or a place behind its end. False for all other containers, for
// pipes and for what cannot be read.
bool lacksEnding(const InputFile& file, const std::string& container);

#endif
