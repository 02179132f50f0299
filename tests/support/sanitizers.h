// Which sanitizer the tests, or the programs that they run, are built with. GCC tells it by macros,
// clang by features, of tests that are not sanitized themselves the build.
#ifndef LUMAPROBE_TESTS_SANITIZERS_H
#define LUMAPROBE_TESTS_SANITIZERS_H

#ifndef __has_feature
#define __has_feature(name) 0
#endif

#if defined(PROGRAMS_ARE_ADDRESS_SANITIZED) || defined(__SANITIZE_ADDRESS__) || \
    __has_feature(address_sanitizer)
inline constexpr bool isAddressSanitized = true;
#else
inline constexpr bool isAddressSanitized = false;
#endif

#if defined(__SANITIZE_THREAD__) || __has_feature(thread_sanitizer)
inline constexpr bool isThreadSanitized = true;
#else
inline constexpr bool isThreadSanitized = false;
#endif

#endif
