#include "csv_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include <tavell/Constants.h>
#include <tavell/IResultsExporterOptions.h>

namespace
{

namespace fs = std::filesystem;
using Velcor::Tavell::ICircuit;

constexpr int kMostTemporaryNames = 100;

// clang-format off
const std::pair<int, const char*> kResultLabels[] = {
    {TAVELL_RESULT_REYNOLDS, "Re [-]"},
    {TAVELL_RESULT_VELOCITY, "velocity [m/s]"},
    {TAVELL_RESULT_VOLUME_FLOW, "volume flow [m3/s]"},
    {TAVELL_RESULT_MASS_FLOW, "mass flow [kg/s]"},
    {TAVELL_RESULT_NODE_TEMPERATURE, "temperature [K]"},
    {TAVELL_RESULT_PRESSURE, "pressure [Pa]"},
};
// clang-format on

const char* exportedText(ICircuit& circuit)
{
    auto* options = circuit.GetResultsExporterOptions();
    options->SetElementLabel("element");
    options->SetNodeLabel("node");
    for (const auto& [key, label] : kResultLabels)
        options->SetResultLabel(key, label);
    return circuit.ExportResults();
}

/// Writes and closes; the number of the system's error, 0 for success.
int writeAndClose(std::FILE* file, const char* text)
{
    const std::size_t length = std::strlen(text);
    int error = 0;
    if (std::fwrite(text, 1, length, file) != length) error = errno;
    if (std::fclose(file) != 0 && error == 0) error = errno;
    return error;
}

void reportUnwritten(Problems& problems, int error)
{
    problems.addToFile("cannot be written: " + std::generic_category().message(error));
}

/// Opens a new file beside target; name receives its path. Null, with errno, when that fails.
std::FILE* openTemporary(const fs::path& target, fs::path& name)
{
    for (int i = 0; i < kMostTemporaryNames; ++i) {
        name = target;
        name += ".tmp" + std::to_string(i);
        std::FILE* file = std::fopen(name.string().c_str(), "wbx");
        if (file != nullptr || errno != EEXIST) return file;
    }
    return nullptr;
}

}  // namespace

void checkCsvPath(const std::string& path, const std::string& networkPath, Problems& problems)
{
    std::error_code error;
    if (path.empty())
        problems.addToFile("the name of the CSV file is empty; give one");
    else if (fs::is_directory(path, error))
        problems.addToFile("is a directory; name a file for the CSV text");
    else if (fs::equivalent(path, networkPath, error))
        problems.addToFile("is the network file; name another file for the CSV text");
}

void writeCsvFile(const std::string& path, ICircuit& circuit, Problems& problems)
{
    const char* text = exportedText(circuit);
    std::error_code error;
    fs::path target = fs::weakly_canonical(path, error);  // a link stays a link
    if (error) target = path;
    if (fs::exists(target, error) && !fs::is_regular_file(target, error)) {
        // A device or pipe cannot be replaced by a file.
        std::FILE* device = std::fopen(path.c_str(), "wb");
        const int failure = device == nullptr ? errno : writeAndClose(device, text);
        if (failure != 0) reportUnwritten(problems, failure);
        return;
    }
    fs::path temporary;
    std::FILE* file = openTemporary(target, temporary);
    if (file == nullptr) {
        reportUnwritten(problems, errno);
        return;
    }
    int failure = writeAndClose(file, text);
    if (failure == 0) {
        fs::rename(temporary, target, error);
        failure = error.value();
    }
    if (failure == 0) return;
    fs::remove(temporary, error);
    reportUnwritten(problems, failure);
}
