// Networks of the C interface: handles, reading and writing.
#include "kit_api.h"

#include <algorithm>
#include <iterator>

#include <nlohmann/json.hpp>

#include "csv_pair.h"
#include "doctor.h"
#include "element_kinds.h"
#include "file_text.h"
#include "inp_import.h"
#include "kit_api_options.h"
#include "network_file.h"
#include "network_writer.h"
#include "scenario.h"

using kit::guarded;
using kit::required;

namespace kit
{

namespace
{

/// Takes in the names of the objects that are not in the index yet.
template <class Object> void addNames(NameIndex& names, const std::vector<Object>& objects)
{
    for (std::size_t i = names.texts.size(); i < objects.size(); ++i) {
        names.positions.emplace(objects[i].name, i);
        names.texts.push_back(objects[i].name.c_str());
    }
}

template <class Object>
const NameIndex& filled(std::unique_ptr<NameIndex>& index, const std::vector<Object>& objects)
{
    if (index) return *index;
    auto names = std::make_unique<NameIndex>();
    names->texts.reserve(objects.size());
    names->positions.reserve(objects.size());
    addNames(*names, objects);
    index = std::move(names);
    return *index;
}

/// Appends objects. Their index grows with them; when they move to other memory, which happens the more rarely the
/// more there are, it is made anew when it is next asked for.
template <class Object>
void append(std::vector<Object>& objects, std::vector<Object> added, std::unique_ptr<NameIndex>& index)
{
    const Object* const memory = objects.data();
    objects.insert(objects.end(), std::make_move_iterator(added.begin()),
                   std::make_move_iterator(added.end()));
    std::unique_ptr<NameIndex> names = std::move(index);
    if (!names || objects.data() != memory) return;
    try {
        addNames(*names, objects);
        index = std::move(names);
    } catch (const std::bad_alloc&) {
        // The objects are there; whoever asks for the index next says that there is no memory for it.
    }
}

}  // namespace

}  // namespace kit

std::shared_ptr<const kit::Network> tvkNetwork::share() const
{
    m_isShared.store(true);
    return m_network;
}

std::shared_ptr<const kit::Network> tvkNetwork::checked(kit::Findings& findings,
                                                        std::optional<kit::Network>* flawed) const
{
    if (m_isRead) return share();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_checked) return m_checked;
    auto network = kit::readNetworkText(kit::networkText(*m_network), m_network->file, findings, flawed);
    if (!network) return nullptr;
    for (std::size_t i = 0; i < network->nodes.size(); ++i)
        network->nodes[i].line = m_network->nodes[i].line;
    for (std::size_t i = 0; i < network->elements.size(); ++i)
        network->elements[i].line = m_network->elements[i].line;
    m_checked = std::make_shared<const kit::Network>(std::move(*network));
    return m_checked;
}

void tvkNetwork::replace(kit::Network network)
{
    m_own = std::make_shared<kit::Network>(std::move(network));
    m_network = m_own;
    m_isShared.store(false);
    m_isRead = true;
    m_checked.reset();
    forgetNames();
    m_elementKinds.clear();
    m_elementTypes.clear();
}

kit::Network& tvkNetwork::edit()
{
    // What a result holds stays as it is.
    if (m_isShared.load() || !m_own) {
        m_own = std::make_shared<kit::Network>(*m_network);
        m_network = m_own;
        m_isShared.store(false);
        forgetNames();
    }
    m_isRead = false;
    m_checked.reset();
    return *m_own;
}

void tvkNetwork::append(std::vector<kit::Node> nodes)
{
    kit::append(edit().nodes, std::move(nodes), m_nodeNames);
}

void tvkNetwork::append(std::vector<kit::Element> elements)
{
    kit::append(edit().elements, std::move(elements), m_elementNames);
}

void tvkNetwork::forgetNames()
{
    m_nodeNames.reset();
    m_elementNames.reset();
}

