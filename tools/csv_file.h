// csv_file.h: the library's exported results in a file.
#ifndef TAVELL_TOOLS_CSV_FILE_H
#define TAVELL_TOOLS_CSV_FILE_H

#include <string>

#include <tavell/ICircuit.h>

#include "problems.h"

/// Why a file cannot take the results, as far as that shows beforehand: a directory, or the network file
/// itself.
void checkCsvPath(const std::string& path, const std::string& networkPath, Problems& problems);

/// Writes the results of the circuit (ICircuit::ExportResults, SI units) to a file. A reader of the file sees
/// the old text or the whole new one: the text goes to a temporary file beside it, which then takes its
/// place.
void writeCsvFile(const std::string& path, Velcor::Tavell::ICircuit& circuit, Problems& problems);

#endif
