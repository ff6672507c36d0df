// The catalogue of materials and fittings, and what elements take by name.
#include "catalogue.h"

#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>
#include <tavell/Constants.h>

#include "element_kinds.h"
#include "network_file.h"
#include "network_keys.h"
#include "object_reader.h"
#include "units.h"

namespace
{

std::string documentText()
{
    std::ifstream file(TAVELL_SOURCE "/docs/network-file.md");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

TEST(Catalogue, every_entry_has_a_source_and_sensible_values)
{
    for (const auto& [name, material] : kit::knownMaterials()) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(material.source.empty());
        EXPECT_TRUE(material.roughness || material.hazenWilliams);
        if (material.roughness) {
            EXPECT_GE(*material.roughness, 1e-6);
            EXPECT_LE(*material.roughness, 5e-3);
        }
        if (material.hazenWilliams) {
            EXPECT_GE(*material.hazenWilliams, 60.0);
            EXPECT_LE(*material.hazenWilliams, 150.0);
        }
    }
    for (const auto& [name, fitting] : kit::knownFittings()) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(fitting.source.empty());
        EXPECT_GT(fitting.k, 0.0);
    }
    EXPECT_GE(kit::knownMaterials().size(), 12U);
    EXPECT_GE(kit::knownFittings().size(), 12U);
}

// Moody (1944) gives 0.00015 ft for commercial steel and 0.00085 ft for cast iron.
TEST(Catalogue, roughness_agrees_with_Moody)
{
    EXPECT_NEAR(*kit::knownMaterials().at("steel").roughness, 0.00015 * 0.3048, 1e-6);
    EXPECT_NEAR(*kit::knownMaterials().at("cast iron").roughness, 0.00085 * 0.3048, 2e-6);
}

TEST(Catalogue, the_network_s_own_entry_comes_first)
{
    kit::Network network;
    EXPECT_EQ(kit::findMaterial(network, "steel")->roughness, 4.6e-5);
    network.materials["steel"].roughness = 1e-3;
    EXPECT_EQ(kit::findMaterial(network, "steel")->roughness, 1e-3);
    EXPECT_EQ(kit::findMaterial(network, "cheese"), nullptr);
    EXPECT_EQ(kit::findFitting(network, "globe valve")->k, 10.0);
    network.fittings["globe valve"].k = 9.0;
    EXPECT_EQ(kit::findFitting(network, "globe valve")->k, 9.0);
    EXPECT_EQ(kit::findCurve(network, "type A"), nullptr);
}

TEST(Catalogue, messages_choose_from_a_limited_number_of_own_names)
{
    constexpr std::size_t kMany = 1000;
    kit::Network network;
    for (std::size_t i = 0; i < kMany; ++i) {
        network.curves["curve " + std::to_string(i)];
        network.materials["material " + std::to_string(i)];
    }
    EXPECT_EQ(kit::curveNames(network).size(), 200U);
    EXPECT_EQ(kit::materialNames(network).size(), 200U + kit::knownMaterials().size());
}

TEST(Catalogue, suggestions_compare_short_names_only)
{
    const std::string word(100, 'a');
    EXPECT_EQ(kit::suggestion(word, {word + "b"}), "give one of \"" + word + "b\"");
    EXPECT_EQ(kit::suggestion("abc", {word + "b", "abd"}), "did you mean \"abd\"?");
    EXPECT_EQ(kit::suggestion("x", {"k", "to"}), "give one of \"k\", \"to\"");
}

TEST(Catalogue, an_element_s_own_values_come_before_those_of_its_material)
{
    kit::Network network;
    kit::Element element;
    element.kind = kit::findElementKind("pipe");
    EXPECT_FALSE(kit::roughnessOf(network, element));
    element.material = "steel";
    EXPECT_EQ(kit::roughnessOf(network, element), 4.6e-5);
    EXPECT_EQ(kit::hazenWilliamsOf(network, element), 140.0);
    element.setProperty(TAVELL_ELEMENT_ROUGHNESS, 0.0);
    EXPECT_EQ(kit::roughnessOf(network, element), 0.0);
}

TEST(Catalogue, fittings_add_to_the_k_of_the_element)
{
    kit::Network network;
    kit::Element element;
    element.setProperty(TAVELL_ELEMENT_K_SPECIFIED, 1.0);
    element.fittings = {{"exit", 1}, {"globe valve", 3}};
    EXPECT_DOUBLE_EQ(kit::minorLossOf(network, element), 32.0);
}

TEST(Catalogue, the_document_lists_every_entry_and_every_unit)
{
    const std::string text = documentText();
    const auto isListed = [&text](const std::string& row) { return text.find(row) != std::string::npos; };
    for (const auto& entry : kit::knownMaterials())
        EXPECT_TRUE(isListed("\n| `" + entry.first + "` |")) << entry.first;
    for (const auto& entry : kit::knownFittings())
        EXPECT_TRUE(isListed("\n| `" + entry.first + "` |")) << entry.first;
    for (const std::string& quantity : kit::quantityNames()) {
        std::string units;
        for (const std::string& unit : kit::unitsOf(*kit::findQuantity(quantity)))
            units += (units.empty() ? "`" + unit + "` | " : "`" + unit + "`, ");
        units.resize(units.size() - 2);
        EXPECT_TRUE(isListed("\n| `" + quantity + "` | " + units + " |\n")) << quantity << ": " << units;
    }
}

TEST(Catalogue, the_first_example_of_the_document_is_a_network)
{
    const std::string text = documentText();
    const std::size_t start = text.find("\n    {\n");
    ASSERT_NE(start, std::string::npos);
    const std::size_t end = text.find("\n    }\n", start);
    ASSERT_NE(end, std::string::npos);
    kit::Findings findings;
    EXPECT_TRUE(kit::readNetworkText(text.substr(start, end + 7 - start), "example", findings))
        << findings.text();
}
