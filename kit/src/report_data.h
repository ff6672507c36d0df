// report_data.h: everything that the report shows, as one JSON object in display units.
#ifndef TAVELL_KIT_REPORT_DATA_H
#define TAVELL_KIT_REPORT_DATA_H

#include <nlohmann/json_fwd.hpp>

#include "certificate.h"
#include "findings.h"
#include "network.h"
#include "report_page.h"
#include "solution.h"

namespace kit
{

/// Columns of nodes and elements as arrays, numbers in display units to seven digits, null for what is not
/// defined; the pumps' charts, the findings and the certificate. Without results the columns of results are
/// missing.
nlohmann::ordered_json reportData(const Network& network, const Solution& solution,
                                  const Certificate& certificate, const Findings& findings,
                                  const ReportOptions& options);

}  // namespace kit

#endif
