// token_mutator.h: changes of an input that keep the form of its text: a number or a word becomes another one, a
// line goes, comes twice or changes places. Most changes of single bytes end at the parser; these get behind it.
// Each target includes it once.
#ifndef TAVELL_TESTS_FUZZ_TOKEN_MUTATOR_H
#define TAVELL_TESTS_FUZZ_TOKEN_MUTATOR_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace fuzz
{

constexpr std::array<const char*, 22> kNumbers{
    "0",     "-0.0", "1",     "-1",     "2",      "1e-3",   "1e3",   "-1e3",   "1e6", "1e-9",   "1e9",
    "1e-30", "1e30", "1e-99", "1e-160", "-1e160", "5e-324", "1e308", "-1e308", "0.1", "298.15", "1e-38"};

class TokenMutator
{
public:
    TokenMutator(std::string text, unsigned seed) : m_text(std::move(text)), m_random(seed) {}

    std::string mutated()
    {
        const std::size_t change = below(8);
        if (change < 4)
            replaceNumber();
        else if (change < 6)
            replaceWord();
        else
            moveLine();
        return std::move(m_text);
    }

private:
    struct Span {
        std::size_t start, size;
    };

    std::size_t below(std::size_t limit) { return limit == 0 ? 0 : m_random() % limit; }

    /// The longest parts of the text that consist of letters of one kind.
    template <class IsPart> std::vector<Span> spansOf(IsPart isPart) const
    {
        std::vector<Span> spans;
        for (std::size_t at = 0; at < m_text.size();) {
            std::size_t end = at;
            while (end < m_text.size() && isPart(m_text[end]))
                ++end;
            if (end > at) spans.push_back({at, end - at});
            at = end + 1;
        }
        return spans;
    }

    static bool isDigit(char c) { return c >= '0' && c <= '9'; }
    static bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

    void replaceNumber()
    {
        auto spans =
            spansOf([](char c) { return isDigit(c) || c == '.' || c == '-' || c == '+' || c == 'e'; });
        spans.erase(std::remove_if(spans.begin(), spans.end(),
                                   [this](Span span) {
                                       const char c = m_text[span.start];
                                       return !isDigit(c) && (c != '-' || span.size == 1);
                                   }),
                    spans.end());
        if (spans.empty()) return;
        const Span span = spans[below(spans.size())];
        const Span other = spans[below(spans.size())];
        const std::string number =
            below(3) == 0 ? m_text.substr(other.start, other.size) : kNumbers[below(kNumbers.size())];
        m_text.replace(span.start, span.size, number);
    }

    void replaceWord()
    {
        const auto spans = spansOf([](char c) { return isDigit(c) || isLetter(c); });
        if (spans.empty()) return;
        const Span span = spans[below(spans.size())];
        const Span other = spans[below(spans.size())];
        m_text.replace(span.start, span.size, m_text.substr(other.start, other.size));
    }

    void moveLine()
    {
        const auto lines = spansOf([](char c) { return c != '\n'; });
        if (lines.empty()) return;
        const Span line = lines[below(lines.size())];
        const Span other = lines[below(lines.size())];
        const std::string copy = m_text.substr(line.start, line.size) + '\n';
        switch (below(3)) {
        case 0:
            m_text.insert(other.start, copy);
            break;
        case 1:
            m_text.erase(line.start, line.size + 1);
            break;
        default:
            m_text.replace(other.start, other.size + 1, copy);
        }
    }

    std::string m_text;
    std::mt19937 m_random;
};

}  // namespace fuzz

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed)
{
    if (seed % 2 == 0) return LLVMFuzzerMutate(data, size, maxSize);
    const std::string text =
        fuzz::TokenMutator(std::string(reinterpret_cast<const char*>(data), size), seed).mutated();
    if (text.empty() || text.size() > maxSize) return LLVMFuzzerMutate(data, size, maxSize);
    std::copy(text.begin(), text.end(), reinterpret_cast<char*>(data));
    return text.size();
}

#endif
