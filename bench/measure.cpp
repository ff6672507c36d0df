#include "measure.h"

#include <algorithm>
#include <fstream>
#include <string>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace bench
{

namespace
{

/// A line of /proc/self/status that is given in kB [MiB]; 0 when there is none.
double statusMiB(const std::string& name)
{
    constexpr double kKibibytesPerMebibyte = 1024.0;
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word) {
        double kibibytes = 0.0;
        if (word == name && status >> kibibytes) return kibibytes / kKibibytesPerMebibyte;
    }
    return 0.0;
}

}  // namespace

MemoryMeter::MemoryMeter()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
    m_base = statusMiB("VmRSS:");
    restart();
}

void MemoryMeter::restart()
{
    std::ofstream("/proc/self/clear_refs") << "5\n";  // sets VmHWM to VmRSS
}

double MemoryMeter::peakMiB() const
{
    return std::max(0.0, statusMiB("VmHWM:") - m_base);
}

}  // namespace bench
