// scratch_folder.h: an empty working directory for one test.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include <unistd.h>

namespace faults
{

/// A new folder, the working directory while it lives; removed with all that is in it.
class ScratchFolder
{
public:
    ScratchFolder() : m_before(std::filesystem::current_path())
    {
        std::string name = (std::filesystem::temp_directory_path() / "tavell_faults_XXXXXX").string();
        if (mkdtemp(name.data()) != nullptr) m_path = name;
        std::filesystem::current_path(m_path);
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::current_path(m_before, ignored);
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }

    /// Names of all that is in it, in alphabetical order.
    std::vector<std::string> names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_path))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path m_before, m_path;
};

}  // namespace faults
