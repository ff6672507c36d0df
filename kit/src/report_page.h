// report_page.h: the report: one page of HTML that needs nothing else.
#ifndef TAVELL_KIT_REPORT_PAGE_H
#define TAVELL_KIT_REPORT_PAGE_H

#include <cstddef>
#include <string>
#include <string_view>

#include "certificate.h"
#include "findings.h"
#include "network.h"
#include "solution.h"
#include "units.h"

namespace kit
{

struct ReportOptions {
    UnitSet units;
    std::string scenario;  // its name, for the heading; "" for none
    /// Elements that may be solved in all for the system curves of pumps; beyond it they are estimated.
    std::size_t solveBudget = 60000;
};

/// Whether this build has the pieces of the page.
bool hasReportPage();

/// The page: network, tables, pumps, profile, findings and certificate in one document with its style and
/// script, which asks for nothing from anywhere else. Findings of the doctor and of the solve are both shown.
/// The same input gives the same bytes. "" when hasReportPage is false (code report_not_built).
std::string reportPage(const Network& network, const Solution& solution, const Certificate& certificate,
                       const Findings& doctor, const ReportOptions& options);

/// A JSON text that can stand inside a script element: "<", U+2028 and U+2029 are escaped.
std::string scriptSafe(std::string_view json);

/// A text as the content of an HTML element.
std::string htmlText(std::string_view text);

/// The pieces of the page, put into the program when it was built (EmbedReport.cmake): all empty in a build
/// without.
struct ReportPieces {
    std::string_view page;    // the template
    std::string_view style;   // CSS
    std::string_view script;  // JavaScript with the libraries that it uses
};
ReportPieces reportPieces();

}  // namespace kit

#endif
