// text_format_test.cpp: the formatter against the C library's in the "C" locale, which a test program starts in.
#include "lcn/text_format.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <vector>

#include "decimal_comma/c_numbers.h"
#include "golden/scratch_directory.h"

namespace
{

using lcn::formatted;

template <typename Value> std::string libraryText(const std::string& form, Value value)
{
    const DecimalComma::CNumbers numbers;
    std::array<char, 1024> text{};
    const int length = std::snprintf(text.data(), text.size(), form.c_str(), value);
    return std::string(text.data(), static_cast<std::size_t>(length));
}

/// Values where formatting is difficult: halves that round to even, ends of the range, values without digits.
std::vector<double> difficultReals()
{
    const double huge = std::numeric_limits<double>::max();
    const double tiny = std::numeric_limits<double>::denorm_min();
    const double infinite = std::numeric_limits<double>::infinity();
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    std::vector<double> values = {0.0,   0.5,   1.5,     2.5,     0.125,  0.375,    0.0005,     0.00049999,
                                  9.995, 99.95, 0.99995, 999.999, 1e15,   1e16,     1e22,       1e23,
                                  123.0, huge,  tiny,    1e-300,  1e-310, infinite, notANumber, 3e-38};
    const std::size_t count = values.size();
    for (std::size_t i = 0; i < count; ++i)
        values.push_back(-values[i]);
    return values;
}

/// Half of them any bit pattern at all, half of ordinary size.
std::vector<double> randomReals(std::size_t count)
{
    std::mt19937_64 random(20240611);
    std::uniform_real_distribution<double> exponent(-9.0, 9.0);
    std::vector<double> values;
    while (values.size() < count) {
        const std::uint64_t bits = random();
        double value = 0.0;
        std::memcpy(&value, &bits, sizeof value);
        values.push_back(value);
        values.push_back(std::copysign(std::pow(10.0, exponent(random)), value));
    }
    return values;
}

void expectLibraryText(const std::string& form, const std::vector<double>& values)
{
    for (const double value : values)
        ASSERT_EQ(formatted(form, value), libraryText(form, value)) << form;
}

/// Decimal comma and grouped digits, as in a German or French locale.
class CommaPunctuation : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

}  // namespace

TEST(TextFormat, reals_are_printed_as_the_C_library_prints_them)
{
    // every real conversion of the report, the trace and the file of open ends
    const std::vector<std::string> forms = {"%lf",    "%le",     "%lE",     "%12lE",   "%3.2lf",  "%9.6lf",
                                            "%9.3lf", "%9.4lf",  "%9.5lf",  "%9.7f",   "%11.3lf", "%12.4lf",
                                            "%9.3le", "%10.3le", "%10.3lf", "%12.6lf", "%12.4lE", "%-10.7le"};
    for (const std::string& form : forms) {
        expectLibraryText(form, difficultReals());
        expectLibraryText(form, randomReals(2000));
    }
}

TEST(TextFormat, any_width_precision_and_alignment_is_printed_as_the_C_library_prints_it)
{
    std::mt19937 random(7);
    const std::vector<double> values = randomReals(20);
    const std::vector<double> difficult = difficultReals();
    for (int i = 0; i < 1500; ++i) {
        std::string form = "a %";
        if (random() % 2 == 0) form += '-';
        if (random() % 4 != 0) form += std::to_string(1 + random() % 40);
        if (random() % 4 != 0) form += "." + std::to_string(random() % 25);
        if (random() % 2 == 0) form += 'l';
        form += "feE"[random() % 3];
        form += " z";
        expectLibraryText(form, values);
        expectLibraryText(form, difficult);
    }
}

TEST(TextFormat, a_precision_without_digits_is_none)
{
    EXPECT_EQ(formatted("%.f|%5.lE", 2.5, 25.0), "2|2E+01");
}

TEST(TextFormat, integers_are_printed_as_the_C_library_prints_them)
{
    std::mt19937 random(3);
    std::vector<int> values = {0, 1, -1, 9, 10, 99, 100, -100, 1000, INT_MAX, INT_MIN};
    for (int i = 0; i < 500; ++i)
        values.push_back(static_cast<int>(random()) >> (random() % 31));
    for (const std::string form : {"%d", "%3d", "%-3d", "%4d", "%-5d", "%6d", "%-6d", "%-12d", "%20d"})
        for (const int value : values)
            ASSERT_EQ(formatted(form, value), libraryText(form, value)) << form;
}

TEST(TextFormat, counts_are_printed_as_the_C_library_prints_them)
{
    for (const std::size_t value : {std::size_t{0}, std::size_t{4}, std::numeric_limits<std::size_t>::max()})
        for (const std::string form : {"%zu", "%8zu", "%-8zu|"})
            EXPECT_EQ(formatted(form, value), libraryText(form, value)) << form;
}

TEST(TextFormat, texts_are_padded_to_the_width)
{
    EXPECT_EQ(formatted("<%s|%4s|%-4s|%1s>", "ab", "ab", std::string("ab"), "ab"), "<ab|  ab|ab  |ab>");
}

TEST(TextFormat, not_a_number_keeps_its_sign_and_capitals_follow_the_letter)
{
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    EXPECT_EQ(formatted("%9.3lf|%-6le|%lE|%lE|%lf", std::copysign(notANumber, 1.0), infinite, -infinite,
                        std::copysign(notANumber, -1.0), -0.0),
              "      nan|inf   |-INF|-NAN|-0.000000");
}

TEST(TextFormat, a_value_of_another_kind_or_a_missing_one_leaves_the_conversion_as_it_stands)
{
    EXPECT_EQ(formatted("%d %lf", 1.0, 2.0), "%d 1.000000");
    EXPECT_EQ(formatted("%d %12.4lE", 1), "1 %12.4lE");
    EXPECT_EQ(formatted("%lf %d", "a", 5), "%lf %d");
    EXPECT_EQ(formatted("%x %", 5), "%x %");
    EXPECT_EQ(formatted("no conversion", 5), "no conversion");
}

TEST(TextFormat, a_decimal_comma_of_the_host_changes_nothing)
{
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation));
    const std::string cLocale = std::setlocale(LC_ALL, nullptr);
    // where one of them is installed the C library prints a comma too
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE", "German_Germany.1252"})
        if (std::setlocale(LC_ALL, name) != nullptr) break;

    EXPECT_EQ(formatted("%12.4lf|%lE|%d", 1234.5, 0.25, 1234567), "   1234.5000|2.500000E-01|1234567");

    std::setlocale(LC_ALL, cLocale.c_str());
    std::locale::global(before);
}

TEST(TextFile, is_not_open_and_prints_nothing_when_it_was_given_no_file_or_no_folder_holds_it)
{
    const GoldenTest::ScratchDirectory scratch;
    lcn::TextFile none;
    lcn::TextFile nowhere("no_such_folder/file.dat");
    EXPECT_FALSE(none.isOpen());
    EXPECT_FALSE(nowhere.isOpen());
    none.print("%d", 1);
    nowhere.print("%d", 1);
    EXPECT_TRUE(scratch.names().empty());
}

TEST(TextFile, replaces_an_earlier_file_and_holds_every_line_in_order)
{
    const GoldenTest::ScratchDirectory scratch;
    lcn::TextFile("file.dat").print("%s\n", std::string(300000, 'x'));
    std::string expected;
    {
        lcn::TextFile file("file.dat");
        for (int i = 0; i < 20000; ++i) {  // more than one block
            file.print("%-8d|\n", i);
            expected += formatted("%-8d|\n", i);
        }
    }
    EXPECT_EQ(scratch.read("file.dat"), expected);
}
