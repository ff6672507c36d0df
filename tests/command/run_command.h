// run_command.h: runs the built command the way a shell does and keeps what it says.
#ifndef TAVELL_TESTS_RUN_COMMAND_H
#define TAVELL_TESTS_RUN_COMMAND_H

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace command_test
{

struct Outcome {
    int status = -1;  // exit status; -1 when the program was ended by a signal
    std::string output;
    std::string errors;
};

inline std::string textOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A directory of its own for one test, removed at the end.
class TemporaryDirectory
{
public:
    TemporaryDirectory()
    {
        static std::atomic<int> count{0};
        m_path = std::filesystem::temp_directory_path() /
                 ("tavell-command-" + std::to_string(getpid()) + '-' + std::to_string(count++));
        std::filesystem::create_directories(m_path);
    }
    ~TemporaryDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return m_path; }

    /// Writes a file and returns its path.
    std::string write(const std::string& name, const std::string& text) const
    {
        std::ofstream(m_path / name, std::ios::binary) << text;
        return (m_path / name).string();
    }

private:
    std::filesystem::path m_path;
};

inline std::string shellQuoted(const std::string& text)
{
    std::string result = "'";
    for (const char c : text) {
        if (c == '\'')
            result += "'\\''";
        else
            result += c;
    }
    return result + '\'';
}

/// Runs `tavell` with the arguments; environment is put before it, as in "LC_ALL=C ".
inline Outcome runCommand(const std::vector<std::string>& arguments, const std::string& environment = "")
{
    const TemporaryDirectory directory;
    const std::filesystem::path outputPath = directory.path() / "output";
    const std::filesystem::path errorPath = directory.path() / "errors";
    std::string line = environment + shellQuoted(TAVELL_COMMAND);
    for (const std::string& argument : arguments)
        line += ' ' + shellQuoted(argument);
    line += " >" + shellQuoted(outputPath.string()) + " 2>" + shellQuoted(errorPath.string());
    const int raw = std::system(line.c_str());
    Outcome outcome;
    outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    outcome.output = textOf(outputPath);
    outcome.errors = textOf(errorPath);
    return outcome;
}

/// Solves a network given as text, in a file named net.json.
inline Outcome solveText(const std::string& text, const std::string& environment = "")
{
    const TemporaryDirectory directory;
    return runCommand({"solve", directory.write("net.json", text)}, environment);
}

inline std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

}  // namespace command_test

#endif
