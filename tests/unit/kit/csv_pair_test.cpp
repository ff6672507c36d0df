// The pair of tables: reading back what was written, units in headers, separators, and findings with lines.
#include "csv_pair.h"

#include <string>

#include <gtest/gtest.h>

#include "csv_table.h"
#include "network_writer.h"
#include "random_network.h"

namespace
{

using kit_tests::RandomNetwork;

constexpr unsigned kSeeds = 200;

const char* const kNodes = "name,x [m],y,z,type,pressure [bar],mass_flow\n"
                           "a,0,0,0,inlet,3,\n"
                           "b,10,0,0,outlet,,0.1\n";
const char* const kElements = "name,type,from,to,diameter [mm],k\n"
                              "p,pipe,a,b,25,1.5\n";

std::optional<kit::Network> read(const std::string& nodes, const std::string& elements,
                                 kit::Findings& findings)
{
    return kit::readCsvTexts(nodes, "nodes.csv", elements, "elements.csv", findings);
}

std::string findingsOf(const std::string& nodes, const std::string& elements)
{
    kit::Findings findings;
    EXPECT_FALSE(read(nodes, elements, findings));
    return findings.text();
}

}  // namespace

TEST(CsvPair, written_tables_are_read_back_the_same_and_written_the_same)
{
    for (unsigned seed = 0; seed < kSeeds; ++seed) {
        SCOPED_TRACE(seed);
        const kit::Network network = RandomNetwork(seed, false).make();
        const std::string nodes = kit::nodesCsv(network);
        const std::string elements = kit::elementsCsv(network);
        kit::Findings findings;
        const auto back = read(nodes, elements, findings);
        ASSERT_TRUE(back) << findings.text() << nodes << elements;
        kit_tests::expectSameParts(network, *back);
        EXPECT_EQ(kit::nodesCsv(*back), nodes);
        EXPECT_EQ(kit::elementsCsv(*back), elements);
        kit::reportCsvLosses(network, findings);
        EXPECT_TRUE(findings.isEmpty()) << findings.text();
        if (HasFailure()) return;
    }
}

TEST(CsvPair, parts_that_tables_cannot_hold_are_warnings_and_own_values_stand_at_the_elements)
{
    const kit::Network network = RandomNetwork(3).make();
    kit::Findings losses;
    kit::reportCsvLosses(network, losses);
    EXPECT_FALSE(losses.hasErrors());
    EXPECT_EQ(losses.list().size(), 9U) << losses.text();
    kit::Findings findings;
    const auto back = read(kit::nodesCsv(network), kit::elementsCsv(network), findings);
    ASSERT_TRUE(back) << findings.text();
    for (std::size_t i = 0; i < network.elements.size(); ++i) {
        const kit::Element& a = network.elements[i];
        const kit::Element& b = back->elements[i];
        EXPECT_EQ(kit::roughnessOf(network, a), kit::roughnessOf(*back, b));
        EXPECT_EQ(kit::hazenWilliamsOf(network, a), kit::hazenWilliamsOf(*back, b));
        EXPECT_DOUBLE_EQ(kit::minorLossOf(network, a), kit::minorLossOf(*back, b));
        kit_tests::expectSame(*kit::curveOf(network, a), *kit::curveOf(*back, b));
    }
}

TEST(CsvPair, units_stand_in_the_header_or_in_the_field)
{
    kit::Findings findings;
    const auto network =
        read(kNodes, "name;type;from;to;diameter [mm];length [km]\np;pipe;a;b;1 in;0.02\n", findings);
    ASSERT_TRUE(network) << findings.text();
    EXPECT_EQ(network->nodes[0].boundary->pressure, 3e5);
    EXPECT_EQ(network->elements[0].section->diameter, 0.0254);
    EXPECT_EQ(network->elements[0].length, 20.0);
    EXPECT_EQ(network->elements[0].line, 2U);
}

TEST(CsvPair, drawing_coordinates_make_a_schematic_network)
{
    kit::Findings findings;
    const auto network = read("name,drawing_x,height [ft],type,pressure\na,5,10,inlet,0\nb,7,0,outlet,0\n",
                              "name,type,from,to,diameter,length\np,pipe,a,b,0.1,100\n", findings);
    ASSERT_TRUE(network) << findings.text();
    EXPECT_EQ(network->coordinates, kit::Coordinates::schematic);
    EXPECT_EQ(network->nodes[0].at[0], 5.0);
    EXPECT_DOUBLE_EQ(network->nodes[0].at[2], 3.048);
}

