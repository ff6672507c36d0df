// ResultsExporterOptions.h: titles, units and digits of the exported text.
#pragma once

#include <map>
#include <string>

#include "tavell/IResultsExporterOptions.h"

namespace Velcor::Tavell
{

/// Settings of a circuit's export, kept across solves.
class ResultsExporterOptions final : public IResultsExporterOptions
{
public:
    void SetFormat(int format) override;
    int GetFormat() override;
    void SetNodeLabel(const char* label) override;
    const char* GetNodeLabel() override;
    void SetElementLabel(const char* label) override;
    const char* GetElementLabel() override;
    void SetResultLabel(int key, const char* label) override;
    const char* GetResultLabel(int key) override;
    void SetL10n(int key, double scale, double offset) override;
    void GetL10n(int key, double& scale, double& offset) override;
    void SetPrecision(int digits) override;
    int GetPrecision() override;

private:
    /// Display unit of a result key: value x scale + offset.
    struct L10n {
        double scale;
        double offset;
    };

    int m_format = 0;
    std::string m_nodeLabel;
    std::string m_elementLabel;
    std::map<int, std::string> m_resultLabel;  // by result key
    std::map<int, L10n> m_l10n;                // by result key
    int m_precision = 17;                      // [significant digits]; enough for every double
};

}  // namespace Velcor::Tavell
