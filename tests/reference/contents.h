// Frame contents that bring out what the indicators look for, and what lies just beside it.
#ifndef LUMAPROBE_TESTS_CONTENTS_H
#define LUMAPROBE_TESTS_CONTENTS_H

#include <cstdint>

#include "reference.h"

// Number of different contents.
int contentCount();

// Name of a content, for messages.
const char* contentName(int content);

// A w x h frame of content 0 .. contentCount() - 1; `random` is the state of a generator and
// decides the details.
reference::Luma makeContent(int content, uint32_t w, uint32_t h, uint64_t* random);

// What `previous` might look like a frame later: the same, a single sample changed, some blocks
// changed much or by a single level of a single sample, all samples moved by one level, or another
// frame.
reference::Luma nextFrame(const reference::Luma& previous, uint64_t* random);

#endif