TEST(CsvPair, findings_name_the_file_the_line_and_the_column)
{
    const std::string text = findingsOf(kNodes, "name,type,from,to,diameter [mm],k\n"
                                                "\"p\nq\",pipe,a,b,25,1\n"
                                                "p2,pipe,a,c,-1,\"1,5\"\n");
    EXPECT_NE(text.find("elements.csv:2: column name (element p\\x0aq)"), std::string::npos)
        << "a line end in a name is refused: " << text;
    EXPECT_NE(text.find("elements.csv:4: column to (element p2): there is no node \"c\""), std::string::npos)
        << text;
    EXPECT_NE(text.find("elements.csv:4: column diameter (element p2): \"-1 mm\" is not above 0"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("elements.csv:4: column k: \"1,5\" has a decimal comma; write 1.5"),
              std::string::npos)
        << text;
}

TEST(CsvPair, a_line_with_too_many_fields_hides_no_other_finding)
{
    kit::Findings findings;
    EXPECT_FALSE(kit::readCsvTexts("name,x,y,z,type,pressure\na,0,0,0,inlet,3 bars\nb,1,0,0,outlet,0\n",
                                   "n.csv", "name,type,from,to,diameter\np,pipe,a,b,0.1,7\nq,pip,a,b,0.1\n",
                                   "e.csv", findings));
    const std::string text = findings.text();
    EXPECT_NE(text.find("e.csv:2: the line has 6 fields, more than the header's 5"), std::string::npos)
        << text;
    EXPECT_NE(text.find("n.csv:2: "), std::string::npos) << text;
    EXPECT_NE(text.find("e.csv:3: "), std::string::npos) << text;
}

TEST(CsvPair, headers_are_strict)
{
    const std::string text =
        findingsOf("name,x,x,z,typ,pressure [m]\na,0,0,0,inlet,1\n", "name,type,from,to\np,pipe,a,b\n");
    EXPECT_NE(text.find("nodes.csv:1: column x: the column appears twice"), std::string::npos) << text;
    EXPECT_NE(text.find("nodes.csv:1: the column \"typ\" is unknown; did you mean \"type\"?"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("nodes.csv:1: column pressure: the unit \"m\" is unknown here; use one of \"Pa\""),
              std::string::npos)
        << text;
}

TEST(CsvPair, a_boundary_value_needs_a_type)
{
    const std::string text =
        findingsOf("name,x,y,z,type,pressure\na,0,0,0,inlet,1\nb,1,0,0,,2\nc,2,0,0,outlte,3\n", kElements);
    EXPECT_NE(text.find("nodes.csv:3: column type: the node has values of an inlet or outlet but no type"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("nodes.csv:4: column type: \"outlte\" is no type of node"), std::string::npos)
        << text;
}

TEST(CsvTable, fields_follow_RFC_4180)
{
    kit::Findings findings;
    const auto table =
        kit::parseCsv("a,b\r\n\"x, \"\"y\"\"\",\"two\nlines\"\r\n\r\nlast,", "t.csv", findings);
    ASSERT_TRUE(table) << findings.text();
    ASSERT_EQ(table->rows.size(), 2U);
    EXPECT_EQ(table->rows[0].fields, (std::vector<std::string>{"x, \"y\"", "two\nlines"}));
    EXPECT_EQ(table->rows[1].fields, (std::vector<std::string>{"last", ""}));
    EXPECT_EQ(table->rows[1].line, 5U);
    EXPECT_EQ(kit::csvLine({"x, \"y\"", "plain", ""}), "\"x, \"\"y\"\"\",plain,\r\n");
}

TEST(CsvTable, broken_tables_are_refused_with_their_line)
{
    kit::Findings findings;
    EXPECT_FALSE(kit::parseCsv("a,b\n1,2,3\n\"open", "t.csv", findings));
    EXPECT_EQ(findings.text(),
              "t.csv:2: the line has 3 fields, more than the header's 2; correct the line [csv-syntax]\n"
              "t.csv:3: a quoted field is not closed; correct the line [csv-syntax]\n");
    kit::Findings empty;
    EXPECT_FALSE(kit::parseCsv("", "t.csv", empty));
    EXPECT_TRUE(empty.hasErrors());
}

TEST(CsvPair, tables_in_the_wrong_order_are_told_in_one_line)
{
    kit::Findings findings;
    EXPECT_FALSE(kit::readCsvTexts("name,type,from,to,diameter\np,pipe,a,b,0.1\n", "elements.csv",
                                   "name,x,y,z\na,0,0,0\nb,1,0,0\n", "nodes.csv", findings));
    EXPECT_EQ(findings.text(),
              "elements.csv:1: the table of elements stands in the place of the table of nodes; name "
              "the nodes first: NODES.csv,ELEMENTS.csv [other-kind-of-file]\n");
}

TEST(CsvPair, numbers_beyond_the_range_are_told)
{
    kit::Findings findings;
    EXPECT_FALSE(kit::readCsvTexts("name,x,type,pressure\na,0,inlet,1e400\nb,10,outlet,0\n", "nodes.csv",
                                   "name,type,from,to,diameter\np,pipe,a,b,+1e-400\n", "elements.csv",
                                   findings));
    EXPECT_EQ(findings.text(),
              "nodes.csv:2: column pressure: \"1e400\" is too large or too small to be stored; give a "
              "number between 1e-300 and 1e300 [csv-value]\n"
              "elements.csv:2: column diameter: \"+1e-400\" is too large or too small to be stored; "
              "give a number between 1e-300 and 1e300 [csv-value]\n");
}
