// sha256.h: the hash function SHA-256 (FIPS 180-4, 2015).
#ifndef TAVELL_KIT_SHA256_H
#define TAVELL_KIT_SHA256_H

#include <string>
#include <string_view>

namespace kit
{

/// The hash of a text's bytes as 64 hex digits in lower case.
std::string sha256(std::string_view text);

}  // namespace kit

#endif
