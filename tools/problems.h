// problems.h: what is wrong with a file, one line per problem.
#ifndef TAVELL_TOOLS_PROBLEMS_H
#define TAVELL_TOOLS_PROBLEMS_H

#include <string>
#include <string_view>
#include <vector>

/// A text with its control characters written as \xNN, so that it stays on one line of a terminal.
std::string oneLine(std::string_view text);

/// A text between double quotes, made for one line.
std::string inQuotes(std::string_view text);

/// The problems of one file, in the order they were found.
class Problems
{
public:
    explicit Problems(const std::string& file);

    /// Adds "file: text".
    void addToFile(std::string_view text);
    /// Adds "file: place: text"; place is a JSON pointer, "" for the whole document.
    void add(std::string_view place, std::string_view text);
    /// Adds "file:line:column: text"; both count from 1.
    void addAt(std::size_t line, std::size_t column, std::string_view text);

    bool isEmpty() const { return m_lines.empty(); }
    /// One line per problem, without line ends.
    const std::vector<std::string>& lines() const { return m_lines; }

private:
    std::string m_file;
    std::vector<std::string> m_lines;
};

#endif