namespace kit
{

namespace
{

bool endsWith(std::string_view text, std::string_view ending)
{
    return text.size() >= ending.size() &&
           std::equal(ending.begin(), ending.end(), text.end() - static_cast<std::ptrdiff_t>(ending.size()),
                      [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b - 'A' + 'a' : b); });
}

/// "NODES.csv,ELEMENTS.csv" as two paths; nothing when it is not of that form.
std::optional<std::pair<std::string, std::string>> csvPaths(const std::string& path)
{
    static const std::string kBetween = ".csv,";
    if (!endsWith(path, ".csv")) return std::nullopt;
    const std::size_t end = path.find(kBetween);
    if (end == std::string::npos) return std::nullopt;
    const std::size_t comma = end + kBetween.size() - 1;
    return std::make_pair(path.substr(0, comma), path.substr(comma + 1));
}

/// flawed as for readNetworkFile.
std::optional<Network> readByEnding(const std::string& path, const InpOptions& inpOptions, Findings& findings,
                                    std::optional<Network>* flawed = nullptr)
{
    if (endsWith(path, ".inp")) return importInp(path, inpOptions, findings);
    if (const auto pair = csvPaths(path)) return readCsvPair(pair->first, pair->second, findings, flawed);
    if (endsWith(path, ".csv")) {
        findings.add(Code::bad_option, {path, 0, 0, "", ""}, "is one table, and a network has two",
                     "name both, with a comma and no blank between them: NODES.csv,ELEMENTS.csv");
        return std::nullopt;
    }
    return readNetworkFile(path, findings, flawed);
}

/// The object of a patch.
nlohmann::json parsePatch(const char* text)
{
    constexpr int kDeepest = 50;  // nested objects and arrays; a patch has a handful
    const auto limit = [](int depth, nlohmann::json::parse_event_t, const nlohmann::json&) {
        if (depth > kDeepest) refuse("the patch is nested too deep", "write fewer brackets");
        return true;
    };
    auto document = nlohmann::json::parse(text, limit, false);
    if (!document.is_object()) refuse("the patch is no JSON object", "write { } with its keys");
    return document;
}

InpOptions inpOptions(const char* text)
{
    InpOptions result;
    Options options(text);
    result.time = options.clock("time").value_or(result.time);
    result.freezesPressureValves = options.flag("freeze_valves").value_or(result.freezesPressureValves);
    options.close();
    return result;
}

}  // namespace

tvkStatus giveNetwork(tvkNetwork** target, std::optional<Network> network)
{
    if (!network) return TVK_BAD_INPUT;
    *target = new tvkNetwork(std::make_shared<Network>(std::move(*network)), true);
    return TVK_OK;
}

}  // namespace kit

const kit::NameIndex& tvkNetwork::nodeNames() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return kit::filled(m_nodeNames, m_network->nodes);
}

const kit::NameIndex& tvkNetwork::elementNames() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return kit::filled(m_elementNames, m_network->elements);
}

const std::vector<const kit::ElementKind*>& tvkNetwork::elementKinds() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (std::size_t i = m_elementKinds.size(); i < m_network->elements.size(); ++i)
        m_elementKinds.push_back(m_network->elements[i].kind);
    return m_elementKinds;
}

const std::vector<const char*>& tvkNetwork::elementTypes() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (std::size_t i = m_elementTypes.size(); i < m_network->elements.size(); ++i)
        m_elementTypes.push_back(m_network->elements[i].kind->name);
    return m_elementTypes;
}

tvkStatus tvkNewNetwork(tvkNetwork** network, tvkFindings* findings)
{
    if (network != nullptr) *network = nullptr;
    return guarded(findings, [&](kit::Findings&) {
        required(network, "network") = new tvkNetwork(std::make_shared<kit::Network>(), false);
        return TVK_OK;
    });
}

void tvkFreeNetwork(tvkNetwork* network)
{
    delete network;
}

tvkStatus tvkCopyNetwork(const tvkNetwork* network, tvkNetwork** copy, tvkFindings* findings)
{
    if (copy != nullptr) *copy = nullptr;
    return guarded(findings, [&](kit::Findings&) {
        const tvkNetwork& original = required(network, "network");
        required(copy, "copy") =
            new tvkNetwork(std::make_shared<kit::Network>(original.get()), original.isRead());
        return TVK_OK;
    });
}

tvkStatus tvkReadNetwork(const char* path, tvkNetwork** network, tvkFindings* findings)
{
    if (network != nullptr) *network = nullptr;
    return guarded(findings, [&](kit::Findings& list) {
        required(network, "network");
        return kit::giveNetwork(network, kit::readByEnding(&required(path, "path"), {}, list));
    });
}

tvkStatus tvkReadAndExamine(const char* path, const char* options, tvkNetwork** network,
                            tvkFindings* findings)
{
    if (network != nullptr) *network = nullptr;
    return guarded(findings, [&](kit::Findings& list) {
        required(network, "network");
        std::optional<kit::Network> flawed;
        auto read = kit::readByEnding(&required(path, "path"), kit::inpOptions(options), list, &flawed);
        if (flawed) list.append(kit::examineFlawed(*flawed, list));
        if (read) list.append(kit::examine(*read));
        return kit::giveNetwork(network, std::move(read));
    });
}

