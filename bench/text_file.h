// text_file.h: a file to print into.
#ifndef TAVELL_BENCH_TEXT_FILE_H
#define TAVELL_BENCH_TEXT_FILE_H

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

namespace bench
{

/// Throws when the file cannot be made or, by close, when it was not written whole.
class TextFile
{
public:
    explicit TextFile(const std::string& path) : m_path(path), m_file(std::fopen(path.c_str(), "w"))
    {
        if (m_file == nullptr) throw std::runtime_error(path + " cannot be written");
    }

    std::FILE* get() const { return m_file.get(); }

    void close()
    {
        const bool isWritten = std::ferror(m_file.get()) == 0;
        if (std::fclose(m_file.release()) != 0 || !isWritten)
            throw std::runtime_error(m_path + " cannot be written");
    }

private:
    struct Close {
        void operator()(std::FILE* file) const { (void)std::fclose(file); }
    };

    std::string m_path;
    std::unique_ptr<std::FILE, Close> m_file;
};

}  // namespace bench

#endif
