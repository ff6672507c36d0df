// number_text_test.cpp: numbers to and from text.
#include "model/number_text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <stdexcept>

#include "decimal_comma/c_numbers.h"
#include "model_fixture.h"

using namespace Velcor::Tavell;

namespace
{

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// A double of random bits: every magnitude, subnormals, infinities and not-a-numbers included.
double randomBits(std::mt19937_64& random)
{
    const std::uint64_t bits = random();
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

std::string streamed(double value, int digits)
{
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.precision(digits);
    stream << value;
    return stream.str();
}

/// What a parse comes to, as text: the value with its sign, or the kind of failure.
std::string outcome(const std::string& text)
{
    const ParsedNumber parsed = parseNumber(text);
    if (parsed.readability == Readability::kInvalid) return "invalid";
    if (parsed.readability == Readability::kOutOfRange) return "out of range";
    return formatNumber(parsed.value, 20);
}

/// The same by the C library, with its idea of underflow narrowed to numbers that vanish.
std::string outcomeByStrtod(const std::string& text)
{
    const DecimalComma::CNumbers numbers;
    char* end = nullptr;
    errno = 0;
    const double value = std::strtod(text.c_str(), &end);
    if (end == text.c_str()) return "invalid";
    if (errno == ERANGE && (value == 0.0 || std::isinf(value))) return "out of range";
    return formatNumber(value, 20);
}

/// Sets locales for C and C++ that write a decimal comma, and restores the old ones.
class CommaLocale
{
public:
    CommaLocale()
        : m_cpp(std::locale::global(std::locale(std::locale::classic(), new ModelTest::CommaPunctuation)))
    {
        m_c = std::setlocale(LC_ALL, nullptr);
        for (const char* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8"})
            if (std::setlocale(LC_ALL, name) != nullptr) break;
    }
    ~CommaLocale()
    {
        std::locale::global(m_cpp);
        std::setlocale(LC_ALL, m_c.c_str());
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    std::locale m_cpp;
    std::string m_c;
};

}  // namespace

// The digits are those of the exact binary value of 0.1, which begins 0.1000000000000000055511151231.
TEST(NumberText, twenty_digits_are_written_in_general_notation)
{
    EXPECT_EQ(formatNumber(0.1, 20), "0.10000000000000000555");
    EXPECT_EQ(formatNumber(1.0, 20), "1");
    EXPECT_EQ(formatNumber(-2.5, 20), "-2.5");
    EXPECT_EQ(formatNumber(1e300, 20), "1.0000000000000000525e+300");
    EXPECT_EQ(formatNumber(1e-5, 20), "1.0000000000000000818e-05");
    EXPECT_EQ(formatNumber(0.0, 20), "0");
    EXPECT_EQ(formatNumber(-0.0, 20), "-0");
    EXPECT_EQ(formatNumber(kInfinity, 20), "inf");
    EXPECT_EQ(formatNumber(-kInfinity, 20), "-inf");
    EXPECT_EQ(formatNumber(kNan, 20), "nan");
    EXPECT_EQ(formatNumber(-kNan, 20), "-nan");
}

TEST(NumberText, text_is_that_of_an_output_stream)
{
    std::mt19937_64 random(1);
    for (int i = 0; i < 20000; ++i) {
        const double value = randomBits(random);
        ASSERT_EQ(formatNumber(value, 20), streamed(value, 20));
        ASSERT_EQ(formatNumber(value, 6), streamed(value, 6));
    }
}

TEST(NumberText, twenty_digits_bring_every_number_back)
{
    std::mt19937_64 random(2);
    for (int i = 0; i < 20000; ++i) {
        const double value = randomBits(random);
        ASSERT_TRUE(haveSameText(readNumber(formatNumber(value, 20)), value)) << formatNumber(value, 20);
    }
}

TEST(NumberText, leading_number_is_read_and_the_rest_ignored)
{
    EXPECT_EQ(readNumber("12.5 m"), 12.5);
    EXPECT_EQ(readNumber("1e3e5"), 1000.0);
    EXPECT_EQ(readNumber("1,5"), 1.0);
    EXPECT_EQ(readNumber("7-3"), 7.0);
    EXPECT_EQ(readNumber("1e+"), 1.0);
}

TEST(NumberText, leading_blanks_and_a_sign_are_read)
{
    EXPECT_EQ(readNumber(" \t\n\v\f\r+4"), 4.0);
    EXPECT_EQ(readNumber("-4"), -4.0);
    EXPECT_TRUE(std::signbit(readNumber("-0")));
    EXPECT_EQ(parseNumber("+-4").readability, Readability::kInvalid);
    EXPECT_EQ(parseNumber("--4").readability, Readability::kInvalid);
    EXPECT_EQ(parseNumber("- 4").readability, Readability::kInvalid);
}

TEST(NumberText, hexadecimal_numbers_are_read)
{
    EXPECT_EQ(readNumber("0x1F"), 31.0);
    EXPECT_EQ(readNumber("-0X1.8p1"), -3.0);
    EXPECT_EQ(readNumber("0x.8"), 0.5);
    EXPECT_EQ(readNumber("0x"), 0.0);
    EXPECT_EQ(readNumber("0xg"), 0.0);
    EXPECT_EQ(readNumber("0x-1"), 0.0);
    EXPECT_EQ(readNumber("0x."), 0.0);
}

TEST(NumberText, infinity_and_not_a_number_are_read_in_any_letter_case)
{
    EXPECT_EQ(readNumber("inf"), kInfinity);
    EXPECT_EQ(readNumber("-Infinity"), -kInfinity);
    EXPECT_TRUE(std::isnan(readNumber("NaN")));
    EXPECT_TRUE(std::signbit(readNumber("-nan(123)")));
}

TEST(NumberText, text_without_a_number_is_invalid)
{
    for (const char* text : {"", " ", "abc", "-", "+", ".", "e5", ",1", "in", "x10"})
        EXPECT_EQ(parseNumber(text).readability, Readability::kInvalid) << text;
}

TEST(NumberText, overflow_and_vanishing_numbers_are_out_of_range)
{
    for (const char* text : {"1e309", "-1e309", "1e-400", "-2e-324", "1e999999999999999999999", "0x1p1024",
                             "0x1p-1075", "1e-999999999999999999999"})
        EXPECT_EQ(parseNumber(text).readability, Readability::kOutOfRange) << text;
}

TEST(NumberText, subnormal_numbers_and_zeros_are_in_range)
{
    EXPECT_EQ(readNumber("4.9e-324"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(readNumber("1e-310"), 1e-310);
    EXPECT_EQ(readNumber("0x1p-1074"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(readNumber("0e999999999999999999999"), 0.0);
    EXPECT_EQ(readNumber("0.000e-999"), 0.0);
    EXPECT_EQ(readNumber("1.7976931348623157e308"), std::numeric_limits<double>::max());
}

TEST(NumberText, random_texts_read_as_the_C_library_reads_them)
{
    const std::string alphabet = "0123456789.eE+-xXpPaAfF niNI(),\t";
    std::mt19937 random(3);
    std::uniform_int_distribution<std::size_t> letter(0, alphabet.size() - 1);
    std::uniform_int_distribution<int> length(0, 12);
    for (int i = 0; i < 200000; ++i) {
        std::string text = i % 3 == 0 ? "0x" : "";
        for (int n = length(random); n > 0; --n)
            text += alphabet[letter(random)];
        ASSERT_EQ(outcome(text), outcomeByStrtod(text)) << "'" << text << "'";
    }
}

TEST(NumberText, unreadable_text_throws_with_the_two_fixed_messages)
{
    try {
        readNumber("abc");
        FAIL() << "nothing thrown";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "invalid stod argument");
    }
    try {
        readNumber("1e999");
        FAIL() << "nothing thrown";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "stod argument out of range");
    }
}

TEST(NumberText, a_decimal_comma_of_the_host_changes_nothing)
{
    const CommaLocale comma;
    std::ostringstream stream;
    stream << 1234.5;
    ASSERT_EQ(stream.str(), "1.234,5") << "the host's locale is not in force";
    EXPECT_EQ(formatNumber(1234.5, 20), "1234.5");
    EXPECT_EQ(readNumber("1234.5"), 1234.5);
    EXPECT_EQ(readNumber("1,5"), 1.0);
}

TEST(NumberText, truncation_goes_toward_zero_and_stops_at_the_range_of_int)
{
    EXPECT_EQ(truncateToInt(2.9), 2);
    EXPECT_EQ(truncateToInt(-2.9), -2);
    EXPECT_EQ(truncateToInt(2147483646.5), 2147483646);
    EXPECT_EQ(truncateToInt(2147483647.0), 2147483647);
    EXPECT_EQ(truncateToInt(1e300), 2147483647);
    EXPECT_EQ(truncateToInt(kInfinity), 2147483647);
    EXPECT_EQ(truncateToInt(-2147483648.9), -2147483647 - 1);
    EXPECT_EQ(truncateToInt(-kInfinity), -2147483647 - 1);
    EXPECT_EQ(truncateToInt(kNan), 0);
}

TEST(NumberText, numbers_have_the_same_text_when_their_bits_are_equal)
{
    EXPECT_TRUE(haveSameText(0.1, 0.1));
    EXPECT_FALSE(haveSameText(0.1, std::nextafter(0.1, 1.0)));
    EXPECT_FALSE(haveSameText(0.0, -0.0));
    EXPECT_TRUE(haveSameText(kNan, std::nan("5")));
    EXPECT_FALSE(haveSameText(kNan, -kNan));
    EXPECT_FALSE(haveSameText(kNan, 1.0));
}
