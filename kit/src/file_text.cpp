#include "file_text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace kit
{

namespace
{

namespace fs = std::filesystem;

constexpr std::size_t kBlock = std::size_t{64} * 1024;  // [byte]
constexpr int kMostTemporaryNames = 100;
constexpr int kMostLinks = 40;  // in a row, then they go in a circle
constexpr std::uint32_t kNoCharacter = 0xffffffff;
constexpr std::uint32_t kReplacement = 0xfffd;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string systemMessage(int error)
{
    return std::generic_category().message(error);
}

/// What to do about a file that could not be written, by the number of the system's error.
std::string remedyOfWriting(int error)
{
    switch (error) {
    case EACCES:
    case EPERM:
        return "get the right to write there, or give another name";
    case EROFS:
        return "name a folder that can be written to";
    case ENOENT:
    case ENOTDIR:
        return "create the folder, or correct its name";
    case ENOSPC:
        return "make room, or name a folder on another disk";
    case EFBIG:
        return "raise the limit of the size of files, or write less";
    case EPIPE:
        return "let the program that reads the text read it to its end";
    case ELOOP:
        return "correct the links, which lead in a circle";
    case ENAMETOOLONG:
        return "give a shorter name";
    default:
        return std::string(rowOf(Code::cannot_write_file).remedy);
    }
}

Place inFile(const std::string& path)
{
    Place place;
    place.file = path;
    return place;
}

std::size_t lineAt(std::string_view text, std::size_t position)
{
    return 1 + static_cast<std::size_t>(
                   std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(position), '\n'));
}

void appendUtf8(std::string& text, std::uint32_t c)
{
    const auto put = [&text](std::uint32_t byte) {
        text += static_cast<char>(static_cast<unsigned char>(byte));
    };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xc0 | (c >> 6));
        put(0x80 | (c & 0x3f));
    } else if (c < 0x10000) {
        put(0xe0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3f));
        put(0x80 | (c & 0x3f));
    } else {
        put(0xf0 | (c >> 18));
        put(0x80 | ((c >> 12) & 0x3f));
        put(0x80 | ((c >> 6) & 0x3f));
        put(0x80 | (c & 0x3f));
    }
}

/// Length of the UTF-8 character at a position; 0 when the bytes are none (RFC 3629: no overlong forms, no surrogates,
/// nothing above U+10FFFF).
std::size_t utf8Length(std::string_view text, std::size_t i)
{
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[i + k]); };
    const unsigned char first = byte(0);
    if (first < 0x80) return 1;
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || i + length > text.size()) return 0;
    for (std::size_t k = 1; k < length; ++k) {
        if ((byte(k) & 0xc0) != 0x80) return 0;
    }
    const unsigned char second = byte(1);
    if ((first == 0xe0 && second < 0xa0) || (first == 0xed && second > 0x9f)) return 0;
    if ((first == 0xf0 && second < 0x90) || (first == 0xf4 && second > 0x8f)) return 0;
    return length;
}

/// Position of the first byte that is no UTF-8; the size of the text when all are.
std::size_t firstBadByte(std::string_view text)
{
    std::size_t i = 0;
    while (i < text.size()) {
        const std::size_t length = utf8Length(text, i);
        if (length == 0) return i;
        i += length;
    }
    return i;
}

/// Windows-1252 above 0x7f: 0x80 to 0x9f differ from Latin-1; five places are not defined.
std::uint32_t fromWindows1252(unsigned char c)
{
    // clang-format off
    static const std::array<std::uint32_t, 32> kUpper{
        0x20ac, kReplacement, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021, 0x02c6, 0x2030, 0x0160, 0x2039, 0x0152, kReplacement, 0x017d, kReplacement,
        kReplacement, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014, 0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, kReplacement, 0x017e, 0x0178};
    // clang-format on
    return c < 0x80 || c > 0x9f ? c : kUpper[c - 0x80U];
}

std::string latin1ToUtf8(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 8);
    for (const char c : bytes)
        appendUtf8(text, fromWindows1252(static_cast<unsigned char>(c)));
    return text;
}

