// Small pictures of single frames, for the report.
#ifndef LUMASCAN_THUMBNAILS_H
#define LUMASCAN_THUMBNAILS_H

#include <functional>
#include <vector>

#include "scan/record/videoResult.h"

// The frames of which the report shows pictures: peak, start and end of the gravest events, as far
// as they can be had by decoding little of the video once more; with ALL whatever that takes, and
// also frames at equal distances. Sorted, each once.
std::vector<int64_t> framesToShow(const std::vector<Event>& events, Thumbs thumbs,
                                  const FrameTable& frames);

// Reads the video once more, from key frame to key frame where it can be sought, and makes a JPEG
// picture of each of these frames. One that is not found again is left out. `onPicture` is told
// before each.
Thumbnails makeThumbnails(
    const VideoSource& source, const FrameTable& frames, const std::vector<int64_t>& wanted,
    const std::function<void()>& onPicture = [] {});

#endif
