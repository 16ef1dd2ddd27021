// What the sanitizers are told to pass over. Each use says at its place why it is
// right there; an ordinary build holds no trace of it.
#pragma once

#ifdef __has_feature
#define SANITIZED_BY(feature) __has_feature(feature)
#else
#define SANITIZED_BY(feature) 0
#endif

#if defined(__SANITIZE_ADDRESS__) || SANITIZED_BY(address_sanitizer)
#define DELIBERATE_OVERREAD __attribute__((no_sanitize("address")))
#else
#define DELIBERATE_OVERREAD
#endif

// For the writer: a race is reported only where both sides are watched.
#if defined(__SANITIZE_THREAD__) || SANITIZED_BY(thread_sanitizer)
#define DELIBERATE_RACE __attribute__((no_sanitize("thread")))
#else
#define DELIBERATE_RACE
#endif
