// CreateTavell_test.cpp: the entry points.
#include "tavell/CreateTavell.h"

#include <gtest/gtest.h>

#include "tavell/ITavell.h"
#include "tavell/TavellFlat.h"

using namespace Velcor::Tavell;

TEST(CreateTavell, the_flag_has_no_effect)
{
    for (const bool flag : {false, true}) {
        ITavell* system = CreateTavell(flag);
        ASSERT_NE(system, nullptr);
        EXPECT_EQ(system->GetNoCircuits(), 0U);
        system->Release();
    }
    ITavell* system = vcCreateTavell();
    EXPECT_EQ(vcITavellGetNoCircuits(system), 0U);
    vcITavellRelease(system);
}

TEST(CreateTavell, releasing_the_system_destroys_everything_in_it)
{
    ITavell* system = CreateTavell(false);
    ICircuit* circuit = system->CreateCircuit();
    vcICircuitCreateNode(circuit);
    vcICircuitCreateEmptyElement(circuit);
    system->Release();  // nothing may leak: the address sanitizer watches
}

TEST(CreateTavell, build_details_are_minus_one_in_the_first_output_and_nothing_elsewhere)
{
    int d[19];
    for (const bool flag : {false, true}) {
        for (int i = 0; i < 19; ++i)
            d[i] = 100 + i;
        GetBuildDetails(flag, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7], d[8], d[9], d[10], d[11], d[12],
                        d[13], d[14], d[15], d[16], d[17], d[18]);
        EXPECT_EQ(d[0], -1);
        for (int i = 1; i < 19; ++i)
            EXPECT_EQ(d[i], 100 + i);
    }
}

TEST(CreateTavell, the_flat_build_details_use_the_first_pointer_only)
{
    int first = 5;
    int* none = nullptr;
    vcGetBuildDetails(true, &first, none, none, none, none, none, none, none, none, none, none, none, none,
                      none, none, none, none, none, none);
    EXPECT_EQ(first, -1);
}
