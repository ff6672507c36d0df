// report_assets_none.cpp: stands in for the pieces of the report in builds without them (TAVELL_REPORT=OFF).
#include "report_page.h"

namespace kit
{

ReportPieces reportPieces()
{
    return {};
}

}  // namespace kit
