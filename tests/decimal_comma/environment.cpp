// environment.cpp: part of every test program. With TAVELL_TEST_LOCALE set to the name of a locale that
// writes "1.234,5", all its tests run as in a host that has made this the locale of C and of C++.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <locale>
#include <string>

namespace
{

/// Numbers of the C++ library: the same whether the locale is installed or not.
class CommaNumbers : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class DecimalComma : public testing::Environment
{
public:
    void SetUp() override
    {
        const char* const name = std::getenv("TAVELL_TEST_LOCALE");
        if (name == nullptr) return;
        ASSERT_NE(std::setlocale(LC_ALL, name), nullptr) << name << " is not installed";
        ASSERT_STREQ(std::localeconv()->decimal_point, ",");
        std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
    }
};

// The framework takes the object and deletes it.
const testing::Environment* const decimalComma = testing::AddGlobalTestEnvironment(new DecimalComma);

}  // namespace
