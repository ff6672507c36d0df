#include "file_text.h"

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace
{

namespace fs = std::filesystem;
using namespace std::string_literals;
using kit::Code;
using kit::Encoding;
using kit::Findings;

/// A directory of its own for one test, removed at the end.
class FileText : public testing::Test
{
protected:
    FileText()
    {
        static std::atomic<int> count{0};
        m_folder = fs::temp_directory_path() /
                   ("tavell-file-text-" + std::to_string(getpid()) + '-' + std::to_string(count++));
        fs::create_directories(m_folder);
    }
    ~FileText() override
    {
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }

    std::string path(const std::string& name) const { return (m_folder / name).string(); }

    std::string write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }

    static std::string bytesOf(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::size_t fileCount() const
    {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(m_folder), {}));
    }

    fs::path m_folder;
};

Code onlyCode(const Findings& findings)
{
    EXPECT_EQ(findings.list().size(), 1U);
    return findings.isEmpty() ? Code::kCount : findings.list().front().code;
}

TEST_F(FileText, the_bytes_of_a_file_are_read_as_they_are)
{
    const std::string bytes = "a\r\n\0b\xff"s;
    Findings findings;
    EXPECT_EQ(kit::readFile(write("f", bytes), findings), bytes);
    EXPECT_TRUE(findings.isEmpty());
}

TEST_F(FileText, an_absent_file_and_a_directory_are_named)
{
    Findings absent;
    EXPECT_FALSE(kit::readFile(path("none"), absent));
    EXPECT_EQ(onlyCode(absent), Code::cannot_open_file);
    EXPECT_EQ(absent.list().front().place.file, path("none"));
    Findings directory;
    EXPECT_FALSE(kit::readFile(m_folder.string(), directory));
    EXPECT_EQ(onlyCode(directory), Code::is_a_directory);
}

TEST_F(FileText, a_file_above_the_largest_size_is_refused_without_being_read)
{
    const std::string name = write("large", "x");
    fs::resize_file(name, std::uintmax_t{2} * 1024 * 1024 * 1024);  // sparse: takes no room on the disk
    Findings findings;
    EXPECT_FALSE(kit::readFile(name, findings));
    EXPECT_EQ(onlyCode(findings), Code::file_too_large);
}

TEST_F(FileText, a_device_without_an_end_is_refused)
{
    Findings findings;
    EXPECT_FALSE(kit::readFile("/dev/zero", findings));
    EXPECT_EQ(onlyCode(findings), Code::file_too_large);
}

TEST_F(FileText, a_byte_order_mark_is_taken_off_and_wide_text_is_converted)
{
    Findings findings;
    const auto text = [&](const std::string& bytes) {
        return kit::toUtf8(bytes, Encoding::utf8, "f", findings).value_or("nothing");
    };
    EXPECT_EQ(text("\xef\xbb\xbfwater"), "water");
    EXPECT_EQ(text("\xff\xfe"s + "w\0\xe4\0"s), "w\xc3\xa4");                // UTF-16, little end first
    EXPECT_EQ(text("\xfe\xff"s + "\0w\0\xe4"s), "w\xc3\xa4");                // UTF-16, big end first
    EXPECT_EQ(text("\xff\xfe"s + "\x3d\xd8\xa7\xdc"s), "\xf0\x9f\x92\xa7");  // U+1F4A7 by two surrogates
    EXPECT_EQ(text("\xff\xfe\0\0"s + "w\0\0\0"s), "w");                      // UTF-32
    EXPECT_TRUE(findings.isEmpty());
}

TEST_F(FileText, a_half_surrogate_or_an_odd_byte_is_no_text)
{
    for (const std::string& bytes : {"\xff\xfe\x3d\xd8"s, "\xff\xfew"s, "\xff\xfe\x3d\xd8w\0"s}) {
        Findings findings;
        EXPECT_FALSE(kit::toUtf8(bytes, Encoding::utf8OrLatin1, "f", findings));
        EXPECT_EQ(onlyCode(findings), Code::not_text);
    }
}

TEST_F(FileText, nul_characters_are_refused_with_their_line)
{
    Findings findings;
    EXPECT_FALSE(kit::toUtf8("a\nb\0c"s, Encoding::utf8OrLatin1, "f", findings));
    EXPECT_EQ(onlyCode(findings), Code::not_text);
    EXPECT_EQ(findings.list().front().place.line, 2U);
    Findings onlyNuls;
    EXPECT_FALSE(kit::toUtf8(std::string(1000, '\0'), Encoding::utf8, "f", onlyNuls));
    EXPECT_EQ(onlyCode(onlyNuls), Code::not_text);
}

TEST_F(FileText, other_bytes_are_refused_or_read_as_windows_1252)
{
    Findings refused;
    EXPECT_FALSE(kit::toUtf8("ok\nV\xe4lve", Encoding::utf8, "f", refused));
    EXPECT_EQ(onlyCode(refused), Code::not_text);
    EXPECT_EQ(refused.list().front().place.line, 2U);
    Findings read;
    EXPECT_EQ(kit::toUtf8("V\xe4lve \x80", Encoding::utf8OrLatin1, "f", read), "V\xc3\xa4lve \xe2\x82\xac");
    EXPECT_EQ(onlyCode(read), Code::read_as_latin1);
    EXPECT_FALSE(read.hasErrors());
}

