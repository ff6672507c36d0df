// scratch_directory.h: a place for the files that a solve leaves behind, and the switch that makes it write
// them.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace GoldenTest
{

/// The whole content of a file; empty when it cannot be read.
inline std::string readFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

/// Lines of a text without their line breaks. What follows the last break is a line when it is not empty.
inline std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::size_t from = 0;
    while (from < text.size()) {
        const std::size_t end = text.find('\n', from);
        lines.push_back(text.substr(from, end - from));
        if (end == std::string::npos) break;
        from = end + 1;
    }
    return lines;
}

/// An empty directory that is the working directory while the object lives and is removed with it.
class ScratchDirectory
{
public:
    ScratchDirectory() : m_before(std::filesystem::current_path())
    {
        std::random_device random;
        do
            m_path = std::filesystem::temp_directory_path() / ("tavell-" + std::to_string(random()));
        while (!std::filesystem::create_directory(m_path));
        std::filesystem::current_path(m_path);
    }
    ~ScratchDirectory()
    {
        std::error_code ignored;
        std::filesystem::current_path(m_before, ignored);
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    std::string read(const std::string& name) const { return readFile(m_path / name); }
    std::vector<std::string> lines(const std::string& name) const { return linesOf(read(name)); }
    /// Names of what is in it.
    std::set<std::string> names() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_path))
            names.insert(entry.path().filename().string());
        return names;
    }

private:
    std::filesystem::path m_before;
    std::filesystem::path m_path;
};

/// TAVELL_DEBUG_FILE with a value, or unset for null, while the object lives.
class DebugSetting
{
public:
    explicit DebugSetting(const char* value) : m_wasSet(std::getenv(kName) != nullptr)
    {
        if (m_wasSet) m_before = std::getenv(kName);
        set(value);
    }
    ~DebugSetting() { set(m_wasSet ? m_before.c_str() : nullptr); }
    DebugSetting(const DebugSetting&) = delete;
    DebugSetting& operator=(const DebugSetting&) = delete;

private:
    static constexpr const char* kName = "TAVELL_DEBUG_FILE";

    static void set(const char* value)
    {
        if (value != nullptr)
            setenv(kName, value, 1);
        else
            unsetenv(kName);
    }

    bool m_wasSet;
    std::string m_before;
};

}  // namespace GoldenTest
