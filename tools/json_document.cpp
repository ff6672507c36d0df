#include "json_document.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

namespace
{

using nlohmann::json;

constexpr std::size_t kLargestFile =
    std::size_t{512} * 1024 * 1024;  // [byte], also ends devices without an end

constexpr std::size_t kShownLength = 60;  // [byte] of a number in a message

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string systemMessage(int error)
{
    return std::generic_category().message(error);
}

/// Builds a document from the parser's events. Only the innermost open container grows, so pointers to the
/// open ones stay valid.
class DocumentBuilder : public nlohmann::json_sax<json>
{
public:
    DocumentBuilder(const std::string& text, Problems& problems) : m_text(text), m_problems(problems) {}

    json take() { return std::move(m_root); }

    bool null() override { return addValue(nullptr); }
    bool boolean(bool value) override { return addValue(value); }
    bool number_integer(number_integer_t value) override { return addValue(value); }
    bool number_unsigned(number_unsigned_t value) override { return addValue(value); }
    bool number_float(number_float_t value, const string_t&) override { return addValue(value); }
    bool string(string_t& value) override { return addValue(std::move(value)); }
    bool binary(binary_t& value) override { return addValue(std::move(value)); }
    bool start_object(std::size_t) override { return open(json::object()); }
    bool start_array(std::size_t) override { return open(json::array()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(string_t& name) override
    {
        if (m_open.back().container->contains(name))
            m_problems.add(pointer(), "the key " + inQuotes(name) + " appears twice; keep one");
        m_open.back().key = std::move(name);
        return true;
    }

    bool parse_error(std::size_t position, const std::string&, const json::exception& error) override
    {
        const std::size_t end = std::min(position, m_text.size());
        const auto first = m_text.begin();
        const auto last = first + static_cast<std::ptrdiff_t>(end > 0 ? end - 1 : 0);
        const auto lineBreaks = static_cast<std::size_t>(std::count(first, last, '\n'));
        const std::size_t lineStart = lineBreaks == 0 ? 0 : m_text.rfind('\n', end - 2) + 1;
        const std::size_t column = end > lineStart ? end - lineStart : 1;
        m_problems.addAt(lineBreaks + 1, column, plainMessage(error.what()));
        return false;
    }

private:
    struct OpenContainer {
        json* container;
        std::string key;  // of the member being read, objects only
    };

    json* append(json value)
    {
        if (m_open.empty()) {
            m_root = std::move(value);
            return &m_root;
        }
        json& container = *m_open.back().container;
        if (container.is_array()) {
            container.push_back(std::move(value));
            return &container.back();
        }
        json& member = container[m_open.back().key];
        member = std::move(value);
        return &member;
    }

    bool addValue(json value)
    {
        append(std::move(value));
        return true;
    }

    bool open(json container)
    {
        m_open.push_back({append(std::move(container)), {}});
        return true;
    }

    bool close()
    {
        m_open.pop_back();
        return true;
    }

    /// JSON pointer of the innermost open container.
    std::string pointer() const
    {
        json::json_pointer path;
        for (std::size_t i = 0; i + 1 < m_open.size(); ++i) {
            const OpenContainer& outer = m_open[i];
            if (outer.container->is_array())
                path.push_back(std::to_string(outer.container->size() - 1));
            else
                path.push_back(outer.key);
        }
        return path.to_string();
    }

    /// The parser's message without its own number and position and without what it read last, which may be
    /// long.
    static std::string plainMessage(const std::string& message)
    {
        std::string text = message.substr(std::min(message.find("] ") + 2, message.size()));
        const bool hasPosition = text.rfind("parse error at ", 0) == 0;
        if (hasPosition) text.erase(0, text.find(": ") + 2);
        const std::size_t lastRead = text.find("; last read: '");
        if (lastRead != std::string::npos) {
            const std::size_t rest = text.rfind("'; expected ");
            text.erase(lastRead, rest == std::string::npos ? rest : rest + 1 - lastRead);
        }
        if (text.rfind("number overflow", 0) == 0)
            return text.substr(0, kShownLength) + "; a number has to be below 1.8e308";
        return text;
    }

    const std::string& m_text;
    Problems& m_problems;
    json m_root;
    std::vector<OpenContainer> m_open;
};

}  // namespace

std::optional<std::string> readFileText(const std::string& path, Problems& problems)
{
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        problems.addToFile("is a directory; name a network file");
        return std::nullopt;
    }
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        problems.addToFile("cannot be opened: " + systemMessage(errno));
        return std::nullopt;
    }
    std::string text;
    std::vector<char> block(std::size_t{64} * 1024);
    std::size_t count = 0;
    while ((count = std::fread(block.data(), 1, block.size(), file.get())) > 0) {
        text.append(block.data(), count);
        if (text.size() > kLargestFile) {
            problems.addToFile("is larger than 512 MiB; split the network");
            return std::nullopt;
        }
    }
    if (std::ferror(file.get()) != 0) {
        problems.addToFile("cannot be read: " + systemMessage(errno));
        return std::nullopt;
    }
    return text;
}

std::optional<json> parseJson(const std::string& text, Problems& problems)
{
    DocumentBuilder builder(text, problems);
    if (!json::sax_parse(text, &builder)) return std::nullopt;
    return builder.take();
}
