// sanitized.h: defines TAVELL_IS_SANITIZED in programs built with the address or thread sanitizer.
#pragma once

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define TAVELL_IS_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define TAVELL_IS_SANITIZED 1
#endif
#endif
