// The canonical text of networks: reading it back, its form, and the hash over it.
#include "network_writer.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "network_file.h"
#include "random_network.h"
#include "sha256.h"

namespace
{

using kit_tests::RandomNetwork;

constexpr unsigned kSeeds = 200;

kit::Network read(const std::string& text)
{
    kit::Findings findings;
    const auto network = kit::readNetworkText(text, "test.json", findings);
    EXPECT_TRUE(network) << findings.text() << text;
    return network.value_or(kit::Network());
}

}  // namespace

TEST(NetworkWriter, a_written_network_is_read_back_the_same_and_written_the_same)
{
    for (unsigned seed = 0; seed < kSeeds; ++seed) {
        SCOPED_TRACE(seed);
        const kit::Network network = RandomNetwork(seed).make();
        const std::string text = kit::networkText(network);
        const kit::Network back = read(text);
        kit_tests::expectSame(network, back);
        EXPECT_EQ(kit::networkText(back), text);
        EXPECT_EQ(kit::networkHash(back), kit::networkHash(network));
        if (HasFailure()) return;
    }
}

TEST(NetworkWriter, examples_survive_reading_and_writing)
{
    for (const auto& entry : std::filesystem::directory_iterator(TAVELL_EXAMPLES "/networks")) {
        SCOPED_TRACE(entry.path().filename());
        if (entry.path().extension() != ".json") continue;
        kit::Findings findings;
        const auto network = kit::readNetworkFile(entry.path().string(), findings);
        ASSERT_TRUE(network) << findings.text();
        const std::string text = kit::networkText(*network);
        const kit::Network back = read(text);
        kit_tests::expectSame(*network, back);
        EXPECT_EQ(kit::networkText(back), text);
    }
}

TEST(NetworkWriter, keys_have_a_fixed_order_and_nodes_and_elements_a_line_each)
{
    const kit::Network network = read(R"({
        "elements": [{"to": "b", "from": "a", "type": "pipe", "k": 2, "diameter": "25 mm", "name": "p"}],
        "nodes": [{"at": [0, 0, 0], "inlet": {"pressure": "3 bar"}, "name": "a"},
                  {"at": [10.5, 0, 1e-9], "outlet": {"mass_flow": 0.1}, "name": "b"}],
        "settings": {"minor_loss": "specified", "friction": "haaland"},
        "gravity": [0, 0, -1], "coordinates": "geometry", "title": "T", "tavell": 1})");
    EXPECT_EQ(kit::networkText(network), R"({
  "tavell": 1,
  "title": "T",
  "settings": {"friction": "haaland"},
  "nodes": [
    {"name": "a", "at": [0, 0, 0], "inlet": {"pressure": 300000}},
    {"name": "b", "at": [10.5, 0, 1e-09], "outlet": {"mass_flow": 0.1}}
  ],
  "elements": [
    {"name": "p", "type": "pipe", "from": "a", "to": "b", "diameter": 0.025, "k": 2}
  ]
}
)");
}

TEST(NetworkWriter, units_of_the_file_become_units_of_results)
{
    const std::string start = R"({"tavell": 1, "units": {"pressure": "bar", "diameter": "mm"},)";
    const std::string rest = R"("nodes": [{"name": "a", "at": [0, 0, 0], "inlet": {"pressure": 3}},
        {"name": "b", "at": [1, 0, 0], "outlet": {"pressure": "1 bar"}}],
        "elements": [{"name": "p", "type": "pipe", "from": "a", "to": "b", "diameter": 25}]})";
    const std::string text = kit::networkText(read(start + rest));
    EXPECT_NE(text.find(R"("result_units": {"diameter": "mm", "pressure": "bar"})"), std::string::npos)
        << text;
    EXPECT_EQ(text.find("\"units\""), std::string::npos) << text;
    EXPECT_NE(text.find(R"("pressure": 300000})"), std::string::npos) << text;
    const std::string other = kit::networkText(read(start + R"("result_units": {"length": "ft"},)" + rest));
    EXPECT_NE(other.find(R"("result_units": {"length": "ft"})"), std::string::npos) << other;
}

TEST(NetworkWriter, the_hash_leaves_out_what_no_number_depends_on)
{
    kit::Network network = RandomNetwork(1).make();
    const std::string hash = kit::networkHash(network);
    EXPECT_EQ(hash.size(), 64U);
    network.title = "another";
    network.source = "another";
    network.answer = kit::Answer();
    network.resultUnits.clear();
    network.scenarios.clear();
    network.settings.velocityLimit = 17.0;
    network.materials["old iron"].source = "another";
    network.nodes[0].description = "another";
    network.elements[0].description = "another";
    network.elements[0].vertices = {{1.0, 2.0, 3.0}};
    EXPECT_EQ(kit::networkHash(network), hash);
    network.nodes[0].boundary->pressure = *network.nodes[0].boundary->pressure + 1e-6;
    EXPECT_NE(kit::networkHash(network), hash);
}

// FIPS 180-4 examples of NIST's Cryptographic Standards and Guidelines, SHA256.pdf, and the long message of
// FIPS 180-2, appendix B.3.
TEST(Sha256, the_published_examples_hold)
{
    EXPECT_EQ(kit::sha256(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(kit::sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(kit::sha256("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(kit::sha256(std::string(1000000, 'a')),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}
