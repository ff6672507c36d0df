#include "picture_colours.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace kit
{

namespace
{

// Seventeen evenly spaced colours of viridis.
constexpr std::array<std::uint32_t, 17> kViridis{0x440154, 0x48186a, 0x472d7b, 0x424086, 0x3b528b, 0x33638d,
                                                 0x2c728e, 0x26828e, 0x21918c, 0x1fa088, 0x28ae80, 0x3fbc73,
                                                 0x5ec962, 0x84d44b, 0xaddc30, 0xd8e219, 0xfde725};

/// The part of viridis that can be seen on white.
constexpr double kPalest = 0.92;

/// Beyond this many times the value below which 98 % lie, the highest values are left off the scale.
constexpr double kFarAbove = 2.5;
constexpr std::size_t kFewValues = 40;
/// Values that differ by less than this part of them are the same, whatever the solve left in their last digits.
constexpr double kRounding = 1e-9;

const std::vector<double>& siValues(const Solution& solution, PictureQuantity quantity)
{
    switch (quantity) {
    case PictureQuantity::head:
        return solution.head;
    case PictureQuantity::velocity:
        return solution.velocity;
    case PictureQuantity::massFlow:
        return solution.massFlow;
    case PictureQuantity::volumeFlow:
        return solution.volumeFlow;
    case PictureQuantity::temperature:
        return solution.nodeTemperature;
    case PictureQuantity::pressure:
    case PictureQuantity::none:
        break;
    }
    return solution.pressure;
}

std::string withoutTrailingZeros(std::string text)
{
    if (text.find('.') == std::string::npos) return text;
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text == "-0" ? "0" : text;
}

}  // namespace

const std::vector<PictureColumn>& pictureColumns()
{
    static const std::vector<PictureColumn> kColumns{
        {PictureQuantity::pressure, "pressure", "Pressure", true, Quantity::pressure},
        {PictureQuantity::head, "head", "Head", true, Quantity::head},
        {PictureQuantity::velocity, "velocity", "Velocity", false, Quantity::velocity},
        {PictureQuantity::massFlow, "mass_flow", "Mass flow", false, Quantity::massFlow},
        {PictureQuantity::volumeFlow, "volume_flow", "Volume flow", false, Quantity::volumeFlow},
        {PictureQuantity::temperature, "temperature", "Temperature", true, Quantity::temperature},
    };
    return kColumns;
}

const PictureColumn& columnOf(PictureQuantity quantity)
{
    static const PictureColumn kNone{PictureQuantity::none, "none", "", false, Quantity::none};
    for (const PictureColumn& column : pictureColumns()) {
        if (column.quantity == quantity) return column;
    }
    return kNone;
}

std::optional<PictureQuantity> findPictureQuantity(std::string_view name)
{
    if (name == "none") return PictureQuantity::none;
    for (const PictureColumn& column : pictureColumns()) {
        if (name == column.name) return column.quantity;
    }
    return std::nullopt;
}

std::vector<double> pictureValues(const Solution& solution, PictureQuantity quantity, const UnitSet& units)
{
    if (!solution.hasResults() || quantity == PictureQuantity::none) return {};
    if (quantity == PictureQuantity::temperature && !solution.hasTemperatures) return {};
    const PictureColumn& column = columnOf(quantity);
    const std::string unit = displayUnit(units, column.unit);
    std::vector<double> values = siValues(solution, quantity);
    bool hasFinite = false;
    for (double& value : values) {
        value = fromSi(column.isOfNodes ? value : std::abs(value), unit, column.unit);
        hasFinite = hasFinite || std::isfinite(value);
    }
    if (!hasFinite) values.clear();
    return values;
}

double ColourRange::fraction(double value) const
{
    if (!(high > low)) return 0.5;
    return std::clamp((value - low) / (high - low), 0.0, 1.0);
}

ColourRange colourRange(const std::vector<double>& values)
{
    std::vector<double> finite;
    finite.reserve(values.size());
    std::copy_if(values.begin(), values.end(), std::back_inserter(finite),
                 [](double value) { return std::isfinite(value); });
    ColourRange range;
    if (finite.empty()) return range;
    range.low = *std::min_element(finite.begin(), finite.end());
    range.high = *std::max_element(finite.begin(), finite.end());
    const double size = std::max(std::abs(range.low), std::abs(range.high));
    if (range.high - range.low <= kRounding * size) range.high = range.low;
    if (finite.size() < kFewValues) return range;

    const auto quantile = [&](double share) {
        const auto at =
            finite.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(finite.size() - 1));
        std::nth_element(finite.begin(), at, finite.end());
        return *at;
    };
    const double low = quantile(0.02);
    const double high = quantile(0.98);
    const double spread = high - low;
    if (!(spread > 0.0)) return range;
    if (range.high - high > kFarAbove * spread) {
        range.high = high;
        range.hasHigher = true;
    }
    if (low - range.low > kFarAbove * spread) {
        range.low = low;
        range.hasLower = true;
    }
    return range;
}

std::string colourOf(double fraction)
{
    const double at = std::clamp(fraction, 0.0, 1.0) * kPalest * static_cast<double>(kViridis.size() - 1);
    const auto index = std::min(static_cast<std::size_t>(at), kViridis.size() - 2);
    const double part = at - static_cast<double>(index);
    std::string text = "#";
    for (const unsigned shift : {16U, 8U, 0U}) {
        const auto a = static_cast<double>((kViridis[index] >> shift) & 0xffU);
        const auto b = static_cast<double>((kViridis[index + 1] >> shift) & 0xffU);
        const auto level = static_cast<unsigned>(std::lround(a + part * (b - a)));
        constexpr std::string_view kDigits = "0123456789abcdef";
        text += kDigits[level >> 4U];
        text += kDigits[level & 15U];
    }
    return text;
}

std::vector<double> roundTicks(double low, double high, int about)
{
    if (!(high > low) || about < 1) return {low};
    const double rough = (high - low) / about;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    double step = 10.0 * power;
    for (const double mantissa : {1.0, 2.0, 5.0}) {
        if (rough <= mantissa * power * (1.0 + 1e-9)) {
            step = mantissa * power;
            break;
        }
    }
    std::vector<double> ticks;
    const double first = std::ceil(low / step - 1e-9);
    for (int i = 0; i < 4 * about + 4; ++i) {
        const double tick = (first + i) * step;
        if (tick > high + 1e-9 * step) break;
        // a multiple of the step that is not exact would print with all its digits
        ticks.push_back(std::abs(tick) < 1e-9 * step ? 0.0 : tick);
    }
    return ticks;
}

std::string shortNumber(double value)
{
    if (!std::isfinite(value)) return "-";
    if (value == 0.0) return "0";
    constexpr int kDigits = 4;
    const double size = std::abs(value);
    std::array<char, 64> text{};
    if (size < 1e-3 || size >= 1e6) {
        const auto end =
            std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::scientific, 2);
        return {text.data(), end.ptr};
    }
    const int decimals =
        std::clamp(kDigits - 1 - static_cast<int>(std::floor(std::log10(size))), 0, kDigits + 2);
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, decimals);
    return withoutTrailingZeros({text.data(), end.ptr});
}

}  // namespace kit
