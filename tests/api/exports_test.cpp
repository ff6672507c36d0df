// exports_test.cpp: what the shared library exports, by name.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "flat_api.h"

namespace
{

/// Output of a command, whole.
std::string outputOf(const std::string& command)
{
    FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return "";
    std::string text;
    char part[4096];
    while (const std::size_t length = std::fread(part, 1, sizeof part, pipe))
        text.append(part, length);
    return pclose(pipe) == 0 ? text : "";
}

/// Names of the symbols that the library defines for others: the last word of each line of nm.
std::multiset<std::string> exportedNames()
{
    std::multiset<std::string> names;
    std::istringstream lines(outputOf(TAVELL_NM " -D --defined-only " TAVELL_LIBRARY));
    for (std::string line; std::getline(lines, line);)
        names.insert(line.substr(line.rfind(' ') + 1));
    return names;
}

std::multiset<std::string> documentedNames()
{
    std::multiset<std::string> names;
    std::ifstream file(TAVELL_EXPORTED_SYMBOLS);
    for (std::string name; std::getline(file, name);)
        names.insert(name);
    return names;
}

}  // namespace

TEST(Exports, the_list_holds_109_flat_functions_and_two_cpp_functions)
{
    std::size_t flatFunctions = 0;
    for (const std::string& name : documentedNames())
        flatFunctions += name.rfind("vc", 0) == 0 ? 1 : 0;
    EXPECT_EQ(flatFunctions, 109u);
    EXPECT_EQ(documentedNames().size(), 111u);
}

TEST(Exports, the_library_exports_the_list_and_nothing_else)
{
    EXPECT_EQ(exportedNames(), documentedNames());
}

TEST(Exports, every_flat_function_has_a_prototype_in_the_table_and_is_found_by_name)
{
    std::multiset<std::string> names = {"_ZN6Velcor6Tavell12CreateTavellEb",
                                        "_ZN6Velcor6Tavell15GetBuildDetailsEbRi"
                                        "S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_"};
#define TAVELL_NAME(name, ...) names.insert(#name);
    TAVELL_FLAT_FUNCTIONS(TAVELL_NAME)
#undef TAVELL_NAME
    EXPECT_EQ(names, documentedNames());
    for (const std::string& name : names)
        EXPECT_NE(findSymbol(name.c_str()), nullptr) << name;
}
