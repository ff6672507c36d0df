// csv_table.h: a table of comma- or semicolon-separated values (RFC 4180) as text and as fields.
#ifndef TAVELL_KIT_CSV_TABLE_H
#define TAVELL_KIT_CSV_TABLE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "findings.h"

namespace kit
{

struct CsvRow {
    std::size_t line = 0;  // where it starts, from 1
    std::vector<std::string> fields;
};

struct CsvTable {
    CsvRow header;
    std::vector<CsvRow> rows;  // without those whose fields are all empty; as long as the header
};

/// The table in a text. The header line decides the separator: a semicolon when it has one outside quotes,
/// else a comma. Lines end with LF or CRLF. Nothing, and a finding, when quotes are not closed or
/// there is no header. Text behind a closing quote and a line with more fields than the header are errors too,
/// but the rest of the table is there to be looked at.
std::optional<CsvTable> parseCsv(const std::string& text, const std::string& file, Findings& findings);

/// One line of a comma-separated table, with a line end; fields are quoted where they have to be.
std::string csvLine(const std::vector<std::string>& fields);

}  // namespace kit

#endif
