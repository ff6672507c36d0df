// IResultsExporterOptions.h: titles, units and digits of the exported text.
#ifndef TAVELL_IRESULTSEXPORTEROPTIONS_H
#define TAVELL_IRESULTSEXPORTEROPTIONS_H

namespace Velcor::Tavell
{

/// Settings of ICircuit::ExportResults; one per circuit, kept across solves. Labels are written between
/// quotes as they are. Returned strings are valid until they are set again.
class IResultsExporterOptions
{
public:
    /// Format code, 0 at first; kept for the host, not used by the export.
    virtual void SetFormat(int format) = 0;
    virtual int GetFormat() = 0;
    /// Title of the node id column; null counts as "".
    virtual void SetNodeLabel(const char* label) = 0;
    virtual const char* GetNodeLabel() = 0;
    /// Title of the element id column; null counts as "".
    virtual void SetElementLabel(const char* label) = 0;
    virtual const char* GetElementLabel() = 0;
    /// Title of the column of a result key; null counts as "". A key without a title has "".
    virtual void SetResultLabel(int key, const char* label) = 0;
    virtual const char* GetResultLabel(int key) = 0;
    /// Display unit of a result key, value x scale + offset. In the export a key without its own pair uses
    /// that of the key before it, in the order 0, 1, 2, 3, 6, 7; set all six or none (scale 1, offset 0).
    virtual void SetL10n(int key, double scale, double offset) = 0;
    /// Writes scale and offset when the key has a pair, else leaves them alone.
    virtual void GetL10n(int key, double& scale, double& offset) = 0;
    /// Significant digits of exported values, 17 at first.
    virtual void SetPrecision(int digits) = 0;
    virtual int GetPrecision() = 0;
};

}  // namespace Velcor::Tavell

#endif
