// file_text.h: whole files in and out. A file is written to a temporary name beside it and renamed, so that a reader
// sees the old text or the whole new one.
#ifndef TAVELL_KIT_FILE_TEXT_H
#define TAVELL_KIT_FILE_TEXT_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "findings.h"

namespace kit
{

/// [byte], the largest file that is read.
constexpr std::size_t kLargestFile = std::size_t{512} * 1024 * 1024;

/// The bytes of a file; nothing, and a finding, when it is missing, a directory, unreadable or above kLargestFile.
std::optional<std::string> readFile(const std::string& path, Findings& findings);

/// How the bytes of a text file are to be read.
enum class Encoding {
    utf8,         // with or without a byte order mark
    utf8OrLatin1  // bytes that are no UTF-8 count as Windows-1252, with a remark
};

/// The text of a file as UTF-8 without a byte order mark and without NUL characters. UTF-16 and UTF-32 with a byte order
/// mark are converted. Nothing, and a finding with the line, when the bytes are none of these: a file of NULs, for
/// example.
std::optional<std::string> readTextFile(const std::string& path, Encoding encoding, Findings& findings);

/// The same for bytes that are in memory; file names them in findings.
std::optional<std::string> toUtf8(std::string bytes, Encoding encoding, const std::string& file,
                                  Findings& findings);

/// Replaces a file as a whole. It keeps the permissions of the old one, a new one has those that the system gives; a link
/// stays a link, and what it points at is replaced. Devices, pipes and everything in /dev are written to behind what is
/// there. False, and a finding, when that fails or the file is protected; the old file is then as it was.
bool writeFile(const std::string& path, std::string_view text, Findings& findings);

/// Whether two paths name the same existing file.
bool isSameFile(const std::string& a, const std::string& b);

}  // namespace kit

#endif