TEST_F(FileText, overlong_forms_surrogates_and_characters_beyond_the_last_are_no_utf8)
{
    for (const char* bytes : {"\xc0\x80", "\xc1\xbf", "\xe0\x80\x80", "\xed\xa0\x80", "\xf0\x80\x80\x80",
                              "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\x80", "\xe2\x82"}) {
        Findings findings;
        EXPECT_FALSE(kit::toUtf8(bytes, Encoding::utf8, "f", findings)) << bytes;
    }
}

TEST_F(FileText, a_written_file_replaces_the_old_one_and_leaves_nothing_beside_it)
{
    const std::string name = write("out", "old");
    Findings findings;
    EXPECT_TRUE(kit::writeFile(name, "new text", findings));
    EXPECT_EQ(bytesOf(name), "new text");
    EXPECT_EQ(fileCount(), 1U);
    EXPECT_TRUE(findings.isEmpty());
}

TEST_F(FileText, a_link_stays_a_link)
{
    const std::string name = write("real", "old");
    fs::create_symlink(name, path("link"));
    Findings findings;
    EXPECT_TRUE(kit::writeFile(path("link"), "new", findings));
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_EQ(bytesOf(name), "new");
}

TEST_F(FileText, a_link_to_an_absent_file_and_a_chain_of_links_stay_links)
{
    fs::create_directory(path("folder"));
    fs::create_symlink("folder/real", path("link"));
    fs::create_symlink("link", path("chain"));
    Findings findings;
    EXPECT_TRUE(kit::writeFile(path("chain"), "new", findings));
    EXPECT_TRUE(fs::is_symlink(path("chain")));
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_EQ(bytesOf(path("folder/real")), "new");
    EXPECT_TRUE(findings.isEmpty());
}

TEST_F(FileText, links_in_a_circle_are_said)
{
    fs::create_symlink("b", path("a"));
    fs::create_symlink("a", path("b"));
    Findings findings;
    EXPECT_FALSE(kit::writeFile(path("a"), "new", findings));
    EXPECT_EQ(onlyCode(findings), Code::cannot_write_file);
    EXPECT_EQ(findings.list().front().remedy, "correct the links, which lead in a circle");
}

TEST_F(FileText, a_replaced_file_keeps_its_permissions)
{
    for (const unsigned mode : {0600U, 0664U, 0755U}) {
        const std::string name = write("out", "old");
        fs::permissions(name, static_cast<fs::perms>(mode));
        Findings findings;
        EXPECT_TRUE(kit::writeFile(name, "new", findings));
        EXPECT_EQ(static_cast<unsigned>(fs::status(name).permissions()), mode);
    }
}

TEST_F(FileText, a_new_file_has_the_permissions_that_the_system_gives)
{
    const std::string usual = write("usual", "");
    Findings findings;
    EXPECT_TRUE(kit::writeFile(path("new"), "text", findings));
    EXPECT_EQ(fs::status(path("new")).permissions(), fs::status(usual).permissions());
}

TEST_F(FileText, a_protected_file_is_not_replaced)
{
    if (geteuid() == 0) GTEST_SKIP() << "nothing is protected from the administrator";
    const std::string name = write("out", "old");
    fs::permissions(name, fs::perms::owner_read);
    Findings findings;
    EXPECT_FALSE(kit::writeFile(name, "new", findings));
    EXPECT_EQ(onlyCode(findings), Code::cannot_write_file);
    EXPECT_EQ(bytesOf(name), "old");
    EXPECT_EQ(fileCount(), 1U);
}

TEST_F(FileText, a_pipe_gets_the_text_and_stays_a_pipe)
{
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    const int reader = open(path("pipe").c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    Findings findings;
    EXPECT_TRUE(kit::writeFile(path("pipe"), "through", findings));
    char bytes[16];
    EXPECT_EQ(read(reader, bytes, sizeof bytes), 7);
    close(reader);
    EXPECT_TRUE(fs::is_fifo(path("pipe")));
    EXPECT_EQ(fileCount(), 1U);
}

TEST_F(FileText, a_file_that_the_process_has_open_gets_the_text_at_its_end)
{
    const std::string name = write("log", "first ");
    const int log = open(name.c_str(), O_WRONLY);
    const std::string asOpen = "/dev/fd/" + std::to_string(log);
    if (!fs::exists(asOpen)) GTEST_SKIP() << "no /dev/fd here";
    Findings findings;
    EXPECT_TRUE(kit::writeFile(asOpen, "second", findings));
    close(log);
    EXPECT_EQ(bytesOf(name), "first second");
}

TEST_F(FileText, a_file_in_an_absent_folder_and_a_full_disk_are_said_and_leave_nothing)
{
    Findings absent;
    EXPECT_FALSE(kit::writeFile(path("none/out"), "text", absent));
    EXPECT_EQ(onlyCode(absent), Code::cannot_write_file);
    EXPECT_EQ(absent.list().front().remedy, "create the folder, or correct its name");
    EXPECT_EQ(fileCount(), 0U);
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    Findings full;
    EXPECT_FALSE(kit::writeFile("/dev/full", std::string(100000, 'x'), full));
    EXPECT_EQ(onlyCode(full), Code::cannot_write_file);
    EXPECT_EQ(full.list().front().remedy, "make room, or name a folder on another disk");
}

TEST_F(FileText, the_same_file_is_known_under_two_names)
{
    const std::string name = write("f", "");
    EXPECT_TRUE(kit::isSameFile(name, path("./f")));
    EXPECT_FALSE(kit::isSameFile(name, write("g", "")));
    EXPECT_FALSE(kit::isSameFile(path("none"), path("none")));
}

}  // namespace
