// How a scan tells how far it is.
#ifndef LUMASCAN_PROGRESS_STYLE_H
#define LUMASCAN_PROGRESS_STYLE_H

enum class ProgressStyle { AUTO, BAR, PLAIN, JSON, NONE };

#endif
