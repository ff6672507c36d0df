// ResultsExporterOptions.cpp: titles, units and digits of the exported text.
#include "ResultsExporterOptions.h"

namespace Velcor::Tavell
{

namespace
{

/// The label as a string of its own; null counts as "".
std::string textOf(const char* label)
{
    return label == nullptr ? std::string() : std::string(label);
}

}  // namespace

void ResultsExporterOptions::SetFormat(int format)
{
    m_format = format;
}

int ResultsExporterOptions::GetFormat()
{
    return m_format;
}

void ResultsExporterOptions::SetNodeLabel(const char* label)
{
    m_nodeLabel = textOf(label);
}

const char* ResultsExporterOptions::GetNodeLabel()
{
    return m_nodeLabel.c_str();
}

void ResultsExporterOptions::SetElementLabel(const char* label)
{
    m_elementLabel = textOf(label);
}

const char* ResultsExporterOptions::GetElementLabel()
{
    return m_elementLabel.c_str();
}

void ResultsExporterOptions::SetResultLabel(int key, const char* label)
{
    m_resultLabel.insert_or_assign(key, textOf(label));
}

const char* ResultsExporterOptions::GetResultLabel(int key)
{
    const auto found = m_resultLabel.find(key);
    return found == m_resultLabel.end() ? "" : found->second.c_str();
}

void ResultsExporterOptions::SetL10n(int key, double scale, double offset)
{
    m_l10n.insert_or_assign(key, L10n{scale, offset});
}

void ResultsExporterOptions::GetL10n(int key, double& scale, double& offset)
{
    const auto found = m_l10n.find(key);
    if (found == m_l10n.end()) return;
    scale = found->second.scale;
    offset = found->second.offset;
}

void ResultsExporterOptions::SetPrecision(int digits)
{
    m_precision = digits;
}

int ResultsExporterOptions::GetPrecision()
{
    return m_precision;
}

}  // namespace Velcor::Tavell
