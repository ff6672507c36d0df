// c_numbers.h: the C library's own numbers, for expectations that are written with it.
#pragma once

#include <locale.h>

namespace DecimalComma
{

/// While it lives, printf and strtod on this thread write and read a decimal point, whatever the locale of
/// the process.
class CNumbers
{
public:
    CNumbers() : m_numbers(newlocale(LC_ALL_MASK, "C", locale_t{})), m_before(uselocale(m_numbers)) {}
    ~CNumbers()
    {
        uselocale(m_before);
        freelocale(m_numbers);
    }
    CNumbers(const CNumbers&) = delete;
    CNumbers& operator=(const CNumbers&) = delete;

private:
    locale_t m_numbers;
    locale_t m_before;
};

}  // namespace DecimalComma
