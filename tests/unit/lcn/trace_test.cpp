// trace_test.cpp: the lines on standard output.
#include "lcn/trace.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

lcnNET_var tracedRecord(bool debug)
{
    lcnNET_var var;
    var.Debug = debug;
    var.nxx = 42;
    var.nIter = 7;
    return var;
}

const lcn::TraceLine kLine{1.25e-3, -1234.5, 2e-7, 3e-8, -4.5e-9, 0, 6.5, 400, 0.0, 3};

std::string trace(const lcnNET_var& var)
{
    testing::internal::CaptureStdout();
    lcn::traceHeader(var);
    lcn::traceIteration(var, kLine);
    return testing::internal::GetCapturedStdout();
}

}  // namespace

TEST(Trace, shows_nothing_without_debug)
{
    EXPECT_EQ(trace(tracedRecord(false)), "");
}

TEST(Trace, has_a_heading_with_the_traced_node_twice_and_a_line_of_thirteen_columns)
{
    EXPECT_EQ(trace(tracedRecord(true)),
              "\n\nCirc nIter  massfrac      mass[42]    pp[42]"
              "       summass    delpreserr   maxmasserr  ip   temperror    it    Minorerr   im\n"
              "  0   7   1.2500E-03   0.0000E+00  -1.2345E+03   2.0000E-07   3.0000E-08  -4.5000E-09   0"
              "   6.5000E+00 400   0.0000E+00   3  \n");
}

TEST(Trace, the_mass_column_is_always_zero)
{
    const std::string text = trace(tracedRecord(true));
    const std::string line = text.substr(text.rfind("  0   7"));
    EXPECT_EQ(line.substr(20, 13), "   0.0000E+00");
}

TEST(Trace, the_circuit_column_is_always_zero)
{
    lcnNET_var var = tracedRecord(true);
    var.circuitNumber = 5;
    EXPECT_NE(trace(var).find("\n  0   7 "), std::string::npos);
}
