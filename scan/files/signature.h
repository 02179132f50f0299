// What files are by their first bytes.
#ifndef LUMASCAN_SIGNATURE_H
#define LUMASCAN_SIGNATURE_H

#include <string>

// Whether a file begins like one of the containers that videos come in: ASF, AVI, FLV, GXF, IVF,
// Matroska, MP4, MPEG program and transport streams, MXF, NUT, Ogg, RealMedia or YUV4MPEG. Nothing
// else of it is looked at.
bool hasVideoSignature(const std::string& path);

#endif