/// A file of 2 or 4 byte units; nothing when the units do not form characters.
std::optional<std::string> wideToUtf8(std::string_view bytes, std::size_t unit, bool isBigEndian)
{
    if (bytes.size() % unit != 0) return std::nullopt;
    const auto at = [&](std::size_t i) {
        std::uint32_t c = 0;
        for (std::size_t k = 0; k < unit; ++k)
            c |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i + k]))
                 << (8 * (isBigEndian ? unit - 1 - k : k));
        return c;
    };
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += unit) {
        std::uint32_t c = at(i);
        if (unit == 2 && c >= 0xd800 && c <= 0xdbff && i + 2 * unit <= bytes.size()) {
            const std::uint32_t low = at(i + unit);
            c = low >= 0xdc00 && low <= 0xdfff ? 0x10000 + ((c - 0xd800) << 10) + (low - 0xdc00)
                                               : kNoCharacter;
            i += unit;
        }
        if (c > 0x10ffff || (c >= 0xd800 && c <= 0xdfff)) return std::nullopt;
        appendUtf8(text, c);
    }
    return text;
}

bool startsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

/// The bytes behind a byte order mark of UTF-16 or UTF-32 as UTF-8. isWide says whether there was one.
std::optional<std::string> fromWide(std::string_view bytes, bool& isWide)
{
    using namespace std::string_view_literals;
    isWide = true;
    if (startsWith(bytes, "\xff\xfe\0\0"sv)) return wideToUtf8(bytes.substr(4), 4, false);
    if (startsWith(bytes, "\0\0\xfe\xff"sv)) return wideToUtf8(bytes.substr(4), 4, true);
    if (startsWith(bytes, "\xff\xfe"sv)) return wideToUtf8(bytes.substr(2), 2, false);
    if (startsWith(bytes, "\xfe\xff"sv)) return wideToUtf8(bytes.substr(2), 2, true);
    isWide = false;
    return std::nullopt;
}

/// Writes and closes; the number of the system's error, 0 for success.
int writeAndClose(std::FILE* file, std::string_view text)
{
    int error = 0;
    if (std::fwrite(text.data(), 1, text.size(), file) != text.size()) error = errno;
    if (std::fclose(file) != 0 && error == 0) error = errno;
    return error;
}

/// Opens a new file beside target; name receives its path. Null, with errno, when that fails.
std::FILE* openTemporary(const fs::path& target, fs::path& name)
{
    for (int i = 0; i < kMostTemporaryNames; ++i) {
        name = target;
        name += ".tmp" + std::to_string(i);
        std::FILE* file = std::fopen(name.string().c_str(), "wbx");
        if (file != nullptr || errno != EEXIST) return file;
    }
    return nullptr;
}

/// Gives a new file the permissions and, where the system lets it, the owner of the one that it will replace.
void takeOver(const fs::path& old, const fs::path& fresh, fs::perms permissions)
{
    std::error_code ignored;  // a file system without permissions keeps none
#ifndef _WIN32
    struct stat state {
    };
    // only an administrator may give a file away; the owner goes first, since that clears bits of the permissions
    const bool isKnown = stat(old.c_str(), &state) == 0;
    if (isKnown && chown(fresh.c_str(), state.st_uid, state.st_gid) != 0) errno = 0;
#else
    static_cast<void>(old);
#endif
    fs::permissions(fresh, permissions, ignored);
}

/// Whether a file that exists may be written: it could be replaced in any case, but who protects a file from being
/// written wants to keep it. The number of the system's error, 0 for yes.
int refusalOf(const fs::path& target)
{
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(target.string().c_str(), "r+b"));
    return file ? 0 : errno;
}

/// Writes beside the target and takes its place; the number of the system's error, 0 for success.
int replaceFile(const fs::path& target, std::string_view text)
{
    std::error_code error;
    const fs::file_status old = fs::status(target, error);
    const bool isThere = fs::exists(old);
    if (const int refusal = isThere ? refusalOf(target) : 0; refusal != 0) return refusal;

    fs::path temporary;
    std::FILE* file = openTemporary(target, temporary);
    if (file == nullptr) return errno;
    if (isThere) takeOver(target, temporary, old.permissions());
    int failure = writeAndClose(file, text);
    if (failure == 0) {
        fs::rename(temporary, target, error);
        failure = error.value();
    }
    if (failure != 0) fs::remove(temporary, error);
    return failure;
}

/// Writes to what cannot be replaced: a device, a pipe, a file that is open already. The number of the system's error, 0
/// for success.
int writeInPlace(const std::string& path, std::string_view text)
{
    // behind what is there: standard output may be a log that others write to as well
    std::FILE* file = std::fopen(path.c_str(), "ab");
    return file == nullptr ? errno : writeAndClose(file, text);
}

/// Where the bytes for a path go.
struct Target {
    fs::path path;           // behind all links, whether it exists or not
    bool isInPlace = false;  // to be written to as it is
    int error = 0;           // the system's number; 0 when the path can be followed
};

