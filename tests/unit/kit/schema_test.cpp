// The published schema of network files has the keys, words and units of the reader.
#include <algorithm>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "element_kinds.h"
#include "network_keys.h"
#include "units.h"

namespace
{

using nlohmann::json;

json readSchema()
{
    std::ifstream file(TAVELL_SOURCE "/kit/schema/network-1.schema.json");
    return json::parse(file);
}

std::vector<std::string> sorted(std::vector<std::string> words)
{
    std::sort(words.begin(), words.end());
    return words;
}

/// The keys of an object's definition, in alphabetical order.
std::vector<std::string> keysIn(const json& definition)
{
    std::vector<std::string> keys;
    for (const auto& entry : definition.at("properties").items())
        keys.push_back(entry.key());
    return keys;
}

std::vector<std::string> wordsOf(const std::vector<kit::Choice>& choices)
{
    std::vector<std::string> words;
    for (const kit::Choice& choice : choices)
        words.emplace_back(choice.first);
    return words;
}

}  // namespace

TEST(Schema, it_names_its_draft_and_itself)
{
    const json schema = readSchema();
    EXPECT_EQ(schema.at("$schema"), "https://json-schema.org/draft/2020-12/schema");
    EXPECT_EQ(schema.at("$id"), "urn:tavell:schema:network:1");
}

TEST(Schema, every_object_has_the_keys_of_the_reader)
{
    const json schema = readSchema();
    for (const kit::ObjectType type : kit::objectTypes()) {
        const std::string name = kit::schemaName(type);
        SCOPED_TRACE(name);
        const json& definition = type == kit::ObjectType::document ? schema : schema.at("$defs").at(name);
        EXPECT_EQ(keysIn(definition), sorted(kit::keysOf(type)));
        EXPECT_EQ(definition.at("additionalProperties"), false);
    }
    EXPECT_EQ(keysIn(schema.at("$defs").at("units")), sorted(kit::quantityNames()));
    EXPECT_EQ(keysIn(schema.at("$defs").at("result_units")), sorted(kit::quantityNames()));
}

TEST(Schema, every_type_of_element_has_the_keys_of_the_reader)
{
    const json schema = readSchema();
    const json& definitions = schema.at("$defs");
    EXPECT_EQ(definitions.at("element").at("properties").at("type").at("enum"), kit::elementKindNames());
    EXPECT_EQ(definitions.at("element").at("allOf").size(), kit::elementKinds().size());
    for (const kit::ElementKind& kind : kit::elementKinds()) {
        SCOPED_TRACE(kind.name);
        const json& definition = definitions.at(std::string("element_") + kind.name);
        EXPECT_EQ(keysIn(definition), sorted(kind.keys));
        EXPECT_EQ(definition.at("additionalProperties"), false);
        for (const kit::NumberKey& key : kind.numbers) {
            const json& required = definition.at("required");
            const bool isRequired = std::find(required.begin(), required.end(), key.key) != required.end();
            EXPECT_EQ(isRequired, key.need == kit::Need::required) << key.key;
        }
    }
}

TEST(Schema, choices_have_the_words_of_the_reader)
{
    const json schema = readSchema();
    const json& settings = schema.at("$defs").at("settings").at("properties");
    EXPECT_EQ(settings.at("minor_loss").at("enum"), wordsOf(kit::minorLossChoices()));
    EXPECT_EQ(settings.at("friction").at("enum"), wordsOf(kit::frictionChoices()));
}

TEST(Schema, quantities_take_every_unit_and_no_other)
{
    const json schema = readSchema();
    for (const std::string& name : kit::quantityNames()) {
        SCOPED_TRACE(name);
        const kit::Quantity quantity = *kit::findQuantity(name);
        const json& definitions = schema.at("$defs");
        EXPECT_EQ(definitions.at("unit_" + name).at("enum"), kit::unitsOf(quantity));
        const std::regex pattern(
            definitions.at("quantity_" + name).at("anyOf").at(1).at("pattern").get<std::string>());
        for (const std::string& unit : kit::unitsOf(quantity)) {
            EXPECT_TRUE(std::regex_search("-1.5e3 " + unit, pattern)) << unit;
            EXPECT_TRUE(std::regex_search("25" + unit, pattern)) << unit;
        }
        EXPECT_FALSE(std::regex_search("1 furlong", pattern));
        EXPECT_FALSE(std::regex_search("1", pattern));
        EXPECT_FALSE(std::regex_search("one m", pattern));
    }
}
