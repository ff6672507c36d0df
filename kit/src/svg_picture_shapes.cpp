#include "svg_picture_shapes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace kit
{

namespace
{

/// Pieces of lines that names keep off; a network with more has bends by the thousand.
constexpr std::size_t kMostObstacles = 4000;

}  // namespace

std::string px(double value)
{
    std::array<char, 64> text{};
    const double rounded = std::round(value * 100.0) / 100.0;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), rounded + 0.0);
    return {text.data(), end.ptr};
}

std::string pointText(const Point2& point)
{
    return px(point.x) + ' ' + px(point.y);
}

Point2 operator+(const Point2& a, const Point2& b)
{
    return {a.x + b.x, a.y + b.y};
}

Point2 operator-(const Point2& a, const Point2& b)
{
    return {a.x - b.x, a.y - b.y};
}

Point2 operator*(double factor, const Point2& a)
{
    return {factor * a.x, factor * a.y};
}

double length(const Point2& a)
{
    return std::hypot(a.x, a.y);
}

double lengthOfLine(const std::vector<Point2>& line)
{
    double sum = 0.0;
    for (std::size_t i = 1; i < line.size(); ++i)
        sum += length(line[i] - line[i - 1]);
    return sum;
}

Station stationAt(const std::vector<Point2>& line, double distance)
{
    for (std::size_t i = 1; i < line.size(); ++i) {
        const Point2 step = line[i] - line[i - 1];
        const double size = length(step);
        if (size > 0.0 && (distance <= size || i + 1 == line.size())) {
            const Point2 along = (1.0 / size) * step;
            return {line[i - 1] + std::min(distance, size) * along, along};
        }
        distance -= size;
    }
    return {line.front(), {1.0, 0.0}};
}

bool startsLetter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xc0U) != 0x80U;
}

double textWidth(const std::string& text, double letterWidth)
{
    return letterWidth * static_cast<double>(std::count_if(text.begin(), text.end(), startsLetter));
}

Rectangle around(const Point2& a, const Point2& b, double margin)
{
    return {std::min(a.x, b.x) - margin, std::min(a.y, b.y) - margin, std::max(a.x, b.x) + margin,
            std::max(a.y, b.y) + margin};
}

bool passes(const Point2& a, const Point2& b, const Rectangle& box)
{
    double from = 0.0;
    double to = 1.0;
    const auto clip = [&](double start, double step, double low, double high) {
        if (std::abs(step) < 1e-12) return start >= low && start <= high;
        const double enter = ((step > 0.0 ? low : high) - start) / step;
        const double leave = ((step > 0.0 ? high : low) - start) / step;
        from = std::max(from, enter);
        to = std::min(to, leave);
        return from <= to;
    };
    return clip(a.x, b.x - a.x, box.left, box.right) && clip(a.y, b.y - a.y, box.top, box.bottom);
}

std::vector<Point2> partOf(const std::vector<Point2>& line, double from, double to)
{
    std::vector<Point2> part{stationAt(line, from).at};
    double distance = 0.0;
    for (std::size_t i = 1; i + 1 < line.size(); ++i) {
        distance += length(line[i] - line[i - 1]);
        if (distance > from && distance < to) part.push_back(line[i]);
    }
    part.push_back(stationAt(line, to).at);
    return part;
}

std::string pathThrough(const std::vector<Point2>& line)
{
    std::string path = "M" + pointText(line.front());
    for (std::size_t i = 1; i < line.size(); ++i)
        path += 'L' + pointText(line[i]);
    return path;
}

void Obstacles::addLine(const std::vector<Point2>& line)
{
    for (std::size_t i = 1; i < line.size() && m_lines.size() < kMostObstacles; ++i)
        m_lines.emplace_back(line[i - 1], line[i]);
}

bool Obstacles::isFree(const Rectangle& wanted) const
{
    return std::none_of(m_list.begin(), m_list.end(), [&](const Rectangle& other) {
        return wanted.left < other.right && other.left < wanted.right && wanted.top < other.bottom &&
               other.top < wanted.bottom;
    });
}

std::size_t Obstacles::linesThrough(const Rectangle& box) const
{
    return static_cast<std::size_t>(std::count_if(m_lines.begin(), m_lines.end(), [&](const auto& line) {
        return passes(line.first, line.second, box);
    }));
}

}  // namespace kit