Target targetOf(const std::string& path)
{
    Target target{path, false, 0};
    std::error_code error;
    for (int i = 0; i < kMostLinks; ++i) {
        // links such as /dev/stdout stand for what the process has open, whatever that is
        const std::string folder = target.path.parent_path().generic_string();
        target.isInPlace = target.isInPlace || folder == "/dev" || startsWith(folder, "/dev/") ||
                           startsWith(folder, "/proc/");
        if (target.isInPlace || !fs::is_symlink(target.path, error)) {
            target.isInPlace = target.isInPlace || fs::is_other(target.path, error);
            return target;
        }
        const fs::path next = fs::read_symlink(target.path, error);
        if (error) break;
        target.path = target.path.parent_path() / next;
    }
    target.error = error ? error.value() : ELOOP;
    return target;
}

/// The number of the system's error, 0 for success.
int writeTarget(const std::string& path, std::string_view text)
{
    const Target target = targetOf(path);
    if (target.error != 0) return target.error;
    return target.isInPlace ? writeInPlace(path, text) : replaceFile(target.path, text);
}

}  // namespace

std::optional<std::string> readFile(const std::string& path, Findings& findings)
{
    std::error_code error;
    if (fs::is_directory(path, error)) {
        findings.add(Code::is_a_directory, inFile(path), "is a directory");
        return std::nullopt;
    }
    errno = 0;
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        findings.add(Code::cannot_open_file, inFile(path), "cannot be opened: " + systemMessage(errno));
        return std::nullopt;
    }
    const auto size = fs::file_size(path, error);  // of a device it is none, and the loop below ends it
    if (!error && size > kLargestFile) {
        findings.add(Code::file_too_large, inFile(path), "is larger than 512 MiB");
        return std::nullopt;
    }
    std::string bytes;
    if (!error) bytes.reserve(static_cast<std::size_t>(size));
    std::vector<char> block(kBlock);
    std::size_t count = 0;
    while ((count = std::fread(block.data(), 1, block.size(), file.get())) > 0) {
        bytes.append(block.data(), count);
        if (bytes.size() > kLargestFile) {
            findings.add(Code::file_too_large, inFile(path), "is larger than 512 MiB");
            return std::nullopt;
        }
    }
    if (std::ferror(file.get()) != 0) {
        findings.add(Code::cannot_read_file, inFile(path), "cannot be read: " + systemMessage(errno));
        return std::nullopt;
    }
    return bytes;
}

std::optional<std::string> toUtf8(std::string bytes, Encoding encoding, const std::string& file,
                                  Findings& findings)
{
    if (startsWith(bytes, "\xef\xbb\xbf")) bytes.erase(0, 3);
    bool isWide = false;
    if (auto text = fromWide(bytes, isWide)) {
        bytes = std::move(*text);
    } else if (isWide) {
        findings.add(Code::not_text, inFile(file), "has the mark of UTF-16 or UTF-32, but is neither");
        return std::nullopt;
    }
    Place place = inFile(file);
    const std::size_t nul = bytes.find('\0');
    if (nul != std::string::npos) {
        place.line = lineAt(bytes, nul);
        findings.add(Code::not_text, place, "holds a NUL character, which no text does");
        return std::nullopt;
    }
    const std::size_t bad = firstBadByte(bytes);
    if (bad == bytes.size()) return bytes;
    place.line = lineAt(bytes, bad);
    if (encoding == Encoding::utf8) {
        findings.add(Code::not_text, place, "holds bytes that are no UTF-8");
        return std::nullopt;
    }
    findings.add(Code::read_as_latin1, place,
                 "holds bytes that are no UTF-8; the file was read as Windows-1252");
    return latin1ToUtf8(bytes);
}

std::optional<std::string> readTextFile(const std::string& path, Encoding encoding, Findings& findings)
{
    auto bytes = readFile(path, findings);
    if (!bytes) return std::nullopt;
    return toUtf8(std::move(*bytes), encoding, path, findings);
}

bool writeFile(const std::string& path, std::string_view text, Findings& findings)
{
    std::error_code error;
    if (fs::is_directory(path, error)) {
        findings.add(Code::is_a_directory, inFile(path), "is a directory");
        return false;
    }
    if (fs::is_block_file(path, error)) {
        findings.add(Code::cannot_write_file, inFile(path), "cannot be written: is a disk", "name a file");
        return false;
    }
    const int failure = writeTarget(path, text);
    if (failure == 0) return true;
    findings.add(Code::cannot_write_file, inFile(path), "cannot be written: " + systemMessage(failure),
                 remedyOfWriting(failure));
    return false;
}

bool isSameFile(const std::string& a, const std::string& b)
{
    std::error_code error;
    return std::filesystem::equivalent(a, b, error) && !error;
}

}  // namespace kit
