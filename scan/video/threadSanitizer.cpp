// What the thread sanitizer is to say nothing about: FFmpeg's own threads are not compiled for it,
// and it cannot see how they take turns. Part of sanitized programs alone.

// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizer's own name for it
extern "C" const char* __tsan_default_suppressions();

extern "C" const char* __tsan_default_suppressions() {
  return "called_from_lib:libavcodec\n"
         "called_from_lib:libavutil\n"
         "race:libavcodec\n"
         "race:libavutil\n";
}
// NOLINTEND(bugprone-reserved-identifier)
