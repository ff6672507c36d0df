#include "json_document.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <limits>
#include <utility>

#include <nlohmann/json.hpp>

namespace kit
{

namespace
{

using nlohmann::json;

constexpr std::size_t kLevelOfItems = 2;  // items stand in a list, which stands in the document
constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

/// Where the parser is in the text.
struct Position {
    std::size_t lineBreaks = 0;  // read so far
    char last = ' ';             // the character read last
};

/// Characters of a text for the parser; counts the lines as they are read.
class CountingIterator
{
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* at, Position* position) : m_at(at), m_position(position) {}

    reference operator*() const { return *m_at; }
    CountingIterator& operator++()
    {
        m_position->last = *m_at;
        if (*m_at == '\n') ++m_position->lineBreaks;
        ++m_at;
        return *this;
    }
    bool operator==(const CountingIterator& other) const { return m_at == other.m_at; }
    bool operator!=(const CountingIterator& other) const { return m_at != other.m_at; }

private:
    const char* m_at;
    Position* m_position;
};

/// Line (from 1) of a text, key, literal or bracket that the parser has just read.
std::size_t lineOfToken(const Position& position)
{
    return position.lineBreaks + 1;
}

/// Line (from 1) of a number that the parser has just read: it has read the character behind it too.
std::size_t lineOfNumber(const Position& position)
{
    return position.lineBreaks + 1 - (position.last == '\n' ? 1 : 0);
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Whether a number token is larger than any number of double precision; one that is so small that it counts
/// as 0 is not.
bool isTooLarge(const char* first, const char* last)
{
    double value = 0.0;
    if (std::from_chars(first, last, value).ec != std::errc::result_out_of_range) return false;
    // Digits before the decimal point, or minus the zeros behind it, give the power of ten together with the
    // exponent.
    constexpr std::int64_t kLargestExponent = std::numeric_limits<std::int64_t>::max() / 4;
    std::int64_t power = 0;
    bool isBehindPoint = false;
    bool isCounting = false;  // from the first digit on that is not 0
    const char* at = *first == '-' ? first + 1 : first;
    for (; at != last && *at != 'e' && *at != 'E'; ++at) {
        if (*at == '.')
            isBehindPoint = true;
        else if (isCounting || *at != '0') {
            isCounting = true;
            if (!isBehindPoint) ++power;
        } else if (isBehindPoint)
            --power;
    }
    if (at == last) return power > 0;
    ++at;
    if (at != last && *at == '+') ++at;
    std::int64_t exponent = 0;
    if (std::from_chars(at, last, exponent).ec == std::errc::result_out_of_range)
        exponent = at != last && *at == '-' ? -kLargestExponent : kLargestExponent;
    return power + std::clamp(exponent, -kLargestExponent, kLargestExponent) > 0;
}

/// A text whose numbers the parser can store, and which of its numbers stand for one that is too large.
struct StorableText {
    std::string text;                   // of the same length
    std::vector<std::size_t> tooLarge;  // counts of the numbers before, ascending
};

/// Puts a number of the same length in the place of each one that is too large. Whether the rest is JSON is
/// for the parser to say.
StorableText storable(const std::string& text)
{
    StorableText result{text, {}};
    std::size_t numbers = 0;
    std::size_t at = 0;
    while (at < text.size()) {
        if (text[at] == '"') {
            for (++at; at < text.size() && text[at] != '"'; ++at) {
                if (text[at] == '\\') ++at;
            }
            ++at;
        } else if (text[at] == '-' || isDigit(text[at])) {
            const std::size_t first = at;
            at = std::min(text.find_first_not_of("0123456789+-.eE", at), text.size());
            if (isTooLarge(text.data() + first, text.data() + at)) {
                result.text.replace(first, at - first, at - first, '0');
                result.text.replace(first, 2, "1.");
                result.tooLarge.push_back(numbers);
            }
            ++numbers;
        } else {
            ++at;
        }
    }
    return result;
}

bool parse(const std::string& text, Position& position, nlohmann::json_sax<json>& sax)
{
    const CountingIterator first(text.data(), &position);
    const CountingIterator last(text.data() + text.size(), &position);
    return json::sax_parse(first, last, &sax);
}

/// Builds a document from the parser's events. Only the innermost open container grows, so pointers to the
/// open ones stay valid.
class DocumentBuilder : public nlohmann::json_sax<json>
{
public:
    /// tooLarge: the counts of the numbers before each one of the text that stands for one that is too large.
    DocumentBuilder(const std::string& text, const std::vector<std::size_t>& tooLarge,
                    const std::string& file, const Position& position, Findings& findings)
        : m_text(text), m_tooLarge(tooLarge), m_file(file), m_position(position), m_findings(findings)
    {
    }

    JsonDocument take()
    {
        finish();
        return std::move(m_document);
    }
    /// Whether the text ended at a number that is too large.
    bool hasMetTooLarge() const { return m_hasMetTooLarge; }

    bool null() override { return addValue(nullptr, lineOfToken(m_position)); }
    bool boolean(bool value) override { return addValue(value, lineOfToken(m_position)); }
    bool number_integer(number_integer_t value) override { return addNumber(value); }
    bool number_unsigned(number_unsigned_t value) override { return addNumber(value); }
    bool number_float(number_float_t value, const string_t&) override { return addNumber(value); }
    bool string(string_t& value) override { return addValue(std::move(value), lineOfToken(m_position)); }
    bool binary(binary_t& value) override { return addValue(std::move(value), lineOfToken(m_position)); }
    bool start_object(std::size_t) override { return open(json::object()); }
    bool start_array(std::size_t) override { return open(json::array()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(string_t& name) override
    {
        if (m_open.back().container->contains(name)) {
            Place place{m_file, lineOfToken(m_position), 0, pointerTo(pointer(), name), ""};
            addOfItem(Code::duplicate_key, std::move(place), "the key " + inQuotes(name) + " appears twice");
        }
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
        const std::string message = plainMessage(error.what());
        m_hasMetTooLarge = message.rfind("number overflow", 0) == 0;
        finish();
        if (!m_hasMetTooLarge)
            m_findings.add(Code::json_syntax, Place{m_file, lineBreaks + 1, column, "", ""}, message);
        return false;
    }

private:
    struct OpenContainer {
        json* container;
        std::string key;                          // of the member being read, objects only
        std::vector<std::uint32_t>* itemLines{};  // of a top-level array's items
    };

    json* append(json value, std::size_t line)
    {
        if (m_open.empty()) {
            m_document.root = std::move(value);
            return &m_document.root;
        }
        OpenContainer& open = m_open.back();
        if (open.itemLines != nullptr) open.itemLines->push_back(static_cast<std::uint32_t>(line));
        if (open.container->is_array()) {
            open.container->push_back(std::move(value));
            return &open.container->back();
        }
        json& member = (*open.container)[open.key];
        member = std::move(value);
        return &member;
    }

    bool addValue(json value, std::size_t line)
    {
        append(std::move(value), line);
        return true;
    }

    /// A number that is too large is infinite in the document, which no number of a text can be.
    template <class Number> bool addNumber(Number value)
    {
        const std::size_t count = m_numbers++;
        if (m_nextTooLarge == m_tooLarge.size() || m_tooLarge[m_nextTooLarge] != count)
            return addValue(value, lineOfNumber(m_position));
        ++m_nextTooLarge;
        Place place{m_file, lineOfNumber(m_position), 0, pointerOfNext(), ""};
        addOfItem(Code::number_too_large, std::move(place), "the number is too large to be stored");
        return addValue(std::numeric_limits<double>::infinity(), lineOfNumber(m_position));
    }

    bool open(json container)
    {
        const std::size_t line = lineOfToken(m_position);
        if (m_open.size() >= kDeepestNesting) {
            finish();
            m_findings.add(Code::nested_too_deep, Place{m_file, line, 0, "", ""},
                           "objects and arrays are nested more than " + std::to_string(kDeepestNesting) +
                               " deep");
            return false;
        }
        const bool isTopLevelArray = m_open.size() == 1 && container.is_array();
        std::vector<std::uint32_t>* itemLines = nullptr;
        if (isTopLevelArray && m_open.back().container->is_object()) {
            itemLines = &m_document.itemLines[m_open.back().key];
            itemLines->clear();
        }
        json* const made = append(std::move(container), line);
        m_open.push_back({made, {}, itemLines});
        return true;
    }

    bool close()
    {
        if (m_open.size() <= kLevelOfItems + 1) finish();
        m_open.pop_back();
        return true;
    }

    /// Keeps a finding until the name of its item is known; no more of them than a list takes of one code.
    void addOfItem(Code code, Place place, std::string message)
    {
        if (m_ofItem.list().size() >= Findings::kMostOfOneCode) finish();
        m_ofItem.add(code, std::move(place), std::move(message));
    }

    /// Hands on what was found in an item, with its name.
    void finish()
    {
        if (m_ofItem.isEmpty()) return;
        const std::string name = nameOfItem();
        for (Finding finding : m_ofItem.list()) {
            finding.place.object = name;
            m_findings.add(std::move(finding));
        }
        m_ofItem.clear();
    }

    /// JSON pointer of the innermost open container.
    std::string pointer() const
    {
        std::string path;
        for (std::size_t i = 0; i + 1 < m_open.size(); ++i) {
            const OpenContainer& outer = m_open[i];
            const bool isArray = outer.container->is_array();
            path = pointerTo(path, isArray ? std::to_string(outer.container->size() - 1) : outer.key);
        }
        return path;
    }

    /// JSON pointer of the value that is being read.
    std::string pointerOfNext() const
    {
        if (m_open.empty()) return "";
        const OpenContainer& inner = m_open.back();
        const bool isArray = inner.container->is_array();
        return pointerTo(pointer(), isArray ? std::to_string(inner.container->size()) : inner.key);
    }

    /// What findings call the node or element that is being read, "node tap 3"; "" when nothing has a name.
    std::string nameOfItem() const
    {
        if (m_open.size() <= kLevelOfItems || !m_open[1].container->is_array()) return "";
        const std::string& list = m_open.front().key;
        const json& item = *m_open[kLevelOfItems].container;
        if ((list != "nodes" && list != "elements") || !item.is_object()) return "";
        const auto name = item.find("name");
        if (name == item.end() || !name->is_string()) return "";
        return (list == "nodes" ? "node " : "element ") + name->get_ref<const std::string&>();
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
        return text;
    }

    const std::string& m_text;
    const std::vector<std::size_t>& m_tooLarge;
    const std::string& m_file;
    const Position& m_position;
    Findings& m_findings;
    JsonDocument m_document;
    std::vector<OpenContainer> m_open;
    Findings m_ofItem;               // in the item that is being read, until its name is known
    std::size_t m_numbers = 0;       // read so far
    std::size_t m_nextTooLarge = 0;  // position in m_tooLarge
    bool m_hasMetTooLarge = false;
};

/// Wanted places of a document as a tree of their keys. Step 0 is the whole document.
class PointerTree
{
public:
    /// The line of the innermost step of a pointer's path that has one.
    std::size_t lineOf(const std::string& pointer) const
    {
        std::size_t step = 0;
        std::size_t line = m_steps[0].line;
        for (const std::string& key : keysOf(pointer)) {
            step = next(step, key);
            if (step == kNowhere || m_steps[step].line == 0) break;
            line = m_steps[step].line;
        }
        return line;
    }

    void add(const std::string& pointer)
    {
        std::size_t step = 0;
        for (const std::string& key : keysOf(pointer)) {
            const auto [found, isNew] = m_steps[step].next.emplace(key, m_steps.size());
            step = found->second;
            if (isNew) m_steps.emplace_back();
        }
    }

    /// The step behind a key; kNowhere when nothing there is wanted.
    std::size_t next(std::size_t step, const std::string& key) const
    {
        if (step == kNowhere) return kNowhere;
        const auto found = m_steps[step].next.find(key);
        return found == m_steps[step].next.end() ? kNowhere : found->second;
    }

    void setLine(std::size_t step, std::size_t line)
    {
        if (step != kNowhere) m_steps[step].line = line;
    }

private:
    struct Step {
        std::unordered_map<std::string, std::size_t> next;
        std::size_t line = 0;
    };

    static std::vector<std::string> keysOf(const std::string& pointer)
    {
        std::vector<std::string> keys;
        if (pointer.empty() || pointer.front() != '/') return keys;
        for (json::json_pointer rest(pointer); !rest.empty(); rest.pop_back())
            keys.push_back(rest.back());
        std::reverse(keys.begin(), keys.end());
        return keys;
    }

    std::vector<Step> m_steps{1};
};

/// Walks a document once more and notes the lines of the wanted places.
class LineFinder : public nlohmann::json_sax<json>
{
public:
    LineFinder(PointerTree& wanted, const Position& position) : m_wanted(wanted), m_position(position) {}

    bool null() override { return value(lineOfToken(m_position)); }
    bool boolean(bool) override { return value(lineOfToken(m_position)); }
    bool number_integer(number_integer_t) override { return value(lineOfNumber(m_position)); }
    bool number_unsigned(number_unsigned_t) override { return value(lineOfNumber(m_position)); }
    bool number_float(number_float_t, const string_t&) override { return value(lineOfNumber(m_position)); }
    bool string(string_t&) override { return value(lineOfToken(m_position)); }
    bool binary(binary_t&) override { return value(lineOfToken(m_position)); }
    bool start_object(std::size_t) override { return open(false); }
    bool start_array(std::size_t) override { return open(true); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool key(string_t& name) override
    {
        m_open.back().member = m_wanted.next(m_open.back().step, name);
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const json::exception&) override { return false; }

private:
    struct OpenContainer {
        std::size_t step;    // of the container
        std::size_t member;  // step of the value that follows, objects only
        bool isArray;
        std::size_t count;  // of items so far
    };

    /// The step of the value that is being read.
    std::size_t enter()
    {
        if (m_open.empty()) return 0;
        OpenContainer& outer = m_open.back();
        if (!outer.isArray) return outer.member;
        const std::size_t item = outer.count++;
        return outer.step == kNowhere ? kNowhere : m_wanted.next(outer.step, std::to_string(item));
    }

    bool value(std::size_t line)
    {
        m_wanted.setLine(enter(), line);
        return true;
    }

    bool open(bool isArray)
    {
        const std::size_t step = enter();
        m_wanted.setLine(step, lineOfToken(m_position));
        m_open.push_back({step, kNowhere, isArray, 0});
        return true;
    }

    bool close()
    {
        m_open.pop_back();
        return true;
    }

    PointerTree& m_wanted;
    const Position& m_position;
    std::vector<OpenContainer> m_open;
};

/// Counts the findings that were made but not kept as findings of the others too.
void countNotKept(const Findings& found, const std::vector<Finding>& examples, Findings& findings)
{
    for (const Finding& example : examples) {
        for (std::size_t i = found.notKept(example.code); i > 0; --i)
            findings.add(example);
    }
}

}  // namespace

std::optional<JsonDocument> parseJson(const std::string& text, const std::string& file, Findings& findings)
{
    const std::vector<std::size_t> none;
    {
        Findings found;
        Position position;
        DocumentBuilder builder(text, none, file, position, found);
        std::optional<JsonDocument> document;
        if (parse(text, position, builder)) document = builder.take();
        if (!builder.hasMetTooLarge()) {
            findings.append(found);
            return document;
        }
    }
    // The parser ends at a number that is too large: all of them are found, and the rest is read without them.
    const StorableText mended = storable(text);
    Position position;
    DocumentBuilder builder(mended.text, mended.tooLarge, file, position, findings);
    if (!parse(mended.text, position, builder)) return std::nullopt;
    return builder.take();
}

void appendWithLines(const std::string& text, const Findings& found, Findings& findings)
{
    PointerTree wanted;
    for (const Finding& finding : found.list())
        wanted.add(finding.place.pointer);
    Position position;
    LineFinder finder(wanted, position);
    const bool isStorable =
        std::none_of(found.list().begin(), found.list().end(),
                     [](const Finding& finding) { return finding.code == Code::number_too_large; });
    if (!found.isEmpty()) parse(isStorable ? text : storable(text).text, position, finder);

    std::vector<Finding> lastOfCode;
    std::vector<bool> isSeen(static_cast<std::size_t>(Code::kCount), false);
    for (auto i = found.list().rbegin(); i != found.list().rend(); ++i) {
        const auto code = static_cast<std::size_t>(i->code);
        if (!isSeen[code]) lastOfCode.push_back(*i);
        isSeen[code] = true;
    }
    std::vector<Finding> placed = found.list();
    for (Finding& finding : placed) {
        if (finding.place.line == 0) finding.place.line = wanted.lineOf(finding.place.pointer);
    }
    std::stable_sort(placed.begin(), placed.end(),
                     [](const Finding& a, const Finding& b) { return a.place.line < b.place.line; });
    for (Finding& finding : placed)
        findings.add(std::move(finding));
    countNotKept(found, lastOfCode, findings);
}

std::string pointerTo(const std::string& pointer, std::string_view key)
{
    std::string result = pointer + '/';
    for (const char c : key) {
        if (c == '~')
            result += "~0";
        else if (c == '/')
            result += "~1";
        else
            result += c;
    }
    return result;
}

}  // namespace kit