tvkStatus tvkReadNetworkText(const char* text, size_t size, const char* name, tvkNetwork** network,
                             tvkFindings* findings)
{
    if (network != nullptr) *network = nullptr;
    return guarded(findings, [&](kit::Findings& list) {
        required(network, "network");
        const std::string file = name == nullptr ? "" : name;
        auto utf8 = kit::toUtf8(std::string(&required(text, "text"), size), kit::Encoding::utf8, file, list);
        if (!utf8) return TVK_BAD_INPUT;
        return kit::giveNetwork(network, kit::readNetworkText(*utf8, file, list));
    });
}

tvkStatus tvkImportInp(const char* path, const char* options, tvkNetwork** network, tvkFindings* findings)
{
    if (network != nullptr) *network = nullptr;
    return guarded(findings, [&](kit::Findings& list) {
        required(network, "network");
        return kit::giveNetwork(network,
                                kit::importInp(&required(path, "path"), kit::inpOptions(options), list));
    });
}

tvkStatus tvkReadCsv(const char* nodesPath, const char* elementsPath, tvkNetwork** network,
                     tvkFindings* findings)
{
    if (network != nullptr) *network = nullptr;
    return guarded(findings, [&](kit::Findings& list) {
        required(network, "network");
        return kit::giveNetwork(network, kit::readCsvPair(&required(nodesPath, "nodesPath"),
                                                          &required(elementsPath, "elementsPath"), list));
    });
}

tvkStatus tvkWriteNetwork(const tvkNetwork* network, const char* path, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings& list) {
        const std::string text = kit::networkText(required(network, "network").get());
        return kit::writeFile(&required(path, "path"), text, list) ? TVK_OK : TVK_BAD_INPUT;
    });
}

tvkStatus tvkNetworkText(const tvkNetwork* network, char** text, tvkFindings* findings)
{
    if (text != nullptr) *text = nullptr;
    return guarded(findings, [&](kit::Findings&) {
        return kit::giveText(text, kit::networkText(required(network, "network").get()));
    });
}

tvkStatus tvkWriteCsv(const tvkNetwork* network, const char* nodesPath, const char* elementsPath,
                      tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings& list) {
        const kit::Network& original = required(network, "network").get();
        const std::string nodes = &required(nodesPath, "nodesPath");
        const std::string elements = &required(elementsPath, "elementsPath");
        kit::reportCsvLosses(original, list);
        // both before either is written: a shortage of memory leaves the old pair
        const std::string nodesText = kit::nodesCsv(original);
        const std::string elementsText = kit::elementsCsv(original);
        const bool isWritten =
            kit::writeFile(nodes, nodesText, list) && kit::writeFile(elements, elementsText, list);
        return isWritten ? TVK_OK : TVK_BAD_INPUT;
    });
}

tvkStatus tvkNetworkHash(const tvkNetwork* network, char** text, tvkFindings* findings)
{
    if (text != nullptr) *text = nullptr;
    return guarded(findings, [&](kit::Findings&) {
        return kit::giveText(text, kit::networkHash(required(network, "network").get()));
    });
}

size_t tvkScenarioCount(const tvkNetwork* network)
{
    return network == nullptr ? 0 : network->get().scenarios.size();
}

const char* tvkScenarioName(const tvkNetwork* network, size_t position)
{
    if (position >= tvkScenarioCount(network)) return nullptr;
    return std::next(network->get().scenarios.begin(), static_cast<std::ptrdiff_t>(position))->first.c_str();
}

tvkStatus tvkNetworkScenario(const tvkNetwork* network, const char* name, tvkNetwork** scenario,
                             tvkFindings* findings)
{
    if (scenario != nullptr) *scenario = nullptr;
    return guarded(findings, [&](kit::Findings& list) {
        required(scenario, "scenario");
        return kit::giveNetwork(
            scenario, kit::withScenario(required(network, "network").get(), &required(name, "name"), list));
    });
}

tvkStatus tvkPatchNetwork(tvkNetwork* network, const char* patch, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings& list) {
        static const char* const kName = "patch";
        tvkNetwork& target = required(network, "network");
        const auto document = kit::parsePatch(&required(patch, "patch"));
        kit::Network patched = target.get();
        patched.scenarios = {{kName, document.dump()}};
        auto result = kit::withScenario(patched, kName, list);
        if (!result) return TVK_BAD_INPUT;
        result->title = target.get().title;
        result->answer = target.get().answer;
        result->scenarios = target.get().scenarios;
        target.replace(std::move(*result));
        return TVK_OK;
    });
}
